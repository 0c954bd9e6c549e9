#!/usr/bin/env bash
# Finds files and processes that the tests of a build left behind. FOLDER is the TMPDIR of these
# tests only, so every file in it and every process with this TMPDIR comes from them. `clear` runs
# before the tests and removes the remains of an interrupted run. `check` runs after the tests, also
# removes any remains, and fails if there were any. Both do nothing and fail if another ctest is
# running these tests.
# usage: left_behind.sh clear|check FOLDER
set -uo pipefail
folder=$2
owner=$folder/.ctest # contains the process ID of the ctest whose tests use the folder

processes() { grep -lsxzF "TMPDIR=$folder" /proc/[0-9]*/environ | cut -d/ -f3; }
files() { find "$folder" -mindepth 1 ! -path "$owner" 2>/dev/null; }

other=$(cat "$owner" 2>/dev/null)
if [ "${other:-$PPID}" != $PPID ] && grep -qs ctest "/proc/$other/cmdline"; then
  echo "another ctest (process $other) is running the tests of this build"
  exit 1
fi

failed=0
if [ "$1" = check ]; then
  # A process may take a moment to end.
  for _ in {1..30}; do
    [ -n "$(processes)$(files)" ] || break
    sleep 0.1
  done
  if [ -n "$(processes)$(files)" ]; then
    echo "left behind:"
    processes | xargs -r ps -o pid,args -p
    files
    failed=1
  fi
fi
# A process can write files until it has ended.
for _ in {1..50}; do
  processes | xargs -r kill -KILL
  [ -z "$(processes)" ] && rm -rf "${folder:?}" && break
  sleep 0.1
done
[ "$1" = check ] || { mkdir -m 700 "$folder" && echo $PPID >"$owner"; } || failed=1
exit "$failed"
