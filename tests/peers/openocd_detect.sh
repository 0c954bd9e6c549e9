#!/usr/bin/env bash
# icehost detect reports the chain known to OpenOCD.
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

# begin TAP...: starts a target, and OpenOCD with these TAPs declared.
begin() {
  serve --idcode 4ba00477
  start_openocd "${@/#/jtag newtap }" init
}

end() {
  stop_openocd
  kill "$server" 2>/dev/null || true
  wait "$server"
}

# detect STATUS OPTION...: runs detect, with its output in out.txt and err.txt; expects STATUS.
detect() {
  local wanted=$1 status=0
  shift
  "$icehost" detect "$@" >"$scratch/out.txt" 2>"$scratch/err.txt" || status=$?
  [ "$status" = "$wanted" ] || fail "detect $* ended with $status"
}

# said OPTION... PATTERN: checks that grep with these options finds a line in err.txt.
said() { grep -q "$@" "$scratch/err.txt" || fail "no line $*"; }

# The name of the manufacturer comes from OpenOCD. detect does not change OpenOCD's state.
begin 'a tap -irlen 5 -expected-id 0x4ba00477 -expected-id 0x3ba00477' 'b tap -irlen 4 -disable'
arm='TAP 1 (a.tap): IDCODE 0x4ba00477: version 4, part 0xba00, manufacturer 0x23b (bank 5, code 0x3b: ARM Ltd)'
detect 0 --probe "$probe"
holds err.txt ''
holds out.txt "1 TAP on $probe
$arm
       IR 5 bits (declared in OpenOCD, not measured)
       expected 0x4ba00477 or 0x3ba00477
b.tap is declared but disabled, so it is not in the chain"
detect 0 -q --script --probe "$probe:a.tap"
holds err.txt ''
"$icehost" run -q --strict --probe "$probe" "$scratch/out.txt" || fail "the script does not pass"
detect 3 --probe "$probe:b.tap"
holds err.txt 'icehost: OpenOCD has no TAP "b.tap": expected a.tap'
"$icehost" run -q --probe "$probe:b.tap" "$scratch/out.txt" && fail 'a script ran on a disabled TAP'
# If the target is gone, detect must not report the IDCODEs that OpenOCD read when it started.
stop TERM "$server"
detect 3 --probe "$probe"
said '^icehost: OpenOCD cannot examine its chain: Error on socket'
holds out.txt ''
end

# If the chip is not the expected one, detect writes no script.
begin 'a tap -irlen 5 -expected-id 0x4ba01477'
detect 1 --script jtag --probe "$probe"
holds out.txt ''
said -xF "$arm"
said -F '       expected 0x4ba01477'
said '^icehost: OpenOCD: JTAG tap: a.tap UNEXPECTED: 0x4ba00477'
end

# OpenOCD may declare more TAPs than the chain has.
begin 'a tap -irlen 5' 'b tap -irlen 5'
detect 1 --probe "$probe"
said '^icehost: TAP 2 (b.tap): 0xffffffff is not a valid IDCODE'
end

# If no TAP is declared, OpenOCD finds the TAP itself.
begin
detect 0 -q --script jtag --probe "$probe"
grep -qx 'IR=5,0x1f' "$scratch/out.txt" || fail "no script"

# In a chain of three TAPs, OpenOCD and icehost do the same to the TAP in the middle.
serve --chain 4,5,6 --tap 2 --trace="$scratch/chain.txt"
start_openocd 'jtag newtap a tap -irlen 4' 'jtag newtap b tap -irlen 5' 'jtag newtap c tap -irlen 6' init
pins=remote-bitbang:127.0.0.1:$port
detect 0 --probe "$probe"
idcodes() { grep -o 'IDCODE 0x[0-9a-f]*' "$scratch/out.txt"; }
declared=$(idcodes)
printf '[A]\nIR=5,2\nDR=W,0\n[B]\nIR=0,0\nDR=R,32\n[C]\nIR=0,0\nDR=W,0\n' >"$scratch/parts.ini"
# played FILE OPTION...: writes the values that a run reads, and the chain's IR scans, to FILE.
played() {
  local file=$scratch/$1 before
  shift
  before=$(wc -l <"$scratch/chain.txt")
  "$icehost" run -q --json - "$@" examples/{scratch_register,read_idcode}.ini "$scratch/parts.ini" |
    jq -r 'select(.dr_out).dr_out' >"$file"
  sleep 0.2
  tail -n +$((before + 1)) "$scratch/chain.txt" | grep -o 'IR 15 bits.*' >>"$file"
}
played openocd.txt --probe "$probe:b.tap"
detect 3 --probe "$probe:x.tap"
holds err.txt 'icehost: OpenOCD has no TAP "x.tap": expected a.tap, b.tap, c.tap'
sed 's/^MASK=.*/IR_TDO=1/' examples/read_idcode.ini >"$scratch/ir.ini"
"$icehost" run -q --learn - --probe "$probe:b.tap" "$scratch/ir.ini" 2>"$scratch/err.txt" || true
holds err.txt "icehost: nothing was learned from $scratch/ir.ini: this probe does not report every expected value"
"$icehost" run -q --json "$scratch/out.txt" --probe "$probe:b.tap" "$scratch/ir.ini" 2>"$scratch/err.txt" || true
grep -q '"expected":"0x01","mask":"0x1f","captured":null,"met":false' "$scratch/out.txt" || fail 'no null'
said -F '[READ_IDCODE] expected 0x01, captured nothing (this probe does not report the value)'
detect 1 -q --script --probe "$probe"
holds err.txt 'icehost: cannot write a script, because OpenOCD has several TAPs: name one in --probe (a.tap, b.tap, c.tap)'
detect 0 -q --script --probe "$probe:b.tap"
grep -qx 'IR=5,0x1f' "$scratch/out.txt" || fail "no script for the TAP"
stop_openocd
detect 0 --probe "$pins"
[ "$declared" = "$(idcodes)" ] || fail "OpenOCD and the pins have different IDCODEs"
grep -q '^3 TAPs' "$scratch/out.txt" || fail "no chain of three"
detect 0 -q --script --probe "$pins"
grep -q '^# bits 9 to 14 with' "$scratch/out.txt" || fail 'wrong bits for the instruction of TAP 3'
played pins.txt --probe "$pins" --chain 4,5,6 --tap 2
played measured.txt --probe "$pins" --tap 2
[ "$(wc -l <"$scratch/pins.txt")" = 12 ] || fail "expected 7 answers and 5 IR scans"
for file in openocd measured; do
  diff "$scratch/$file.txt" "$scratch/pins.txt" || fail "$file.txt differs from pins.txt"
done
# With --strict, the chain must have the TAPs and IR lengths of --chain.
for place in '4,5,6 --tap 2' '4,5,5 --tap 2' '5,5,5 --tap 2' '10,5 --tap 2'; do
  "$icehost" run -q --strict --probe "$pins" --chain $place examples/read_idcode.ini || true
done 2>"$scratch/err.txt"
refused='examples/read_idcode.ini:11: link_jtag_execute failed: the chain does not match --chain: it has 3 TAPs with 15 IR bits in total
icehost: examples/read_idcode.ini failed'
holds err.txt "$refused
$refused
$refused"
kill "$server"
wait "$server" || true
