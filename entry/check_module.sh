#!/usr/bin/env bash
# Checks the symbols and segments of the plug-in and of icehost: check_module.sh PLUGIN ICEHOST
set -euo pipefail
readonly HOST_FUNCTIONS="link_config link_gpio_operator link_jtag_execute link_jtag_insert link_reset"
status=0

# expect FILE WHAT WANTED FOUND: fails the check unless both values are equal.
expect() {
  [ "$3" = "$4" ] && return
  printf '%s: %s: wanted "%s", found "%s"\n' "$1" "$2" "$3" "$4"
  status=1
}

# names CONDITION: prints the names of the matching symbols on one line. awk field 5 is the binding,
# 7 the section and 8 the name. The name of a symbol from a library has a version after "@".
names() { awk '$1 ~ /^[0-9]+:$/ && $8 != "" && '"$1"' { print $8 }' <<<"$symbols" | sort | xargs; }
# flags TYPE: prints the flags of each segment of this type, one per line.
flags() { awk -v type="$1" '$1 == type { $1=$2=$3=$4=$5=$6=$NF=""; gsub(" ", ""); print }' \
  <<<"$segments"; }

# check FILE EXPORTS: runs the checks that apply to both files.
check() {
  local file=$1
  symbols=$(readelf -W --dyn-syms "$file")
  segments=$(readelf -W --program-headers "$file")
  dynamic=$(readelf -W --dynamic "$file")
  # A name with a version is a variable that the program copies from a library, not an export.
  expect "$file" "exports" "$2" "$(names '$7 != "UND" && $8 !~ /@/')"
  expect "$file" "binding of imports" "BIND_NOW" "$(grep -o 'BIND_NOW' <<<"$dynamic" | head -n 1)"
  expect "$file" "text relocations" "" "$(grep -o 'TEXTREL' <<<"$dynamic" || true)"
  expect "$file" "flags of the data that is read-only after relocation" "R" "$(flags GNU_RELRO)"
  expect "$file" "flags of the stack" "RW" "$(flags GNU_STACK)"
  expect "$file" "segments both writable and executable" "" "$(flags LOAD | grep 'W.*E' || true)"
  expect "$file" "type of the file" "DYN" "$(readelf -h "$file" | awk '/Type:/ {print $2}')"
  expect "$file" "stack protection" "__stack_chk_fail" \
    "$(grep -o '__stack_chk_fail' <<<"$symbols" | uniq)"
  expect "$file" "checked library calls" "some" \
    "$(! grep -qE '__[a-z]+_chk@' <<<"$symbols" || echo some)"
  expect "$file" "first instruction of an export" "endbr64" \
    "$(objdump -d --no-show-raw-insn "$file" |
      awk -v name="<${2%% *}>:" '$2 == name { getline; print $2; exit }')"
}

check "$1" "ImplementScr"
expect "$1" "imports from the host" "$HOST_FUNCTIONS" \
  "$(names '$7 == "UND" && $5 == "GLOBAL" && $8 !~ /@/')"
expect "$1" "libraries except runtimes" "" "$(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic" |
  grep -vE '^lib(stdc\+\+|gcc_s|m|c)\.so' | xargs)"
check "$2" "$HOST_FUNCTIONS"
exit $status
