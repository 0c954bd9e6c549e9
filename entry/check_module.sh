#!/usr/bin/env bash
# Holds a built plug-in to what its loader sees: check_module.sh libicescript.so
set -euo pipefail
readonly module=$1
status=0

# expect WHAT WANTED FOUND
expect() {
  [ "$2" = "$3" ] && return
  printf '%s: %s: wanted "%s", found "%s"\n' "$module" "$1" "$2" "$3"
  status=1
}

symbols=$(readelf -W --dyn-syms "$module")
segments=$(readelf -W --program-headers "$module")
dynamic=$(readelf -W --dynamic "$module")

# The names of the symbols that a condition holds for, on one line. Fields: 5 binding, 7 section,
# 8 name; what a library provides has a version behind an "@".
names() { awk '$1 ~ /^[0-9]+:$/ && $8 != "" && '"$1"' { print $8 }' <<<"$symbols" | sort | xargs; }
# The flags of the segments of one type, one line each.
flags() { awk -v type="$1" '$1 == type { $1=$2=$3=$4=$5=$6=$NF=""; gsub(" ", ""); print }' \
  <<<"$segments"; }

expect "exports" "ImplementScr" "$(names '$7 != "UND"')"
expect "imports from the host" \
  "link_config link_gpio_operator link_jtag_execute link_jtag_insert link_reset" \
  "$(names '$7 == "UND" && $5 == "GLOBAL" && $8 !~ /@/')"
expect "libraries but the runtimes" "" "$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic" |
  grep -vE '^lib(stdc\+\+|gcc_s|m|c)\.so' | xargs)"
expect "bound when loaded" "BIND_NOW" "$(grep -o 'BIND_NOW' <<<"$dynamic" | head -n 1)"
expect "text relocations" "" "$(grep -o 'TEXTREL' <<<"$dynamic" || true)"
expect "read-only after relocation" "R" "$(flags GNU_RELRO)"
expect "stack" "RW" "$(flags GNU_STACK)"
expect "segments to be written and run" "" "$(flags LOAD | grep 'W.*E' || true)"
expect "stack protection" "__stack_chk_fail" "$(grep -o '__stack_chk_fail' <<<"$symbols" | uniq)"
expect "checked library calls" "some" "$(! grep -qE '__[a-z]+_chk@' <<<"$symbols" || echo some)"
exit $status
