#!/usr/bin/env bash
# What run --svf writes, played by OpenOCD on the simulated target and imported again.
# usage: openocd_svf.sh ICEHOST SOURCE_FOLDER
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"
icehost=$(realpath "$1")
cd "$2"
scratch=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null || true; rm -rf "$scratch"' EXIT

fail() { echo "FAILED: $*"; cat "$scratch"/*.log; exit 1; }

# serve OPTION...: a fresh target; `port` is its server's.
serve() {
  kill "${server:-}" 2>/dev/null && wait "$server" 2>/dev/null
  : >"$scratch/serve.log"
  "$icehost" serve tcp:0 "$@" 2>"$scratch/serve.log" &
  server=$!
  port=$(wait_for '[0-9]+$' "$scratch/serve.log")
}

# with_openocd COMMAND...: OpenOCD's exit status; its log is openocd.log.
with_openocd() {
  local commands=() command
  for command; do commands+=(-c "$command"); done
  openocd -c 'adapter driver remote_bitbang; remote_bitbang host 127.0.0.1' \
    -c "remote_bitbang port $port; transport select jtag; reset_config trst_and_srst" \
    -c 'jtag newtap sim tap -irlen 5 -expected-id 0x1ce51001 -expected-id 0x1ce51003' \
    -c 'gdb_port disabled; telnet_port disabled' "${commands[@]}" >"$scratch/openocd.log" 2>&1
}
play() { with_openocd 'tcl_port disabled' init "svf $1" exit; }

# written FILE SCRIPT OPTION...
written() {
  local file=$1
  shift
  "$icehost" run -q --svf "$file" "$@" >"$scratch/run.log" 2>&1 || fail "run $*"
}

# What each script does to the target, OpenOCD's player does too.
for script in examples/read_idcode.ini examples/scratch_register.ini examples/two_wire.ini \
  examples/read_idcode.gpio tests/scripts/long_scans.ini tests/scripts/walk.gpio; do
  written "$scratch/played.svf" "$script"
  serve
  play "$scratch/played.svf" || fail "OpenOCD on $script"
  grep -q 'svf file programmed successfully' "$scratch/openocd.log" || fail "no success of $script"
done

# Another target is found out by what a script read; bits that a script leaves out do not count.
written "$scratch/ini.svf" examples/read_idcode.ini
written "$scratch/gpio.svf" examples/read_idcode.gpio
serve --idcode 2ce51001
play "$scratch/ini.svf" || fail "OpenOCD compares the version, which the mask leaves out"
play "$scratch/gpio.svf" && fail "OpenOCD took the wrong IDCODE of a GPIO script"
grep -q 'tdo check error' "$scratch/openocd.log" || fail "OpenOCD failed for another reason"
serve --idcode 1ce51003
play "$scratch/ini.svf" && fail "OpenOCD took the wrong IDCODE of a JTAG script"
grep -q 'tdo check error' "$scratch/openocd.log" || fail "OpenOCD failed for another reason"

# On OpenOCD as the probe, the same scans but for what it does not tell.
scans() { grep -oE '^S[DI]R .*' "$1" | sed -E "${2:-}"; }
serve
with_openocd 'tcl_port 0' &
openocd=$!
tcl=$(wait_for 'port [0-9]+ for tcl' "$scratch/openocd.log" | tr -dc 0-9)
for script in examples/read_idcode.ini examples/scratch_register.ini; do
  written "$scratch/pins.svf" "$script"
  written "$scratch/calls.svf" --probe "openocd:127.0.0.1:$tcl" "$script"
  diff <(scans "$scratch/pins.svf" 's/^(SIR.*) TDO.*/\1;/') <(scans "$scratch/calls.svf") ||
    fail "$script on OpenOCD"
done
written "$scratch/calls.svf" --probe "openocd:127.0.0.1:$tcl" examples/reset.ini
grep -q 'warning: --svf: SVF has no word for NRST' "$scratch/run.log" || fail "no word of NRST"
kill "$openocd" 2>/dev/null || true

# There and back: the same scans, and the same verdict on every target.
for script in examples/read_idcode.ini examples/scratch_register.ini examples/two_wire.ini; do
  written "$scratch/played.svf" "$script"
  "$icehost" import "$scratch/played.svf" -o "$scratch/back.ini" || fail "import of $script"
  "$icehost" check --strict "$scratch/back.ini" >"$scratch/check.log" || fail "check of $script"
  for options in "" "--idcode 2ce51001" "--idcode 1ce51003" "--register 2:31"; do
    # shellcheck disable=SC2086
    for one in "$script" "$scratch/back.ini"; do
      status=0
      "$icehost" run -q $options --svf "$scratch/${one##*.}.${one##*/}.svf" "$one" \
        >"$scratch/run.log" 2>&1 || status=$?
      echo "$status" >>"$scratch/${one##*.}.${one##*/}.svf"
    done
    diff <(grep -v '^!' "$scratch/ini.${script##*/}.svf") <(grep -v '^!' "$scratch/ini.back.ini.svf") ||
      fail "$script there and back, $options"
  done
done
echo "openocd_svf: all well"
