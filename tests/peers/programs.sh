#!/usr/bin/env bash
# Tests icehost with other programs: OpenOCD as client and as probe, openFPGALoader as client,
# sigrok-cli and GTKWave's converters on the waveform, and an XML parser on the picture.
source "$(dirname "${BASH_SOURCE[0]}")/../lib.sh"

serve --idcode 0x2BADC001

start_openocd 'jtag newtap sim tap -irlen 5 -expected-id 0x2BADC001' init

# same_as_simulated PROBE SCRIPT...: each script prints the same as on the simulated target.
same_as_simulated() {
  local probe=$1 script
  shift
  for script; do
    "$icehost" run --idcode 0x2BADC001 "$script" >"$scratch/simulated.txt"
    "$icehost" run --probe "$probe" "$script" >"$scratch/run.txt" 2>"$scratch/run.log" ||
      fail "$script on $probe"
    diff "$scratch/simulated.txt" "$scratch/run.txt" || fail "$script differs on $probe"
  done
}
# refused PROBE SCRIPT MESSAGE: the script fails on the probe with this message.
refused() {
  "$icehost" run --probe "$1" "$2" >/dev/null 2>"$scratch/run.log" && fail "$2 ran on $1"
  holds run.log "$2:$3
icehost: $2 failed"
}

scans=(tests/scripts/idcode.ini examples/scratch_register.ini examples/reset.ini)
same_as_simulated "$probe" "${scans[@]}"
same_as_simulated "$probe:sim.tap" tests/scripts/idcode.ini
# With a probe without pins, a page shows the scans, but a waveform is impossible.
"$icehost" run -q --probe "$probe" --html - tests/scripts/idcode.ini \
  >"$scratch/page.html" || fail "a page of OpenOCD"
grep -q '"DR 0x2badc001"' "$scratch/page.html" && grep -q '"total_steps":0,' "$scratch/page.html" ||
  fail "the page of OpenOCD"
# summary PROBE PATTERN: the summary of a run on the probe matches the pattern.
summary() {
  "$icehost" run -q --summary --probe "$1" tests/scripts/idcode.ini 2>"$scratch/run.log"
  grep -qE "$2" "$scratch/run.log" || fail "summary of $1"
}
summary "$probe" '^operations: 1, TCK cycles: unknown, bits shifted: 37, reads: 1,'
summary sim '^operations: 1, TCK cycles: 5[0-9], bits shifted: 37, reads: 1,'
"$icehost" run --probe "$probe:nope" examples/reset.ini 2>"$scratch/run.log" &&
  fail "a TAP that OpenOCD does not have"
holds run.log 'icehost: OpenOCD has no TAP "nope": expected sim.tap'
refused "$probe" examples/two_wire.ini \
  "5: link_config failed: OpenOCD cannot select the 2-wire interface"
refused "$probe" examples/read_idcode.gpio \
  "4: link_gpio_operator failed: OpenOCD cannot drive individual pins: GPIO scripts do not run on it"
stop_openocd

bitbang="remote-bitbang:127.0.0.1:$port"
same_as_simulated "$bitbang" "${scans[@]}" examples/read_idcode.gpio
refused "$bitbang" examples/two_wire.ini "5: link_config failed: this probe has no 2-wire interface"
refused "$bitbang" examples/reset_pulse.gpio \
  "5: link_gpio_operator failed: remote_bitbang has no output enables: only TDO can be released"
# Only pins that the server reports are learned.
printf '[ORVEX_ICE_GPIO]\nSTART\nGPIO_OE=0x1F\nPRINT=GPIO_IN\nEND\n' |
  "$icehost" run -q --probe "$bitbang" --learn - - >"$scratch/run.txt"
grep -qE '^PRINT=GPIO_IN  # expect 0x[02]0/0x20$' "$scratch/run.txt" || fail "pins on $bitbang"

# edges VCD: prints all changes as TIME NAME VALUE, sorted, whatever codes the file uses.
edges() {
  awk '$1 == "$var" { name[$4] = $5 }
    /^#/ { time = substr($1, 2) }
    time != "" && /^[01]/ { print time, name[substr($1, 2)], substr($1, 1, 1) }
    time != "" && /^s/ { print time, name[$2], substr($1, 2) }
    END { print time, "end" }' "$1" | sed 's/\\\(.\)/\1/g' | sort
}
# same_in_gtkwave VCD: a conversion by GTKWave's tools keeps all changes and names.
same_in_gtkwave() {
  vcd2fst "$1" "$scratch/run.fst" && fst2vcd "$scratch/run.fst" -o "$scratch/read.vcd" ||
    fail "GTKWave does not read $1"
  [ "$(edges "$1" | grep -c ' tck ')" -gt 50 ] || fail "a waveform without edges"
  diff <(edges "$1") <(edges "$scratch/read.vcd") || fail "GTKWave reads $1 differently"
}

# A logic analyser decodes the waveform of the simulated probe and of a remote_bitbang server.
for run in "--idcode 0x2BADC001 tests/scripts/idcode.ini" \
  "--idcode 0x2BADC001 examples/read_idcode.gpio" "--probe $bitbang tests/scripts/idcode.ini"; do
  # shellcheck disable=SC2086
  "$icehost" run -q --vcd "$scratch/run.vcd" --svg "$scratch/run.svg" $run
  shows_scan "$scratch/run.vcd" 0x2badc001 || fail "decoding $run"
  same_in_gtkwave "$scratch/run.vcd"
  xmllint --noout "$scratch/run.svg" || fail "the picture is not well-formed"
done

# Names with a meaning for XML or GTKWave: markup, every byte, a character not allowed in XML.
hostile="$scratch/<x>&\"$(printf '\001\377').ini"
cp tests/scripts/every_byte.ini "$hostile"
"$icehost" run -q --keep-going --svg "$scratch/run.svg" --vcd "$scratch/run.vcd" "$hostile" \
  examples/reset_pulse.gpio 2>"$scratch/run.log" && fail "an expectation was met"
xmllint --noout "$scratch/run.svg" || fail "the picture of a hostile script"
title=$(xmllint --xpath 'string(//*[local-name()="title"][contains(., "DR expected")])' "$scratch/run.svg")
[ "${title#*.ini}" = ":3 [<a b=\"c\">&amp;\\x41']: DR expected 0x00000000, captured 0x1ce51001 (mask 0xffffffff)" ] ||
  fail "the picture says $title"
same_in_gtkwave "$scratch/run.vcd"

stop TERM "$server"

# With both protocols, a script makes the same calls, and the server sees the same scans.
for protocol in remote-bitbang xvc; do
  serve --protocol "$protocol" --trace="$scratch/served.txt" --vcd "$scratch/$protocol.vcd"
  for script in examples/{read_idcode,scratch_register,two_wire}.ini \
    tests/scripts/{long_scans,tap_reset}.ini; do
    "$icehost" run -q --trace --probe "$protocol:127.0.0.1:$port" "$script" 2>&1 || true
  done >"$scratch/$protocol.calls"
  stop TERM "$server"
  cut -d' ' -f2- "$scratch/served.txt" | sed '/^client/d' >"$scratch/$protocol.scans"
  shows_scan "$scratch/$protocol.vcd" 0x12345678 || fail "the waveform of $protocol"
done
for what in calls scans; do
  diff "$scratch/remote-bitbang.$what" "$scratch/xvc.$what" || fail "the $what over XVC differ"
done
grep -qx 'DR 32 bits 0xedcba987 -> 0x12345678' "$scratch/xvc.scans" || fail "no scans over XVC"

# A bridge from XVC to remote_bitbang.
serve
behind=$server
serve --protocol xvc --probe "remote-bitbang:127.0.0.1:$port"
refused "xvc:127.0.0.1:$port" examples/reset.ini \
  "9: link_reset failed: XVC has no reset lines: NRST and TRST cannot be driven"
refused "xvc:127.0.0.1:$port" examples/read_idcode.gpio \
  "4: link_gpio_operator failed: XVC cannot drive individual pins: GPIO scripts do not run on it"
"$icehost" detect --probe "xvc:127.0.0.1:$port" >"$scratch/run.txt" || fail "detect over XVC"
sed -i "s/xvc:[^ ]*/the simulated probe/" "$scratch/run.txt"
holds run.txt "$("$icehost" detect)"
# openFPGALoader does not know this device, so its status does not matter.
openFPGALoader -c xvc-client --ip 127.0.0.1 --port "$port" --detect >"$scratch/run.log" 2>&1 || true
grep -q 'IDCODE: 0x1ce51001 ' "$scratch/run.log" || fail "openFPGALoader"
stop TERM "$server"
stop TERM "$behind"

# serve_socket: starts a server on a UNIX socket, and sets `server`.
serve_socket() {
  : >"$scratch/unix.log"
  env --default-signal=INT "$icehost" serve "unix:$scratch/socket" 2>"$scratch/unix.log" &
  server=$!
  wait_for 'unix:.*' "$scratch/unix.log" >/dev/null
}

# A killed server leaves its socket, which the next server replaces.
serve_socket
"$icehost" serve "unix:$scratch/socket" 2>"$scratch/twice.log" && fail "two servers on one socket"
kill -KILL "$server"
wait "$server" 2>/dev/null || true
serve_socket
"$icehost" run -q --probe "remote-bitbang:unix:$scratch/socket" examples/reset.ini || fail "UNIX socket"
stop INT "$server"
[ ! -e "$scratch/socket" ] || fail "the socket file is left"

# A client that is silent for too long is disconnected when another client connects.
serve --idle-limit 0.01
exec 4<>"/dev/tcp/127.0.0.1/$port"
printf 'R' >&4
read -r -t 5 -n 1 -u 4 || fail "no answer to R"
sleep 0.1
"$icehost" run -q --probe "remote-bitbang:127.0.0.1:$port" examples/reset.ini || fail "not served"
