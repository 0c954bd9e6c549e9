#!/usr/bin/env bash
# OpenOCD plays the files of run --svf on the simulated target, and icehost imports them again.
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

# target OPTION...: replaces the target with a new one.
target() {
  [ -z "${server:-}" ] || stop TERM "$server"
  serve "$@"
}

tap='jtag newtap sim tap -irlen 5 -expected-id 0x1ce51001 -expected-id 0x1ce51003'
play() { (with_openocd "$tap" 'tcl_port disabled' init "svf $1" exit); }

# refused FILE KIND: OpenOCD must fail because the IDCODE differs from the one that the script read.
refused() {
  play "$1" && fail "OpenOCD accepted the wrong IDCODE of a $2 script"
  grep -q 'tdo check error' "$scratch/openocd.log" || fail "OpenOCD failed for another reason"
}

# written FILE SCRIPT OPTION...: runs the script with --svf FILE.
written() {
  local file=$1
  shift
  "$icehost" run -q --svf "$file" "$@" >"$scratch/run.log" 2>&1 || fail "run $*"
}

# OpenOCD's player does the same to the target as each script.
for script in examples/read_idcode.ini examples/scratch_register.ini examples/two_wire.ini \
  examples/read_idcode.gpio tests/scripts/long_scans.ini tests/scripts/walk.gpio; do
  written "$scratch/played.svf" "$script"
  target
  play "$scratch/played.svf" || fail "OpenOCD on $script"
  grep -q 'svf file programmed successfully' "$scratch/openocd.log" || fail "no success message for $script"
done

# The player fails if the target's values differ from those of the run and are not masked.
written "$scratch/ini.svf" examples/read_idcode.ini
written "$scratch/gpio.svf" examples/read_idcode.gpio
target --idcode 2ce51001
play "$scratch/ini.svf" || fail "OpenOCD compares the version, which the mask excludes"
refused "$scratch/gpio.svf" GPIO
target --idcode 1ce51003
refused "$scratch/ini.svf" JTAG

# With OpenOCD as the probe, the scans are the same, but without the captured IR.
scans() { grep -oE '^S[DI]R .*' "$1" | sed -E "${2:-}"; }
target
start_openocd "$tap"
for script in examples/read_idcode.ini examples/scratch_register.ini; do
  written "$scratch/pins.svf" "$script"
  written "$scratch/calls.svf" --probe "$probe" "$script"
  diff <(scans "$scratch/pins.svf" 's/^(SIR.*) TDO.*/\1;/') <(scans "$scratch/calls.svf") ||
    fail "$script on OpenOCD"
done
written "$scratch/calls.svf" --probe "$probe" examples/reset.ini
grep -q 'warning: --svf: SVF has no statement for NRST' "$scratch/run.log" || fail "no warning about NRST"

# Each statement and comment for the calls of a script, some of whose values are wrong or not read.
printf '[A]\nIR=5,1\nDR=R,8\nTDO=2\nIR_TDO=1\n[B]\nIR=5,2\nDR=W,0\n[CONTROL]\nRESET=1\n' >"$scratch/all.ini"
printf '[C]\nIR=0,0\nDR=W,8,3\n' >>"$scratch/all.ini"
"$icehost" run -q --keep-going --svf "$scratch/calls.svf" --probe "$probe" "$scratch/all.ini" \
  >"$scratch/run.log" 2>&1 && fail "a wrong value with OpenOCD"
sed "s|$scratch/||; 1,3d" "$scratch/calls.svf" | diff - <(cat <<'END'
! all.ini:3 [A]
SIR 5 TDI (01);
SDR 8 TDI (00) TDO (01) MASK (FF);
! line 5 expects ir_out 0x01, mask 0x1f
! line 4 expects dr_out 0x02, mask 0xff
! all.ini:8 [B]
SIR 5 TDI (02);
! all.ini:10 [CONTROL]
! NRST low, NRST high
! all.ini:13 [C]
SDR 8 TDI (03);
! The script failed.
END
) || fail "the SVF of calls"

# verdict SCRIPT OPTION...: prints the status of a run.
verdict() {
  local status=0
  "$icehost" run -q "$@" >"$scratch/run.log" 2>&1 || status=$?
  echo "$status"
}

# A file and its import, in both forms, have the same scans, and the same verdict on every target.
# reset.ini is an exception, because SVF has no statement for NRST.
for script in examples/*.ini examples/*.gpio; do
  written "$scratch/there.svf" "$script"
  for form in jtag gpio; do
    "$icehost" import -q --script $form "$scratch/there.svf" -o "$scratch/$form" ||
      fail "import of $script as $form"
    "$icehost" check --strict "$scratch/$form" >"$scratch/check.log" || fail "check of $script"
    [ "$script" = examples/reset.ini ] && continue
    written "$scratch/back.svf" "$scratch/$form"
    diff <(scans "$scratch/there.svf") <(scans "$scratch/back.svf") || fail "$script as $form"
  done
  for options in "" "--idcode=2ce51001" "--idcode=1ce51003" "--register=2:31"; do
    # shellcheck disable=SC2086
    verdicts=$(verdict "$scratch/jtag" $options; verdict "$scratch/gpio" $options
      [[ $script == *[.]gpio || $script == */reset.ini ]] || verdict "$script" $options)
    [ "$(uniq <<<"$verdicts" | wc -l)" = 1 ] || fail "verdicts on $script, $options: $verdicts"
  done
done
