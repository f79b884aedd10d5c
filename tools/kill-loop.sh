#!/usr/bin/env bash
# Kills brindlemark-cli with SIGKILL at a random moment of a create or an import, again and
# again, each time on a fresh copy of a folder, and looks at what is left:
#   refused  - the folder can no longer be listed (when it held a store), `check` finds a problem,
#              or a create run after the kill fails;
#   changed  - a security that the killed command was not writing differs from what it was
#              (its line in `list` or the bytes of its data file), or is gone;
#   torn     - a security that the command was writing is neither as before nor as after.
#
#   tools/kill-loop.sh CLI FOLDER|empty [KILLS]
#
# Runs go on until KILLS of them were killed (a run that ends before its kill does not count),
# at most three times KILLS runs.
#
# FOLDER is copied, never written. With a folder, the runs alternate between a create (five
# existing symbols made anew and 300 new ones) and an import of 2,000 records into the first
# security; with "empty", each run is the first create of 300 securities in an empty folder.
set -uo pipefail
cli=$(realpath "$1")
base=$2
kills=${3:-200}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export work base

fresh() {
  rm -rf "$work/f"
  mkdir "$work/f"
  if [ "$base" != empty ]; then
    cp "$base"/* "$work/f"/
    chmod -R u+w "$work/f"
  fi
}

existing=()
new_symbols=$(seq -f 'NEW%03g' 1 300)
first=""
if [ "$base" != empty ]; then
  "$cli" list "$base" | tail -n +2 > "$work/base.list"
  mapfile -t existing < <(cut -d, -f1 "$work/base.list" | head -5)
  first=${existing[0]}
  # 2,000 weekdays from a year before the folder's data on: dates the security holds are
  # replaced, so the import rewrites its data file.
  python3 - > "$work/rows.csv" <<'PY'
import datetime
d, n = datetime.date(2009, 1, 1), 0
print("Date,Open,High,Low,Close,Volume")
while n < 2000:
    if d.weekday() < 5:
        print(f"{d:%Y%m%d},1.25,1.5,1,1.25,1000")
        n += 1
    d += datetime.timedelta(days=1)
PY
  # The security before the import and after one that runs to its end.
  fresh
  "$cli" dump "$base" "$first" > "$work/before.dump"
  "$cli" import "$work/f" "$first" "$work/rows.csv" || exit 1
  "$cli" dump "$work/f" "$first" > "$work/after.dump"
fi

# Compares the folder left by a killed run with the folder as it was; prints "changed torn".
verify() {  # kind run
  python3 - "$1" "$2" "$first" "${existing[*]}" <<'PY'
import filecmp, os, sys
kind, run, first, existing = sys.argv[1], sys.argv[2], sys.argv[3], sys.argv[4].split()
work, base = os.environ["work"], os.environ["base"]
def rows(path):
    return {l.split(",")[0]: l for l in open(path).read().splitlines() if l}
was = rows(work + "/base.list")
now = rows(work + "/now.list")
changed = torn = 0
for sym, line in was.items():
    if kind == "import" and sym == first:
        dump = open(work + "/now.dump").read()
        if dump not in (open(work + "/before.dump").read(), open(work + "/after.dump").read()):
            torn += 1
            print(f"kill {run}: {sym} neither as before nor as after the import", file=sys.stderr)
        continue
    if kind == "create" and sym in existing:
        if sym in now and now[sym] != line and not now[sym].endswith(",20100101,20100101,D,0"):
            torn += 1
            print(f"kill {run}: {sym} neither as before nor made anew: {now[sym]}", file=sys.stderr)
        continue
    if sym not in now:
        changed += 1
        print(f"kill {run}: {sym} lost", file=sys.stderr)
        continue
    stem = line.split(",")[-5]
    name = stem + (".DAT" if int(stem[1:]) <= 255 else ".MWD")
    same = filecmp.cmp(os.path.join(work, "f", name), os.path.join(base, name), shallow=False)
    if now[sym] != line or not same:
        changed += 1
        print(f"kill {run}: {sym} changed: {now[sym]}", file=sys.stderr)
print(changed, torn)
PY
}

run_command() {  # iteration
  if [ "$base" = empty ] || [ $(( $1 % 2 )) -eq 0 ]; then
    kind=create
    "$cli" create "$work/f" --from 20100101 ${existing[@]+"${existing[@]}"} $new_symbols >/dev/null 2>&1 &
  else
    kind=import
    "$cli" import "$work/f" "$first" "$work/rows.csv" >/dev/null 2>&1 &
  fi
  pid=$!
}

# How long each command runs when left alone, to spread the kills over it.
declare -A took
for i in 0 1; do
  fresh
  start=$(date +%s%N)
  run_command $i
  wait $pid
  took[$kind]=$(( ($(date +%s%N) - start) / 1000 ))
done
echo "uninterrupted (us): ${!took[*]} = ${took[*]}"

killed=0; finished=0; refused=0; changed=0; torn=0; i=0
while [ $killed -lt "$kills" ] && [ $i -lt $((3 * kills)) ]; do
  i=$((i + 1))
  fresh
  run_command $i
  span=${took[$kind]}
  delay=$(( (RANDOM * 32768 + RANDOM) % (span + span / 5 + 1) ))
  sleep "$(awk "BEGIN{printf \"%.6f\", $delay/1000000}")"
  if kill -9 $pid 2>/dev/null; then
    killed=$((killed + 1))
  else
    finished=$((finished + 1))
    # The run was shorter than thought: spread the next kills over less.
    took[$kind]=$(( took[$kind] * 9 / 10 ))
  fi
  wait $pid 2>/dev/null

  bad=""
  listing=$("$cli" list "$work/f" 2>&1)
  if [ $? -ne 0 ]; then
    # A folder that had no store may be left without one; any other failure is a refusal.
    if [ "$base" != empty ] || ! grep -q "no MASTER file" <<<"$listing"; then bad="list: $listing"; fi
  fi
  if [ -z "$bad" ] && [ "$base" != empty ]; then
    tail -n +2 <<<"$listing" > "$work/now.list"
    [ "$kind" = import ] && "$cli" dump "$work/f" "$first" > "$work/now.dump" 2>&1
    read -r c t < <(verify "$kind" "$i")
    changed=$((changed + c)); torn=$((torn + t))
  fi
  if [ -z "$bad" ]; then
    out=$("$cli" create "$work/f" --from 20100101 AFTERKILL 2>&1) || bad="create after the kill: $out"
  fi
  if [ -z "$bad" ]; then
    out=$("$cli" check "$work/f" 2>&1) || bad="check: $(grep problem: <<<"$out" | head -3)"
  fi
  if [ -n "$bad" ]; then refused=$((refused + 1)); echo "kill $i ($kind): refused: $bad"; fi
done
echo "folder: $base; runs: $i; killed: $killed; finished before the kill: $finished;" \
     "folders refused: $refused; securities changed that were not written: $changed;" \
     "written securities neither before nor after: $torn"
