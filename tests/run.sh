#!/usr/bin/env bash
# Tries the script run: it builds the program, starts it in the current folder, and enters the
# folder of a command file. The examples that it runs leave the working tree as it is.
set -euo pipefail
root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
cd "$out"
"$root/run" -ver >version
grep -qx 'MOX Version 2.40.00299' version
printf 'CREATE here\n\nQUIT\n' | "$root/run" >/dev/null
test -s here.dbf
cp -r "$root/examples" kept
"$root/run" "$out/kept/tour.cmd" >tour
grep -q 'THE PEOPLE' tour
"$root/run" "$out/kept/stock/STOCK" >stock
grep -q 'TO BE PAID' stock
cmp "$root/examples/people.dbf" kept/people.dbf
cmp "$root/examples/stock/PARTS.dbf" kept/stock/PARTS.dbf
