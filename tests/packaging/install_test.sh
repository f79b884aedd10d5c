#!/usr/bin/env bash
# Installs the build into a scratch DESTDIR and checks the layout; with "deb", also makes the
# Debian package and checks what its control file says.
set -euo pipefail
build="$1"
mode="${2:-install}"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }

if [[ "$mode" == install ]]; then
  DESTDIR="$scratch/root" cmake --install "$build" --prefix /usr >/dev/null
  root="$scratch/root/usr"
  for f in bin/brindlemark bin/brindlemark-cli share/brindlemark/symbols.csv \
           share/applications/brindlemark.desktop share/icons/hicolor/scalable/apps/brindlemark.svg \
           share/icons/hicolor/48x48/apps/brindlemark.png share/icons/hicolor/256x256/apps/brindlemark.png \
           share/doc/Brindlemark/README.md; do
    [[ -e "$root/$f" ]] || fail "missing $f"
  done
  [[ -x "$root/bin/brindlemark" && -x "$root/bin/brindlemark-cli" ]] || fail "executables not executable"
  [[ ! -e "$root/bin/symbols.csv" ]] || fail "symbols.csv in bin/"
  file "$root/share/icons/hicolor/48x48/apps/brindlemark.png" | grep -q '48 x 48' || fail "48x48 icon has another size"
  grep -qx 'Exec=brindlemark' "$root/share/applications/brindlemark.desktop" || fail "desktop entry does not start the program"
  grep -qx 'Icon=brindlemark' "$root/share/applications/brindlemark.desktop" || fail "desktop entry has no icon"
  if command -v desktop-file-validate >/dev/null; then
    desktop-file-validate "$root/share/applications/brindlemark.desktop" || fail "desktop entry does not validate"
  fi
  # The installed companion runs from its installed place.
  "$root/bin/brindlemark-cli" list "$scratch" >/dev/null 2>&1 || [[ $? -eq 1 ]] || fail "installed brindlemark-cli does not run"
  echo "install layout ok"
else
  (cd "$build" && cpack -G DEB -B "$scratch/pkg" >/dev/null) || fail "cpack failed"
  deb="$(ls "$scratch"/pkg/*.deb | head -1)"
  [[ -n "$deb" ]] || fail "no package made"
  depends="$(dpkg-deb -f "$deb" Depends)"
  echo "Depends: $depends"
  wanted=(libqt6core6 libqt6gui6 libqt6widgets6 libqt6network6 qt6-qpa-plugins)
  grep -q libzip <<<"$(ldd "$build/bin/brindlemark")" && wanted+=(libzip4)
  for p in "${wanted[@]}"; do
    grep -q "$p" <<<"$depends" || fail "Depends lacks $p"
  done
  contents="$(dpkg-deb -c "$deb")"
  grep -q './usr/bin/brindlemark-cli$' <<<"$contents" || fail "package lacks brindlemark-cli"
  grep -q './usr/share/applications/brindlemark.desktop$' <<<"$contents" || fail "package lacks the desktop entry"
  echo "package ok: $(basename "$deb")"
fi
