#!/usr/bin/env bash
# Installs a build, moves what was installed to the folder `installed` in it, where other tests find
# it, and compares the list of files. usage: install.sh BUILD_FOLDER SOURCE_FOLDER
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
