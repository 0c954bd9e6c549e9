# For tests to source, with pipefail set; a test defines `fail`.

# wait_for PATTERN FILE: what the pattern matches, once the file has it.
wait_for() {
  local found
  for _ in $(seq 100); do
    found=$(grep -oE "$1" "$2" 2>/dev/null | head -n 1) && { echo "$found"; return; }
    sleep 0.1
  done
  fail "no $1 in $2" >&2
}
