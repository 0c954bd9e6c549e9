#!/usr/bin/env bash
# OpenOCD is a client of icehost serve, which serves the simulated target or another server.
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

# record NAME OPTION...: starts a server that writes its records to files with this name.
record() {
  local name=$scratch/$1
  shift
  serve "$@" --trace="$name.trace" --json "$name.json" --vcd "$name.vcd"
}

record direct --idcode 2badc001
direct=$server
record proxy --probe "remote-bitbang:127.0.0.1:$port"

(with_openocd 'jtag newtap sim tap -irlen 5 -expected-id 0x2BADC001; tcl_port disabled; init' \
  'irscan sim.tap 2; drscan sim.tap 32 0x12345678; echo "scratch [drscan sim.tap 32 0]"; runtest 7' \
  'adapter assert trst; adapter deassert trst; exit') || fail "OpenOCD"
grep -qx 'scratch 12345678' "$scratch/openocd.log" || fail "the scratch register"
grep -q 'tap/device found: 0x2badc001' "$scratch/openocd.log" || fail "the IDCODE"
# The proxy ends first, because the other server writes its last lines when the proxy has left.
stop TERM "$server"
stop TERM "$direct"

# OpenOCD looks for up to 20 TAPs, so it reads 672 bits: the IDCODE, and then only ones.
ones=$(printf 'f%.0s' {1..160})
for name in direct proxy; do
  cut -d' ' -f2- "$scratch/$name.trace" | grep -v '^client\|^ended' >"$scratch/told.txt"
  holds told.txt "TAP reset (TMS)
DR 672 bits 0xffffffff$ones -> 0x${ones}2badc001
TAP reset (TMS)
IR 7 bits 0x7f -> 0x61
IR 5 bits 0x02 -> 0x01
DR 32 bits 0x12345678 -> 0x00000000
DR 32 bits 0x00000000 -> 0x12345678
idle 7 cycles
TRST=0 NRST=1
TAP reset (TRST)
TRST=1 NRST=1"
  jq -r 'select(.scan) | "\(.scan) \(.bits) bits \(.in) -> \(.out)"' "$scratch/$name.json" |
    diff - <(grep '^[ID]R' "$scratch/told.txt") || fail "the JSON of $name"
  shows_scan "$scratch/$name.vcd" 0x12345678 || fail "the waveform of $name"
done
