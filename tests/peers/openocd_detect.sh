#!/usr/bin/env bash
# icehost detect through OpenOCD, whose words it takes. usage: openocd_detect.sh ICEHOST SOURCE_FOLDER
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"
icehost=$1
scratch=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$scratch"' EXIT
cd "$scratch"

fail() { echo "FAILED: $*"; tail -n +1 ./*.log ./*.txt; exit 1; }

# begin TAP...: a target, and OpenOCD that knows of these TAPs; sets server, openocd and probe.
begin() {
  "$icehost" serve tcp:0 --idcode 4ba00477 2>serve.log &
  server=$!
  local port tap
  port=$(wait_for '[0-9]+$' serve.log)
  {
    printf 'adapter driver remote_bitbang\nremote_bitbang host 127.0.0.1\nremote_bitbang port %s\n' "$port"
    printf 'transport select jtag\nreset_config srst_only\n'
    for tap; do echo "jtag newtap $tap"; done
    printf 'gdb_port disabled\ntelnet_port disabled\ntcl_port 0\n'
  } >openocd.cfg
  openocd -f openocd.cfg -c init >openocd.log 2>&1 &
  openocd=$!
  probe=openocd:127.0.0.1:$(wait_for 'port [0-9]+ for tcl' openocd.log | tr -dc 0-9)
}

end() {
  kill "$openocd" "$server" 2>/dev/null || true
  wait "$openocd" "$server" || true
  rm ./*.log
}

# detect STATUS OPTION...: into out.txt, standard error into err.txt.
detect() {
  local wanted=$1 status=0
  shift
  "$icehost" detect "$@" >out.txt 2>err.txt || status=$?
  [ "$status" = "$wanted" ] || fail "detect $* ended with $status"
}

# holds FILE TEXT: the text, and no more.
holds() { [ "$(cat "$1")" = "$2" ] || fail "$1 is not: $2"; }

# OpenOCD tells the name of a manufacturer, and is left as it was.
begin 'a tap -irlen 5 -expected-id 0x4ba00477 -expected-id 0x3ba00477' 'b tap -irlen 4 -disable'
arm='TAP 1 (a.tap): IDCODE 0x4ba00477: version 4, part 0xba00, manufacturer 0x23b (bank 5, code 0x3b: ARM Ltd)'
detect 0 --probe "$probe"
holds err.txt ''
holds out.txt "1 TAP on $probe
$arm
       IR 5 bits: OpenOCD's word, not measured
       expected 0x4ba00477 or 0x3ba00477
b.tap is declared, but disabled: it is not in the chain"
detect 0 -q --script --probe "$probe:a.tap"
holds err.txt ''
"$icehost" run -q --strict --probe "$probe:a.tap" out.txt || fail "the script does not pass"
detect 3 --probe "$probe:b.tap"
holds err.txt 'icehost: OpenOCD has no TAP "b.tap", it has: a.tap'
# What OpenOCD read when it started is not what is there now.
kill "$server"
wait "$server" || true
detect 3 --probe "$probe"
grep -q '^icehost: OpenOCD cannot examine its chain: Error on socket' err.txt || fail "no server"
holds out.txt ''
end

# Another chip than was expected; no script for it.
begin 'a tap -irlen 5 -expected-id 0x4ba01477'
detect 1 --script jtag --probe "$probe"
holds out.txt ''
grep -qxF "$arm" err.txt || fail "no report"
grep -qF '       expected 0x4ba01477' err.txt || fail "not what was expected"
grep -q '^icehost: OpenOCD: JTAG tap: a.tap UNEXPECTED: 0x4ba00477' err.txt || fail "no complaint"
end

# More TAPs than there are.
begin 'a tap -irlen 5' 'b tap -irlen 5'
detect 1 --probe "$probe"
grep -q '^icehost: TAP 2 (b.tap): 0xffffffff is no valid IDCODE' err.txt || fail "a TAP of ones"
end

# None is declared: OpenOCD finds it itself.
begin
detect 0 -q --script jtag --probe "$probe"
grep -qx 'IR=5,0x1f' out.txt || fail "no script"
end
echo "openocd_detect: all well"
