#!/usr/bin/env bash
# Indexes beside those of the sqlite3 command: building one over 65,000 records with a 20-byte key,
# and 5,000 searches in a loop of a command file. Prints milliseconds, the best of five runs, with
# the start of the program taken off, and the ratio.
#   bench/index.sh [PROGRAM]
set -euo pipefail
mox=$(realpath "${1:-$(dirname "$0")/../build/mox}")
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"

records=65000
searches=5000

# A key is the text of a number: digits that come in no order, then the exponent.
cat >make.cmd <<END
STORE 1 TO R
USE T
DO WHILE R<=$records
APPEND BLANK
REPLACE NAME WITH R*0.6180339887
STORE R+1 TO R
ENDDO
END
printf 'CREATE T\nNAME,C,20\n\nDO make\nQUIT\n' | "$mox" >/dev/null
# The same rows for sqlite3, from the table's own bytes: a mark and 20 characters each.
tail -c +522 T.dbf | head -c $((records * 21)) | fold -b -w 21 | cut -c 2- >rows.txt
[[ $(wc -l <rows.txt) -ge $((records - 1)) ]]
sqlite3 t.db 'CREATE TABLE t(name TEXT)' '.mode list' '.import rows.txt t'

# Every 13th row is searched for.
awk -v n=$searches 'NR % 13 == 1 && c++ < n' rows.txt >keys.txt
sed 's/.*/FIND "&"/' keys.txt | { echo 'USE T INDEX N'; cat; } >find.cmd
{
  echo "BEGIN;"
  sed "s/.*/SELECT rowid FROM t WHERE name='&';/" keys.txt
} >select.sql
cat >loop.cmd <<END
USE T INDEX N
STORE 1 TO R
DO WHILE R<=$records
FIND R*0.6180339887
STORE R+13 TO R
ENDDO
END

best() {  # COMMAND: the best of five runs in microseconds
  local least= start took
  for _ in 1 2 3 4 5; do
    start=${EPOCHREALTIME/[.,]/}
    bash -c "$1" >/dev/null
    took=$((${EPOCHREALTIME/[.,]/} - start))
    [[ -n $least && $least -le $took ]] || least=$took
  done
  echo "$least"
}

row() {  # TITLE MOX-COMMAND SQLITE-COMMAND
  local m s
  m=$(($(best "$2") - $(best "printf 'USE T\nQUIT\n' | '$mox'")))
  s=$(($(best "$3") - $(best "sqlite3 t.db 'SELECT 1'")))
  awk -v t="$1" -v m=$m -v s=$s \
    'BEGIN { printf "%-34s %8.1f ms %8.1f ms  ratio %.1f\n", t, m / 1000, s / 1000, m / s }'
}

printf '%-34s %11s %11s\n' '' mox sqlite3
row "index on $records records" "printf 'USE T\nINDEX ON NAME TO N\nQUIT\n' | '$mox'" \
  "sqlite3 t.db 'DROP INDEX IF EXISTS n' 'CREATE INDEX n ON t(name)'"
sqlite3 t.db 'DROP INDEX n' 'CREATE INDEX n ON t(name)'
printf 'USE T\nINDEX ON NAME TO N\nQUIT\n' | "$mox" >/dev/null
row "$searches finds, one statement each" "printf 'DO find\nQUIT\n' | '$mox'" \
  "sqlite3 t.db <select.sql"
row "$searches finds in a loop" "printf 'DO loop\nQUIT\n' | '$mox'" "sqlite3 t.db <select.sql"
