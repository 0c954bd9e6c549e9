#!/usr/bin/env bash
# icehost and what a process finds around it: closed descriptors, full disks, limits, signals.
# usage: surroundings.sh ICEHOST SOURCE_FOLDER
set -uo pipefail
export icehost=$1
cd "$2"
scratch=$(mktemp -d)
export scratch
trap 'kill $(jobs -p) 2>/dev/null; rm -rf "$scratch"' EXIT
failures=0

fail() {
  echo "FAILED: $*"
  failures=$((failures + 1))
}

# expect STATUS MESSAGE COMMAND: what a shell command ends with, and the last line of standard error
# as a pattern.
expect() {
  : >"$scratch/err"
  timeout -k 1 30 bash -c "$3" >"$scratch/out" 2>"$scratch/err" </dev/null
  local status=$?
  [ "$status" = "$1" ] || fail "$3: status $status, not $1: $(cat "$scratch/err")"
  # shellcheck disable=SC2053: the message may be a pattern
  [[ $(tail -n 1 "$scratch/err") == $2 ]] || fail "$3: said \"$(cat "$scratch/err")\", not \"$2\""
}

printf '[ZEVA_ICE_GPIO]\nSTART\nREPT=2000000000\nTCK=1\nTCK=0\nENDR\nEND\n' >"$scratch/endless.gpio"
printf '[ZEVA_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nREPT=99999\nPRINT=GPIO_IN\nENDR\nEND\n' >"$scratch/reads.gpio"
for i in $(seq 60000); do printf '[%s]\nIR=5,1\nDR=R,8,0\n' "$((i * 7919 % 60000))x"; done >"$scratch/many.ini"
export script=examples/read_idcode.ini

# on_terminal COMMAND: what a terminal gets, in "$scratch/terminal".
on_terminal() { timeout -k 1 30 script -qec "$1" /dev/null >"$scratch/terminal" 2>&1 </dev/null; }
# count TEXT: how often it stands there.
count() { grep -oF "$1" "$scratch/terminal" | wc -l; }

# Descriptors that the process was started without are nobody else's.
expect 1 'icehost: -: Bad file descriptor' '"$icehost" run - <&-'
expect 3 'icehost: standard output: Bad file descriptor' '"$icehost" run "$script" >&-'
expect 0 '' '"$icehost" run --vcd "$scratch/a" --json "$scratch/b" "$script" <&- 2>&-'
head -c 8 "$scratch/a" | grep -q '^\$version' || fail "a waveform without standard error"

# Every output that is not taken is told, and counts.
for output in --help --version "run --summary $script" "run --trace $script"; do
  expect 3 '' "\"\$icehost\" $output >/dev/full 2>/dev/full"
done
expect 3 'icehost: standard output: No space left on device' '"$icehost" run "$script" >/dev/full'
expect 3 'icehost: standard output: Broken pipe' \
  '"$icehost" run "$scratch/reads.gpio" | head -n 1 >/dev/null; exit "${PIPESTATUS[0]}"'
for output in "run --json=-" "run --vcd=-" "run --svg=-" "run --html=-" "run --trace=-" "check tests/scripts/bad.ini" \
  "check --json=- tests/scripts/bad.ini"; do
  expect 3 'icehost: standard output: No space left on device' "\"\$icehost\" $output \$script >/dev/full"
done
expect 3 'icehost: standard output: No space left on device' '"$icehost" detect --script gpio -q >/dev/full'
expect 3 'icehost: standard output: Bad file descriptor' '"$icehost" run --json - "$script" >&-'
for output in --json=- --vcd=- --trace=-; do
  expect 3 'icehost: standard output: Broken pipe' \
    "\"\$icehost\" run $output \"\$scratch/endless.gpio\" | head -n 1; exit \"\${PIPESTATUS[0]}\""
done
echo before >"$scratch/appended"
"$icehost" run --json - --vcd "$scratch/v" examples/reset.ini >>"$scratch/appended"
[ "$(head -n 1 "$scratch/appended")$(tail -n 1 "$scratch/appended")" = 'before{"end":true}' ] ||
  fail "standard output was not appended to"
(
  ulimit -f 1
  trap '' XFSZ
  "$icehost" run -q --trace="$scratch/t" --json "$scratch/j" --vcd "$scratch/v" --svg "$scratch/s" \
    --html "$scratch/h" examples/read_idcode.gpio examples/*.ini 2>"$scratch/err"
  [ $? = 3 ]
) || fail "files beyond the limit"
[ "$(grep -c 'cannot write: File too large' "$scratch/err")" = 5 ] || fail "files: $(cat "$scratch/err")"
for file in t j v; do
  [ -s "$scratch/$file" ] && [ -z "$(tail -c 1 "$scratch/$file" | tr -d '\n')" ] || fail "a cut line in $file"
done
[ ! -s "$scratch/s" ] && [ ! -s "$scratch/h" ] || fail "a cut picture or page"

# A run that cannot begin leaves the files of the run before it, and makes none.
echo before >"$scratch/old"
for cannot in "--plugin /dev/null" "--probe remote-bitbang:unix:/nowhere" "--svg /nowhere/x" /nowhere; do
  "$icehost" run --vcd "$scratch/old" --json "$scratch/new" $cannot "$script" >"$scratch/out" 2>&1 &&
    fail "ran with $cannot"
  [ "$(cat "$scratch/old")" = before ] || fail "$cannot changed a file"
  [ ! -e "$scratch/new" ] || fail "$cannot made a file"
done

# ends_by SIGNAL COMMAND...: within a second, with status 130 and a word.
ends_by() {
  local signal=$1 status=0 start
  shift
  # A shell lets what it starts in the background ignore SIGINT.
  timeout -s KILL 20 env --default-signal=INT "$@" >"$scratch/out" 2>"$scratch/err" </dev/null &
  sleep 0.3
  start=$(date +%s%N)
  kill "-$signal" $!
  wait $! || status=$?
  [ "$status" = 130 ] || fail "$* by $signal: status $status"
  [ $((($(date +%s%N) - start) / 1000000)) -lt 1500 ] || fail "$* by $signal: took too long"
  [ "$(head -n 1 "$scratch/err")" = "icehost: interrupted" ] || fail "$* by $signal: $(cat "$scratch/err")"
}
mkfifo "$scratch/fifo"
for signal in INT TERM HUP; do
  ends_by $signal "$icehost" run --svg "$scratch/e.svg" --json "$scratch/e.json" "$scratch/endless.gpio"
  xmllint --noout "$scratch/e.svg" && grep -q '>The first 1000 of [0-9]* steps<' "$scratch/e.svg" ||
    fail "the picture of an interrupted run"
  tail -n 1 "$scratch/e.json" | grep -qx '{"end":false}' || fail "the calls of an interrupted run"
done
ends_by INT "$icehost" run --json "$scratch/many.json" --html "$scratch/many.html" "$scratch/many.ini"
# In the plug-in, which reads the script, or where it is checked before that.
[ ! -e "$scratch/many.json" ] || tail -n 1 "$scratch/many.json" | grep -qx '{"end":false}' ||
  fail "a run before its first call"
[ ! -e "$scratch/many.html" ] || tail -n 1 "$scratch/many.html" | grep -qx '</html>' ||
  fail "the page of a run before its first call"
# shellcheck disable=SC2046: one name many times
ends_by INT "$icehost" check $(yes "$scratch/many.ini" | head -n 50)
ends_by INT "$icehost" check "$scratch/fifo"
# Nobody takes what it says.
exec 7<>"$scratch/fifo"
ends_by INT bash -c 'exec "$icehost" run --svg "$scratch/full.svg" --html "$scratch/full.html" \
  "$scratch/reads.gpio" >"$scratch/fifo"'
ends_by INT bash -c 'exec "$icehost" run --json - "$scratch/endless.gpio" >"$scratch/fifo"'
ends_by INT bash -c 'exec "$icehost" check "$scratch/many.ini" tests/scripts/*.ini examples/*.ini >"$scratch/fifo"'
xmllint --noout "$scratch/full.svg" || fail "the picture of a run that was not read"
grep -q '"result":"interrupted"' "$scratch/full.html" && tail -n 1 "$scratch/full.html" | grep -qx '</html>' ||
  fail "the page of a run that was not read"

# What the process was started to ignore, it ignores.
(trap '' INT HUP; exec "$icehost" run "$scratch/endless.gpio" >/dev/null 2>&1) &
sleep 0.3
kill -INT $!
kill -HUP $!
sleep 0.3
kill -TERM $! || fail "an ignored signal ended the run"
wait $!

# Progress is shown on a terminal only, and leaves nothing there.
on_terminal "timeout -s INT 1.7 '$icehost' run '$scratch/endless.gpio'"
[ "$(count 'operations, ')" -ge 2 ] || fail "no progress: $(cat "$scratch/terminal")"
[ "$(count $'\r\e[K')" = $(($(count 'operations, ') + 1)) ] || fail "progress is left"
timeout -s INT 1.7 "$icehost" run "$scratch/endless.gpio" >/dev/null 2>"$scratch/err"
[ "$(cat "$scratch/err")" = "icehost: interrupted" ] || fail "progress in a file: $(cat "$scratch/err")"

# Nothing that a script says is a command to the terminal; a file gets it as it stands.
reverse=$'\e[7m'
printf '[%s\302\233]\nIR=5\nDR=W,0\n' "$reverse" >"$scratch/bold.ini"
on_terminal "'$icehost' run --force '$scratch/bold.ini'; '$icehost' check '$scratch/bold.ini' '$scratch/$reverse'"
[ "$(count "$reverse")" = 0 ] && [ "$(count $'\302\233')" = 0 ] || fail "$(cat -v "$scratch/terminal")"
{ "$icehost" run --force "$scratch/bold.ini" 2>/dev/null || true; } | grep -qF "$reverse"$'\302\233 syntax error' || fail "an altered message"

[ "$failures" = 0 ] && echo "surroundings: all well"
