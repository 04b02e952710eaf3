#!/usr/bin/env bash
# Tries the script run: it builds the program, without a word where no terminal is, and starts it in
# the current folder. The examples that it runs leave their tables as they are.
set -euo pipefail
root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
cd "$out"
"$root/run" -ver >version 2>said
grep -qx 'MOX Version 2.40.00299' version
test ! -s said
echo HELP LIST | "$root/run" >help
grep -q 'Shows records' help
printf 'CREATE here\n\nQUIT\n' | "$root/run" >/dev/null
test -s here.dbf
cp -r "$root/examples" kept
"$root/run" "$out/kept/tour.cmd" >tour
grep -q 'THE PEOPLE' tour
grep -q '^16921.500000 $' tour
"$root/run" "$out/kept/stock/STOCK" >stock
grep -q '^00004  SMITH *161.75 $' stock
for table in people orders; do cmp "$root/examples/$table.dbf" "kept/$table.dbf"; done
cmp "$root/examples/stock/PARTS.dbf" kept/stock/PARTS.dbf
