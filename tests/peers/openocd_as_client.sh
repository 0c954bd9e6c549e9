#!/usr/bin/env bash
# What icehost serve tells of OpenOCD, on the simulated target and as a proxy before another server.
# usage: openocd_as_client.sh ICEHOST SOURCE_FOLDER
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"
icehost=$1
cd "$2"
scratch=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$scratch"' EXIT

fail() { echo "FAILED: $*"; cat "$scratch"/*.err "$scratch"/*.log; exit 1; }

# serve NAME OPTION...: starts a server that records, and sets `port`.
serve() {
  local name=$1
  shift
  "$icehost" serve tcp:0 "$@" --trace="$scratch/$name.trace" --json "$scratch/$name.json" \
    --vcd "$scratch/$name.vcd" 2>"$scratch/$name.err" &
  servers="$! $servers"
  port=$(wait_for '[0-9]+$' "$scratch/$name.err")
}

servers=
serve direct --idcode 2badc001
serve proxy --probe "remote-bitbang:127.0.0.1:$port"

timeout 60 openocd -c "adapter driver remote_bitbang; remote_bitbang host 127.0.0.1" \
  -c "remote_bitbang port $port; transport select jtag; reset_config trst_and_srst" \
  -c 'jtag newtap sim tap -irlen 5 -expected-id 0x2BADC001' \
  -c 'gdb_port disabled; telnet_port disabled; tcl_port disabled; init' \
  -c 'irscan sim.tap 2; drscan sim.tap 32 0x12345678; echo "scratch [drscan sim.tap 32 0]"; runtest 7' \
  -c 'adapter assert trst; adapter deassert trst; exit' >"$scratch/openocd.log" 2>&1 ||
  fail "OpenOCD"
grep -qx 'scratch 12345678' "$scratch/openocd.log" || fail "the scratch register"
grep -q 'tap/device found: 0x2badc001' "$scratch/openocd.log" || fail "the IDCODE"
# From the nearer to the client on: the last lines of the other come when that one has left.
for server in $servers; do
  kill "$server"
  wait "$server" || fail "serve ended with $?"
done

# The check of the chain looks for up to 20 TAPs: 672 bits of ones, behind them the IDCODE.
ones=$(printf 'f%.0s' {1..160})
for name in direct proxy; do
  cut -d' ' -f2- "$scratch/$name.trace" | grep -v '^client\|^ended' >"$scratch/told"
  diff "$scratch/told" - <<END || fail "the trace of $name"
TAP reset (TMS)
DR 672 bits 0xffffffff$ones -> 0x${ones}2badc001
TAP reset (TMS)
IR 7 bits 0x7f -> 0x61
IR 5 bits 0x02 -> 0x01
DR 32 bits 0x12345678 -> 0x00000000
DR 32 bits 0x00000000 -> 0x12345678
idle 7 cycles
TRST=0 NRST=1
TAP reset (TRST)
TRST=1 NRST=1
END
  jq -r 'select(.scan) | "\(.scan) \(.bits) bits \(.in) -> \(.out)"' "$scratch/$name.json" |
    diff - <(grep '^[ID]R' "$scratch/told") || fail "the JSON of $name"
  sigrok-cli -l 1 -I vcd -i "$scratch/$name.vcd" -P jtag:tdi=tdi:tdo=tdo:tck=tck:tms=tms \
    -A jtag=bitstring-tdi:bitstring-tdo >"$scratch/decoded.log"
  grep -q 'DR TDO: .* (0x12345678), 32 bits' "$scratch/decoded.log" || fail "the waveform of $name"
done
echo "openocd_as_client: all well"
