#!/usr/bin/env bash
# Runs the recipes of docs/moving-data.md, and compares what each prints with the text below it, but
# for blanks at the ends of lines, and quotes, which versions of sqlite3 set differently.
#   recipes.sh FOLDER    where the program is
set -euo pipefail
root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
PATH=$(realpath "$1"):$PATH
if ! command -v sqlite3 >/dev/null; then
  printf 'recipes: Skipped\nThe program sqlite3 is missing\n'
  exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/run" "$work/blocks"
cd "$work/blocks"
awk '/^```./ { n += /sh$/; file = sprintf("%03d.%s", n, substr($0, 4)); next }
     /^```/ { file = ""; next }
     file { print > file }' "$root/docs/moving-data.md"
cd "$work/run"
for block in "$work"/blocks/*.sh; do
  bash -euo pipefail "$block" >"$work/out"
  diff -Z <(cat "${block%.sh}.text" 2>/dev/null | tr -d '"') <(tr -d '"' <"$work/out")
done
