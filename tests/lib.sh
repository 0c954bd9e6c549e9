# Functions that the shell tests share. A test with the arguments ICEHOST and SOURCE_FOLDER sources
# this file and then runs in the source folder. `scratch` is a temporary folder.
set -euo pipefail
icehost=$(realpath "$1")
cd "$2"
scratch=$(mktemp -d)

finish() {
  # shellcheck disable=SC2046: each process must be one argument
  kill $(jobs -p) 2>/dev/null || true
  wait
  rm -rf "$scratch"
}
trap finish EXIT

fail() {
  echo "FAILED: $*"
  find "$scratch" \( -name '*.log' -o -name '*.txt' \) -exec tail -n +1 {} +
  exit 1
}

# holds FILE TEXT: fails unless the file in `scratch` contains exactly this text.
holds() { [ "$(cat "$scratch/$1")" = "$2" ] || fail "$1 does not contain exactly: $2"; }

# wait_for PATTERN FILE: waits until the file matches the pattern, and prints the match.
wait_for() {
  local found
  for _ in $(seq 100); do
    found=$(grep -oE "$1" "$2" 2>/dev/null | head -n 1) && { echo "$found"; return; }
    sleep 0.1
  done
  fail "no $1 in $2" >&2
}

# serve OPTION...: starts a server of the simulated target, and sets `server` (its PID) and `port`.
serve() {
  : >"$scratch/serve.log"
  "$icehost" serve tcp:0 "$@" 2>"$scratch/serve.log" &
  server=$!
  port=$(wait_for '[0-9]+$' "$scratch/serve.log")
}

# stop SIGNAL SERVER: ends the server, which must exit with status 0.
stop() {
  kill "-$1" "$2"
  wait "$2" || fail "serve ended with $?"
}

# with_openocd COMMAND...: replaces the shell with OpenOCD, which connects to the server at `port`.
with_openocd() {
  local commands=() command
  for command; do commands+=(-c "$command"); done
  exec timeout 300 openocd -c 'adapter driver remote_bitbang; remote_bitbang host 127.0.0.1' \
    -c "remote_bitbang port $port; transport select jtag; reset_config trst_and_srst" \
    -c 'gdb_port disabled; telnet_port disabled' "${commands[@]}" >"$scratch/openocd.log" 2>&1
}

# start_openocd COMMAND...: starts OpenOCD in the background; sets `openocd` (its PID) and `probe`.
start_openocd() {
  : >"$scratch/openocd.log"
  with_openocd 'tcl_port 0' "$@" &
  openocd=$!
  probe=openocd:127.0.0.1:$(wait_for 'port [0-9]+ for tcl' "$scratch/openocd.log" | tr -dc 0-9)
}

stop_openocd() {
  kill "$openocd"
  wait "$openocd" || true
}

# shows_scan VCD VALUE: succeeds if sigrok-cli decodes a DR scan with this value from the waveform.
shows_scan() {
  sigrok-cli -l 1 -I vcd -i "$1" -P jtag:tdi=tdi:tdo=tdo:tck=tck:tms=tms \
    -A jtag=bitstring-tdi:bitstring-tdo >"$scratch/decoded.log"
  grep -q "DR TDO: .* ($2), 32 bits" "$scratch/decoded.log"
}
