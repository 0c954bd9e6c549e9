#!/usr/bin/env bash
# Installs a build, moves the files to its folder `installed`, where other tests use them, and
# compares the list of files with a golden file. usage: install.sh BUILD_FOLDER SOURCE_FOLDER
set -euo pipefail
cd "$1"
rm -rf installing installed
cmake --install . --prefix "$PWD/installing" >/dev/null
mv installing installed
installed/bin/icehost run -q "$2/examples/read_idcode.ini"
list=$(cd installed && find . ! -type d ! -path './share/doc/icescript/docs/*' | LC_ALL=C sort)
golden=$2/tests/golden/installed.txt
[ -z "${ICESCRIPT_UPDATE_GOLDEN:-}" ] || printf '%s\n' "$list" >"$golden"
diff "$golden" - <<<"$list"
