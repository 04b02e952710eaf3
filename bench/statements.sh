#!/usr/bin/env bash
# Times two statements and compares builds by the ratio.
#   bench/statements.sh BUILD_A [BUILD_B]     build folders, or programs; the first is the base
#
#   count   COUNT with a FOR over two fields, 65,000 records of 50 bytes
#   pass    one pass of a loop of three STOREs and a comparison, of 200,000
#
# Best of several runs, less the time of the same session without the statement.
set -euo pipefail

records=65000 passes=200000 runs=7
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

program() { if [[ -d $1 ]]; then realpath "$1/mox"; else realpath "$1"; fi; }

# A table of NAME C 20, CITY C 16, AGE N 5, PAY N 8 2: its header as CREATE writes it, with the
# count put in, and records behind it.
make_table() {
  (cd "$work" && printf 'CREATE big\nNAME,C,20\nCITY,C,16\nAGE,N,5\nPAY,N,8,2\n\n' | "$1" >/dev/null)
  local low high
  printf -v low '\\x%02x' $((records % 256))
  printf -v high '\\x%02x' $((records / 256))
  { printf "\\x02$low$high"
    tail -c +4 "$work/big.dbf" | head -c 518
    awk -v n=$records 'BEGIN { for (i = 1; i <= n; ++i)
      printf " %-20s%-16s%5d%8.2f", "name " i, "city " i % 100, i % 1000, i % 7919 / 4 }'
    printf '\x1a'
  } >"$work/made" && mv "$work/made" "$work/big.dbf"
}

count() { printf 'SET TALK OFF\nUSE big\n%s\n' "${1:+COUNT FOR AGE>500 .AND. PAY<1000}"; }
loop() { printf 'SET TALK OFF\nSTORE 0 TO i\nDO WHILE i<%s\nSTORE i+1 TO i\nSTORE i TO a\nSTORE "x" TO b\nENDDO\n' "${1:-1}"; }

# Best time of a session in microseconds: best PROGRAM INPUT
best() {
  local least=0 i start end
  for ((i = 0; i < runs; ++i)); do
    start=${EPOCHREALTIME/[.,]/}
    (cd "$work" && exec "$1" <"$2" >/dev/null)
    end=${EPOCHREALTIME/[.,]/}
    if ((i == 0 || end - start < least)); then least=$((end - start)); fi
  done
  echo "$least"
}

# Nanoseconds of one turn: cost PROGRAM STATEMENT ARGUMENT TURNS
cost() {
  "$2" "$3" >"$work/with"
  "$2" "" >"$work/without"
  echo $((($(best "$1" "$work/with") - $(best "$1" "$work/without")) * 1000 / $4))
}

report() {  # NAME UNIT NANOSECONDS_PER_UNIT A [B]
  awk -v name="$1" -v unit="$2" -v per="$3" -v a="$4" -v b="${5:-}" 'BEGIN {
    printf "%-6s %9.2f %s", name, a / per, unit
    if (b != "") printf " %9.2f %s   ratio %.2f", b / per, unit, b / a
    print "" }'
}

[[ $# == 1 || $# == 2 ]] || { sed -n '2,8s/^# \{0,1\}//p' "$0" >&2; exit 2; }
make_table "$(program "$1")"
counts=() loops=()
for build in "$@"; do
  counts+=("$(cost "$(program "$build")" count yes 1)")
  loops+=("$(cost "$(program "$build")" loop "$passes" "$passes")")
done
report count ms 1000000 "${counts[@]}"
report pass us 1000 "${loops[@]}"
