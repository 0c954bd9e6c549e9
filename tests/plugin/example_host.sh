#!/usr/bin/env bash
# The example host prints the same as icehost: example_host.sh ICEHOST SOURCE_FOLDER HOST PLUGIN
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"
source=$PWD host=$3 plugin=$4
cd "$scratch"

# expect STATUS PATTERN ARGUMENT...: runs the host; its standard error must match PATTERN.
expect() {
  local wanted=$1 text=$2 status=0
  shift 2
  "$host" "$@" >out.txt 2>err.txt || status=$?
  # shellcheck disable=SC2053: a pattern
  [[ "$status:$(cat err.txt)" == $wanted:$text ]] || fail "$* ended with $status: $(cat err.txt)"
}

# lengths CDI: prints a script with registers of all kinds of lengths for this interface.
lengths() {
  printf '[CONTROL]\nCDI=%s\n' "$1"
  local bits
  for bits in 232 9 1 0 -1 -2147483648 33; do
    printf '[SCRATCH%s]\nIR=5,0x02\nDR=R,%s,1,2,3,4,5,6,0xff\n' "$bits" "$bits"
  done
  printf '[IDCODE]\nIR=5,0x01\nDR=W,232,0xaa\n[KEPT]\nIR=0,2\nDR=R,32,0\n'
  printf '[SCRATCH]\nIR=5,2\nDR=R,64,0\n'
}
lengths 5 >lengths5.ini
lengths 2 >lengths2.ini
printf '[CONTROL]\nCDI=4\n[A]\nIR=5\nDR=R,8\n[B]\nIR=5,1\nDR=R,32\n' >refused.ini
for script in "$source"/examples/*.ini "$source"/examples/reset_pulse.gpio *.ini; do
  expect 0 "" "$plugin" "$script"
  "$icehost" run --force "$script" >icehost.txt 2>/dev/null || [ -z "${script##[!/]*}" ]
  diff icehost.txt out.txt || fail "$script: the output differs from icehost's"
done
expect 0 "" "$plugin" "$source/examples/read_idcode.gpio"

expect 1 "host: absent.ini failed" "$plugin" absent.ini
# long CDI IR DR [NAME]: runs a scan with these lengths. NAME is the register that is too long.
long() {
  printf '[CONTROL]\nCDI=%s\n[LONG]\nIR=%s,2\nDR=R,%s,0\n' "$1" "$2" "$3" >long.ini
  local text=${4:+"host: the $4 is too long for this probe"$'\n'"host: long.ini failed"}
  expect $((${#text} > 0)) "$text" "$plugin" long.ini
}
long 5 256 240
long 5 257 240 IR
long 5 256 241 DR
long 2 248 232
long 2 249 232 IR
long 2 248 233 DR
: >empty.ini
for script in empty.ini .; do
  expect 1 "host: $script failed" "$plugin" "$script"
  [ "$(cat out.txt)" = "Syntax error, no end found" ] || fail "$script: $(cat out.txt)"
done
expect 2 "usage: host PLUGIN SCRIPT"
expect 3 "host: ./absent.so: cannot open shared object file: No such file or directory" \
  ./absent.so absent.ini
expect 3 "host: */libm.so.6: undefined symbol: ImplementScr" libm.so.6 absent.ini
