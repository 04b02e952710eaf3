#!/usr/bin/env python3
"""Times the program beside sqlite3 and Python, and beside another build.

    bench/bench.py [--runs N] [--rows N] [--only WORD] PROGRAM [OTHER]
    bench/bench.py --counts PROGRAM [OTHER]   instructions (valgrind) and system calls (strace), a record
    bench/bench.py --sizes PROGRAM [OTHER]    milliseconds at 1,000, 8,000 and 65,000 records

Whole processes, run in turn, their output to a file; the median of the runs in milliseconds, and the
ratio of the program to each other one. Before a row is timed, all must give the same answer. The
peers do no more than we do: sqlite3 doesn't wait for the disk. Tables are written in pieces of 64
KiB: a file made by one large write can cost several times more for each small write afterwards.
"""

import argparse
import os
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

PIECE = 65536
ROWS = 65000
FIELDS = (("NAME", "C", 20, 0), ("CITY", "C", 16, 0), ("AGE", "N", 5, 0), ("PAY", "N", 10, 2),
          ("FLAG", "L", 1, 0))
SQL_FIELDS = "name text, city text, age integer, pay real, flag text"


# ---- Data

def person(i):
    """Row i: names in no order, all different; the same cities again and again."""
    mixed = i * 7919 % 65003
    return ("%06d on the list" % (100000 + mixed), "City %d" % (i % 100), i % 1000, mixed / 4,
            "T" if i % 3 == 0 else "F")


def write(path, data):
    with open(path, "wb", buffering=0) as f:
        for at in range(0, len(data), PIECE):
            f.write(data[at:at + PIECE])


def dbf(path, rows):
    size = 1 + sum(f[2] for f in FIELDS)
    head = bytes([2]) + len(rows).to_bytes(2, "little") + bytes(3) + size.to_bytes(2, "little")
    for name, kind, width, decimals in FIELDS:
        head += name.encode().ljust(11, b"\0") + kind.encode() + bytes([width, 0, 0, decimals])
    head = (head + b"\x0d").ljust(521, b"\0")
    body = "".join(" %-20s%-16s%5d%10.2f%s" % row for row in rows)
    write(path, head + body.encode() + b"\x1a")


def text(path, rows):
    write(path, "".join('"%s","%s",%d,%.2f,%s\n' % row for row in rows).encode())


def make_data(program, n):
    """The tables in the current folder, each as .dbf, as .txt and in all.db."""
    rows = [person(i) for i in range(1, n + 1)]
    tables = {
        "big": rows,
        "keyed": rows,
        "few": rows[:8000],
        "one": rows[:1000],
        "two": rows[700:1000],
        "bycity": sorted(rows, key=lambda r: r[1]),
        "byname": sorted(rows),
        "change": sorted(rows[::10]),
        "none": [],
    }
    script = []
    for name, content in tables.items():
        dbf(name + ".dbf", content)
        text(name + ".txt", content)
        script.append("create table %s(%s);\n.mode csv\n.import %s.txt %s\n" %
                      (name, SQL_FIELDS, name, name))
    script.append("create index keyed1 on keyed(name);\n"
                  "create index few1 on few(name);\ncreate index few2 on few(city);\n")
    run(["sqlite3", "all.db"], "".join(script))
    run([program], "USE keyed\nINDEX ON NAME TO keyed1\nUSE few\nINDEX ON NAME TO few1\n"
                   "INDEX ON CITY TO few2\nQUIT\n")
    os.mkdir("kept")
    for name in os.listdir():
        if name != "kept":
            copy(name, "kept/" + name)


def copy(source, target):
    with open(source, "rb") as f:
        write(target, f.read())


# ---- Processes

def run(command, script, out="out"):
    """Runs a command with the script as its input: milliseconds from its start to its end."""
    with open("in", "w") as f:
        f.write(script)
    with open("in") as i, open(out, "w") as o:
        start = time.perf_counter()
        child = subprocess.Popen(command, stdin=i, stdout=o, stderr=subprocess.STDOUT,
                                 close_fds=False)
        code = child.wait()
        took = time.perf_counter() - start
    if code != 0:
        sys.exit("%s ended with %d:\n%s" % (command, code, open(out).read()[-2000:]))
    return 1000 * took


# ---- Answers: lists of rows of words, numbers as numbers

def word(w):
    try:
        return float(w)
    except ValueError:
        return w


def words(line):
    return [word(w) for w in re.split(r"[\s|,\"]+", line) if w]


def shown(pattern):
    """What the output shows behind the pattern, line by line."""
    def answer(out, _):
        return [words(m.group(1)) for m in re.finditer(pattern, out, re.M)]
    return answer


def table(name):
    """The live records of a table that was made or changed."""
    def answer(_, is_peer):
        if is_peer:
            lines = subprocess.run(["sqlite3", "all.db", "select * from " + name],
                                   capture_output=True, text=True, check=True).stdout.splitlines()
            return sorted(map(words, lines), key=str)
        data = open(name + ".dbf", "rb").read()
        count, at, widths = int.from_bytes(data[1:3], "little"), 8, []
        while data[at] != 13:
            widths.append(data[at + 12])
            at += 16
        size = 1 + sum(widths)
        rows = []
        for r in range(count):
            record = data[521 + r * size:521 + (r + 1) * size].decode()
            if record[0] == " ":
                rows.append(words(" ".join(record[1 + sum(widths[:i]):1 + sum(widths[:i + 1])]
                                           for i in range(len(widths)))))
        return sorted(rows, key=str)
    return answer


def file(name):
    def answer(_, is_peer):
        return [words(line) for line in open(name + (".csv" if is_peer else ".txt"))]
    return answer


LINES = shown(r"^(?:[.>] )*(\s*\d.*)$")


# ---- Workloads

class Row:
    """mox and peer: what is typed. files: command files that it needs. restore: files that it
    changes. answer: of the outputs of both, or of each its own."""

    def __init__(self, title, mox, sql=None, python=None, answer=None, files=None, restore=(),
                 drop=(), each=True):
        self.title, self.mox, self.sql, self.python = title, mox, sql, python
        self.answer = answer if isinstance(answer, tuple) else (answer, answer)
        self.files, self.restore, self.drop, self.each = files or {}, restore, drop, each


COND = "AGE>500 .AND. PAY<8000"
NEW = ("new.dbf", "new.txt", "new.csv", "new.ndx")
TURNS = "SET TALK OFF\nSTORE 0 TO i\nDO WHILE i<%d\n%sENDDO\n? i\n"


APPENDS = """SET TALK OFF
USE few INDEX few1,few2
STORE 10001 TO i
STORE 10001*7919 TO k
DO WHILE i<15001
STORE k-65003*INT(k/65003) TO m
APPEND BLANK
REPLACE NAME WITH STR(100000+m,6)+" on the list", PAY WITH m/4.00, ;
 CITY WITH "City "+TRIM(STR(i-100*INT(i/100),2)), AGE WITH i-1000*INT(i/1000), FLAG WITH i=3*INT(i/3)
STORE i+1 TO i
STORE k+7919 TO k
ENDDO
"""


def in_loop(turns, body):
    return {"loop.cmd": TURNS % (turns, body)}


def workloads():
    rows = [
        Row("COUNT FOR, two fields", "USE big\nCOUNT FOR %s\n" % COND,
            sql="select count(*) from big where age>500 and pay<8000;",
            answer=(shown(r"COUNT = (\d+)"), LINES)),
        Row("SUM under a FOR", "USE big\nSUM PAY FOR AGE>500\n",
            sql="select sum(pay) from big where age>500;", answer=(shown(r"^[. ]*(\d+\.\d{6})"), LINES)),
        Row("LIST all", "USE big\nLIST\n", sql="select rowid, * from big;",
            answer=(shown(r"(\d{5}  .*)"), LINES)),
        Row("LIST two expressions FOR", "USE big\nLIST NAME,PAY FOR AGE>500\n",
            sql="select rowid, name, pay from big where age>500;",
            answer=(shown(r"(\d{5}  .*)"), LINES)),
        Row("LOCATE, CONTINUE to the end", "DO loop\n",
            sql="select rowid from big where age>990 and flag='T';",
            files={"loop.cmd": "USE big\nLOCATE FOR AGE>990 .AND. FLAG\n"
                               "DO WHILE .NOT. EOF\nCONTINUE\nENDDO\n"},
            answer=(shown(r"RECORD: (\d+)"), LINES)),
        Row("APPEND FROM delimited text", "USE none\nAPPEND FROM big.txt SDF DELIMITED\n",
            sql=".mode csv\n.import big.txt none", answer=table("none"),
            restore=("none.dbf", "all.db")),
        Row("COPY to delimited text", "USE big\nCOPY TO new.txt SDF DELIMITED\n",
            sql=".mode csv\n.output new.csv\nselect * from big;", answer=file("new")),
        Row("INDEX ON a 20-byte field", "USE big\nINDEX ON NAME TO new\n",
            sql="create index new on big(name, pay);", restore=("all.db",)),
        Row("5,000 FINDs in a loop", "DO loop\n",
            sql="begin;\n" + "".join("select rowid from keyed where name='%06d on the list';\n" % k
                                     for k in range(100000, 165000, 13)),
            files={"loop.cmd": "SET TALK OFF\nUSE keyed INDEX keyed1\nSTORE 100000 TO R\n"
                               "DO WHILE R<165000\nFIND STR(R,6)\n? #\nSTORE R+13 TO R\nENDDO\n"},
            answer=(shown(r"^(?:\. )* +([1-9]\d*) *$"), LINES), each=False),
        Row("SORT to a new table", "USE big\nSORT ON NAME TO new\n",
            sql="create table new as select * from big order by name;", answer=table("new"),
            restore=("all.db",)),
        Row("COPY to a new table", "USE big\nCOPY TO new\n",
            sql="create table new as select * from big;", answer=table("new"),
            restore=("all.db",)),
        Row("REPLACE in every record, in a loop", "DO loop\n", sql="update big set pay=pay+1.25;",
            files={"loop.cmd": "SET TALK OFF\nUSE big\nDO WHILE .NOT. EOF\n"
                               "REPLACE PAY WITH PAY+1.25\nSKIP\nENDDO\n"},
            answer=table("big"), restore=("big.dbf", "all.db")),
        Row("DELETE ALL FOR, PACK", "USE big\nDELETE ALL FOR AGE>500\nPACK\n",
            sql="delete from big where age>500;\nvacuum;", answer=table("big"),
            restore=("big.dbf", "all.db")),
        Row("5,000 appends, two indexes", "DO loop\n",
            sql="begin;\n" + "".join("insert into few values('%s','%s',%d,%.2f,'%s');\n" % person(i)
                                     for i in range(10001, 15001)) + "commit;",
            files={"loop.cmd": APPENDS},
            answer=table("few"), restore=("few.dbf", "few1.ndx", "few2.ndx", "all.db"),
            each=False),
        Row("JOIN 1,000 x 300, equality",
            "USE one\nSELECT B\nUSE two\nSELECT A\nJOIN TO new FOR A.NAME=B.NAME FIELDS NAME,PAY\n",
            sql="create table new as select one.name, one.pay from one join two "
                "on one.name=two.name;",
            answer=table("new"), restore=("all.db",), each=False),
        Row("JOIN 1,000 x 300, two comparisons",
            "USE one\nSELECT B\nUSE two\nSELECT A\n"
            "JOIN TO new FOR A.AGE>B.AGE .AND. A.PAY<B.PAY FIELDS NAME,PAY\n",
            sql="create table new as select one.name, one.pay from one join two "
                "on one.age>two.age and one.pay<two.pay;",
            answer=table("new"), restore=("all.db",), each=False),
        Row("TOTAL", "USE bycity\nTOTAL TO new ON CITY FIELDS CITY,PAY\n",
            sql="create table new as select city, sum(pay) from bycity group by city;",
            answer=table("new"), restore=("all.db",)),
        Row("UPDATE", "USE byname\nUPDATE FROM change ON NAME ADD PAY\n",
            sql="update byname set pay=byname.pay+change.pay from change "
                "where change.name=byname.name;",
            answer=table("byname"), restore=("byname.dbf", "all.db")),
        Row("200,000 turns, two STOREs", "DO loop\n",
            python="i = 0\nwhile i < 200000:\n    i = i + 1\n    a = i\nprint(i)\n",
            files=in_loop(200000, "STORE i+1 TO i\nSTORE i TO a\n"), answer=LINES, each=False),
        Row("string functions, 50,000 turns", "DO loop\n",
            python="s = 'the quick brown fox'\nlower = s.lower()\ni = 0\nwhile i < 50000:\n"
                   "    a = s[4:9].upper()\n    b = s[:3] + a[-2:]\n"
                   "    n = len(b) + s.find('fox') + 1\n    i = i + 1\nprint(i)\n",
            files={"loop.cmd": TURNS.replace("STORE 0", 'STORE "the quick brown fox" TO s\nSTORE 0')
                   % (50000, "STORE UCASE(MID(s,5,5)) TO a\nSTORE LEFT(s,3)+RIGHT(a,2) TO b\n"
                             'STORE LEN(b)+INSTR(s,"fox") TO n\nSTORE i+1 TO i\n')},
            answer=LINES, each=False),
        Row("3,000 DOs of a small file", "DO loop\n",
            python="def do(name):\n    exec(compile(open(name).read(), name, 'exec'), globals())\n"
                   "i = 0\nwhile i < 3000:\n    do('small.py')\nprint(i)\n",
            files={"loop.cmd": TURNS % (3000, "DO small\n"),
                   "small.cmd": "STORE i+1 TO i\nIF i>5\nSTORE \"x\" TO a\nELSE\nSTORE i TO b\n"
                                "ENDIF\n",
                   "small.py": "i = i + 1\nif i > 5:\n    a = 'x'\nelse:\n    b = i\n"},
            answer=LINES, each=False),
        Row("a file of 12,000 lines", "DO long\n",
            python="exec(compile(open('long.py').read(), 'long.py', 'exec'))\n",
            files={"long.cmd": "SET TALK OFF\nSTORE 0 TO i\n" +
                               "STORE i+1 TO i\n* one more\n\n" * 4000 + "? i\n",
                   "long.py": "i = 0\n" + "i = i + 1\n# one more\n\n" * 4000 + "print(i)\n"},
            answer=LINES, each=False),
        Row("a block of 1,000 lines at the prompt",
            "SET TALK OFF\nSTORE 0 TO i\nDO WHILE i<998\n" + "STORE i+1 TO i\n" * 998 +
            "ENDDO\n? i\n", answer=shown(r"(998)"), each=False),
        Row(START, "", sql="", each=False),
    ]
    for row in rows:
        row.mox += "QUIT\n"
    return rows


def prepare(row):
    for name, content in row.files.items():
        with open(name, "w") as f:
            f.write(content)
    for name in row.restore:
        copy("kept/" + name, name)
    for name in NEW:
        if os.path.exists(name):
            os.remove(name)


class Runner:
    """A program, or a peer, at its rows."""

    def __init__(self, program=None):
        self.program = program

    def command(self, row):
        if self.program:
            return [self.program], row.mox
        if row.sql is not None:
            return ["sqlite3", "all.db"], "pragma synchronous=off;\n" + row.sql
        if row.python:
            return [sys.executable, "-"], row.python
        return None

    def time(self, row):
        prepare(row)
        return run(*self.command(row))

    def answer(self, row):
        answer = row.answer[self.program is None]
        self.time(row)
        with open("out") as f:
            out = f.read()
        if self.program and re.search("ERROR|CANNOT|UNABLE", out):
            sys.exit("%s: %s" % (row.title, out[-500:]))
        return answer(out, self.program is None) if answer else None


def check(row, runners):
    answers = [r.answer(row) for r in runners]
    for a in answers[1:]:
        if a != answers[0]:
            pair = [(x, y) for x, y in zip(answers[0], a) if x != y][:3]
            sys.exit("%s: %d and %d rows, %s" % (row.title, len(answers[0]), len(a), pair))


def able(row, runners):
    return [r for r in runners if r.command(row)]


START = "start to end"


def chosen(args, *always):
    return [row for row in workloads()
            if args.only.lower() in row.title.lower() or row.title in always]


def times(args, program, other):
    make_data(program, args.rows)
    mine, peer = Runner(program), Runner()
    runners = [mine, peer] + ([Runner(other)] if other else [])
    print("%-36s %9s %9s %7s" % ("", "program", "peer", "ratio") +
          ("%9s %7s" % ("other", "ratio") if other else ""))
    for row in chosen(args):
        if args.rows < 1000 and not row.each:
            continue
        at = able(row, runners)
        check(row, at)
        took = {r: [] for r in at}
        for _ in range(args.runs):
            for r in at:
                took[r].append(r.time(row))
        median = {r: statistics.median(t) for r, t in took.items()}
        line = "%-36s %9.1f" % (row.title, median[mine])
        for r in runners[1:]:
            line += (" %9.1f %7.2f" % (median[r], median[mine] / median[r]) if r in median
                     else " %9s %7s" % ("", ""))
        print(line, flush=True)


def instructions(command, script):
    run(["valgrind", "--tool=callgrind", "--callgrind-out-file=/dev/null"] + command, script)
    with open("out", errors="replace") as f:
        return int(re.search(r"Collected : (\d+)", f.read()).group(1))


def system_calls(command, script):
    run(["strace", "-f", "-o", "calls"] + command, script)
    with open("calls") as f:
        return sum(1 for _ in f)


def in_folder(n, program, action):
    os.mkdir(str(n))
    os.chdir(str(n))
    make_data(program, n)
    result = action()
    os.chdir("..")
    return result


def counts(args, program, other):
    """What a record more costs, between 1,000 and 8,000 records."""
    sizes = (1000, 8000)
    runners = [Runner(p) for p in (program, other) if p]

    def measure():
        figures = {}
        for row in chosen(args):
            for r in runners if row.each else ():
                for count in (instructions, system_calls):
                    prepare(row)
                    figures[row.title, r, count] = count(*r.command(row))
        return figures

    few, many = (in_folder(n, program, measure) for n in sizes)
    each = {key: (many[key] - few[key]) / (sizes[1] - sizes[0]) for key in few}
    print("%-36s" % "a record" + "%14s %12s" % ("instructions", "system calls") * len(runners))
    for row in chosen(args):
        if row.each:
            print("%-36s" % row.title + "".join(
                "%14.0f %12.2f" % (each[row.title, r, instructions], each[row.title, r, system_calls])
                for r in runners))


def sizes(args, program, other):
    """How the time grows with the number of records, the start taken off."""
    ladder = (1000, 8000, 65000)
    runners = [Runner(p) for p in (program, other) if p]

    def measure():
        return {(row.title, r): statistics.median(r.time(row) for _ in range(args.runs))
                for row in chosen(args, START) if row.each or row.title == START for r in runners}

    took = [in_folder(n, program, measure) for n in ladder]
    print("%-36s" % "milliseconds above the start" +
          "".join("%10d" % n for n in ladder * len(runners)))
    for row in chosen(args):
        if row.each:
            print("%-36s" % row.title + "".join(
                "%10.1f" % (t[row.title, r] - t[START, r]) for r in runners for t in took))


def main():
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("program")
    parser.add_argument("other", nargs="?")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--rows", type=int, default=ROWS)
    parser.add_argument("--only", default="", help="rows that hold this word")
    parser.add_argument("--counts", action="store_true")
    parser.add_argument("--sizes", action="store_true")
    args = parser.parse_args()
    program = os.path.realpath(args.program)
    other = os.path.realpath(args.other) if args.other else None
    folder = tempfile.mkdtemp()
    os.chdir(folder)
    try:
        (counts if args.counts else sizes if args.sizes else times)(args, program, other)
    finally:
        os.chdir("/")
        shutil.rmtree(folder)


if __name__ == "__main__":
    main()
