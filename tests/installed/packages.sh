#!/usr/bin/env bash
# Tests the Debian packages in build/package: checks them with lintian, then installs, uses and
# purges them on this machine. Must run as root.
set -euo pipefail
cd "$(dirname "$0")/../.."
root=$PWD
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
[ "$(id -u)" -eq 0 ] || { echo "packages: this test must run as root"; exit 1; }
say() { printf 'packages: %s\n' "$*" >&2; }
quietly() { "$@" >"$scratch/log" 2>&1 || { cat "$scratch/log"; exit 1; }; }

say "a second build in another folder gives the same files"
quietly ./dev package build/package-again
compared=0
for file in build/package/*.{deb,dsc,tar.xz}; do
  cmp "$file" "build/package-again/${file##*/}"
  compared=$((compared + 1))
done
[ "$compared" -eq 5 ]

say "lintian finds nothing"
lintian --allow-root --fail-on error,warning build/package/*.changes

# Prints the files and packages of icescript on this system.
ours() {
  find /etc /opt /usr /var \( -iname '*icescript*' -o -iname '*icehost*' \) | sort
  dpkg-query -W -f '${Package} ${Status}\n' 'icescript*' 2>/dev/null || true
}
export DEBIAN_FRONTEND=noninteractive
found=$(ours)
[ -z "$found" ] || { say "already installed: $found"; exit 1; }
trap 'rm -rf "$scratch"; apt-get purge -y icescript icescript-dev >/dev/null 2>&1 || true' EXIT
# The command in README.md, with -y added.
cd build/package
quietly apt-get install ./icescript_*_amd64.deb -y
quietly apt-get install ./icescript-dev_*_amd64.deb -y

say "the first example of the manual and all documents run"
cd "$scratch"
MANWIDTH=200 man icehost | col -bx >manual
example=$(sed -n '/^EXAMPLES/,$ s/^ *\$ //p' manual | head -n 1)
say "$example"
eval "$example" | diff - <(icehost run "$root/examples/read_idcode.ini")
"$root/tests/installed/documents.py" /usr/bin/icehost "$root"

[ "$(pkg-config --variable=plugindir icescript)" = /usr/lib/x86_64-linux-gnu/icescript ]

say "a purge removes everything"
quietly apt-get purge icescript -y
found=$(ours)
[ -z "$found" ] || { say "left behind: $found"; exit 1; }
say "all tests passed"
