#!/usr/bin/env bash
# Times two statements and compares builds by the ratio.
#   bench/statements.sh BUILD_A [BUILD_B]     build folders, or programs; the first is the base
#
#   count   COUNT with a FOR over two fields, 65,000 records of 50 bytes
#   pass    one pass of a loop of three STOREs and a comparison, of 300,000
#
# Processor time, the best of several runs, less that of the same session without the statement.
set -euo pipefail

records=65000 passes=300000 runs=7
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

program() { if [[ -d $1 ]]; then realpath "$1/mox"; else realpath "$1"; fi; }

# A table of NAME C 20, CITY C 16, AGE N 5, PAY N 8 2: its header as CREATE writes it, with the
# count put in, and records behind it.
make_table() {
  printf 'CREATE big\nNAME,C,20\nCITY,C,16\nAGE,N,5\nPAY,N,8,2\n\n' | "$1" >/dev/null
  local low high
  printf -v low '\\x%02x' $((records % 256))
  printf -v high '\\x%02x' $((records / 256))
  { printf "\\x02$low$high"
    tail -c +4 big.dbf | head -c 518
    awk -v n=$records 'BEGIN { for (i = 1; i <= n; ++i)
      printf " %-20s%-16s%5d%8.2f", "name " i, "city " i % 100, i % 1000, i % 7919 / 4 }'
    printf '\x1a'
  } >made && mv made big.dbf
}

count() { printf 'SET TALK OFF\nUSE big\n%s\n' "${1:+COUNT FOR AGE>500 .AND. PAY<1000}"; }
loop() {
  printf 'SET TALK OFF\nSTORE 0 TO i\nDO WHILE i<%s\n' "${1:-1}"
  printf 'STORE i+1 TO i\nSTORE i TO a\nSTORE "x" TO b\nENDDO\n'
}

# Least processor time of a session in milliseconds: best PROGRAM INPUT
best() {
  local i TIMEFORMAT='%3U %3S'
  for ((i = 0; i < runs; ++i)); do
    { time "$1" <"$2" >/dev/null; } 2>&1
  done | awk '{ t = ($1 + $2) * 1000; if (NR == 1 || t < least) least = t } END { print int(least) }'
}

# Nanoseconds of one turn: cost PROGRAM STATEMENT ARGUMENT TURNS
cost() {
  "$2" "$3" >with
  "$2" "" >without
  echo $((($(best "$1" with) - $(best "$1" without)) * 1000000 / $4))
}

report() {  # NAME UNIT NANOSECONDS_PER_UNIT A [B]
  awk -v name="$1" -v unit="$2" -v per="$3" -v a="$4" -v b="${5:-}" 'BEGIN {
    printf "%-6s %9.2f %s", name, a / per, unit
    if (b != "") printf " %9.2f %s   ratio %.2f", b / per, unit, b / a
    print "" }'
}

[[ $# == 1 || $# == 2 ]] || { sed -n '2,8s/^# \{0,1\}//p' "$0" >&2; exit 2; }
programs=() counts=() loops=()
for build in "$@"; do programs+=("$(program "$build")"); done
cd "$work"
make_table "${programs[0]}"
for p in "${programs[@]}"; do
  counts+=("$(cost "$p" count yes 1)")
  loops+=("$(cost "$p" loop "$passes" "$passes")")
done
report count ms 1000000 "${counts[@]}"
report pass us 1000 "${loops[@]}"
