#!/usr/bin/env bash
# Installs the Debian packages the program needs to build, run and test, when any is missing:
# as root directly, otherwise through sudo.
set -euo pipefail
packages=(build-essential g++ cmake pkg-config qt6-base-dev libzip-dev libgtest-dev libgmock-dev
          libbenchmark-dev xvfb xauth file desktop-file-utils)
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "Installing: ${missing[*]}"
  if [ "$(id -u)" -eq 0 ]; then
    sudo=()
  elif command -v sudo >/dev/null; then
    sudo=(sudo)
  else
    echo "Missing packages and no sudo: run this script as root." >&2
    exit 1
  fi
  "${sudo[@]}" apt-get update -qq
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}"
fi
