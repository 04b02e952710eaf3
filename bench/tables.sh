#!/usr/bin/env bash
# Whole tables against sqlite3 on the same data: import of a delimited file, sorted copy, copy to
# text, join on an equality. Prints seconds and their ratio.
#   bench/tables.sh [PROGRAM [ROWS]]     default: build/mox, 65000
set -euo pipefail
root=$(cd -P "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
program=$(realpath "${1:-$root/build/mox}")
rows=${2:-65000}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"

awk -v n="$rows" 'BEGIN { srand(1); for (i = 1; i <= n; i++)
  printf "\"ITEM%06d\",%d,%.2f,T\n", rand() * 1000000, i, rand() * 10000 }' >items.txt
head -n 1000 items.txt >one.txt
awk 'NR % 3 == 0' one.txt | head -n 300 >two.txt

# Makes a table of the shared structure from a text file.
table() {
  printf 'CREATE %s\nNAME,C,20\nNUM,N,8\nPRICE,N,10,2\nFLAG,L\n\nUSE %s\n' "$1" "$1"
  printf 'APPEND FROM %s SDF DELIMITED\n' "$2"
}
sql="create table t(name text, num integer, price real, flag text);"

# Wall time of a command, input from a file, the best of three.
seconds() {
  local best=999 t
  for _ in 1 2 3; do
    rm -f new.*
    TIMEFORMAT=%R
    t=$({ time "$@" >out.txt; } 2>&1)
    best=$(awk -v a="$best" -v b="$t" 'BEGIN { print a < b ? a : b }')
  done
  echo "$best"
}
mine() { "$program" <"$1"; }
theirs() { sqlite3 "$1" <"$2"; }

# compare TITLE SCRIPT DATABASE SQL
compare() {
  printf '%s\nQUIT\n' "$2" >in.cmd
  printf '%s\n' "$4" >in.sql
  local a b
  a=$(seconds mine in.cmd)
  grep -Eq 'ERROR|CANNOT|DOES NOT' out.txt && cat out.txt
  b=$(seconds theirs "$3" in.sql)
  awk -v t="$1" -v a="$a" -v b="$b" 'BEGIN { printf "%-30s %8.3f %8.3f  x%.1f\n", t, a, b, a / (b > 0.001 ? b : 0.001) }'
}

"$program" < <(table ITEMS items.txt; table ONE one.txt; table TWO two.txt; echo QUIT) >/dev/null
for f in items one two; do
  sqlite3 "$f.db" "$sql" ".mode csv" ".import $f.txt t"
done

printf '%-30s %8s %8s\n' "" mox sqlite3
compare "import $rows rows" "$(table new items.txt)" new.db "$sql
.mode csv
.import items.txt t"
compare "sorted copy" $'USE ITEMS\nSORT ON NAME TO new' items.db \
  "drop table if exists s; create table s as select * from t order by name;"
compare "copy to text" $'USE ITEMS\nCOPY TO new.txt SDF DELIMITED' items.db ".mode csv
.output new.csv
select * from t;"
compare "copy a table" $'USE ITEMS\nCOPY TO new' items.db \
  "drop table if exists s; create table s as select * from t;"
compare "join 1000 x 300" $'USE ONE\nSELECT B\nUSE TWO\nSELECT A\nJOIN TO new FOR A.NAME=B.NAME' one.db \
  "attach 'two.db' as b; drop table if exists j; create table j as select * from main.t a join b.t b on a.name=b.name;"
compare "total by key" $'USE ITEMS\nTOTAL TO new ON FLAG' items.db \
  "drop table if exists s; create table s as select flag, sum(num), sum(price) from t group by flag;"
