// What a person has stays, whatever the host refuses: each statement with each of its openings,
// writes, resizes and moves refused, once or from there on, wholly or in the middle of a write.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <map>

#include "host/file.h"
#include "host/host.h"
#include "lang/compile.h"
#include "run/prompt.h"
#include "run/run.h"
#include "session/error.h"
#include "session/number.h"
#include "session/session.h"
#include "store/db.h"
#include "temp_dir.h"

namespace mox {
namespace {

// --- The files, read without the program.

unsigned Get2(const std::string& b, size_t at) {
  return at + 1 < b.size() ? (b[at] & 255) + 256 * (b[at + 1] & 255) : 0;
}

using Rows = std::vector<std::string>;
Rows Records(const std::string& file) {
  const std::string b = Bytes(file);
  Rows rows;
  for (unsigned r = 0, size = Get2(b, 6); r < Get2(b, 1); ++r)
    rows.push_back(b.substr(std::min(b.size(), size_t(521) + r * size), size));
  return rows;
}

struct Item {
  std::string key;
  unsigned rno;
};
using Items = std::vector<Item>;
void Walk(const std::string& b, unsigned page, int depth, Items& items) {
  const size_t at = page * 512, size = b[7] & 255, count = b[at] & 255;
  ASSERT_TRUE(page > 0 && at < b.size() && depth < 16);
  for (size_t i = at + 1; i < at + 1 + count * size; i += size)
    if (const unsigned below = Get2(b, i))
      Walk(b, below, depth + 1, items);
    else
      items.push_back({b.substr(i + 4, size - 4), Get2(b, i + 2)});
  if (const unsigned last = Get2(b, at + 1 + count * size)) Walk(b, last, depth + 1, items);
}
Items Leaves(const std::string& file) {
  const std::string b = Bytes(file);
  Items items;
  Walk(b, Get2(b, 2), 0, items);
  return items;
}
bool Marked(const std::string& file) { return Get2(Bytes(file), 0) != 0; }

// What counts of each file in the folder.
using State = std::map<std::string, std::string>;
State Look() {
  State state;
  for (const auto& entry : fs::directory_iterator(".")) {
    if (entry.is_directory()) continue;
    const std::string name = entry.path().filename(), end = name.substr(name.size() - 4);
    std::string& s = state[name] = Bytes(name);
    if (end == ".dbf") {
      s = s.substr(1, 2) + s.substr(6, 515);
      for (const std::string& row : Records(name)) s += row;
    } else if (end == ".ndx") {
      s = s.substr(6, 506);
      for (const Item& i : Leaves(name)) s += i.key + "=" + std::to_string(i.rno) + " ";
    }
  }
  return state;
}

// The index of the table T: each record once, with its key, in order. A blank record may lack.
std::string OutOfStep(const std::string& file,
                      const std::function<std::string(Rows::value_type)>& key,
                      const std::function<bool(std::string, std::string)>& above) {
  const Rows rows = Records("T.dbf");
  const Items items = Leaves(file);
  std::vector<int> seen(rows.size() + 1);
  for (size_t i = 0; i < items.size(); ++i) {
    const unsigned rno = items[i].rno;
    if (rno < 1 || rno > rows.size() || ++seen[rno] > 1) return file + " record";
    if (items[i].key != key(rows[rno - 1])) return file + " key";
    if (i > 0 && above(items[i - 1].key, items[i].key)) return file + " order";
  }
  for (size_t r = 1; r <= rows.size(); ++r)
    if (!seen[r] && rows[r - 1].find_first_not_of(" *") != std::string::npos)
      return file + " lacks";
  return "";
}
std::string NameKey(const std::string& row) { return row.substr(1, 5); }
std::string AgeKey(const std::string& row) {
  const Bcd6 form = d2bcd6(TxtToDbl(row.substr(6, 4)));
  return {form.begin(), form.end()};
}
double Number(const std::string& key) {
  Bcd6 form;
  std::copy_n(key.begin(), form.size(), form.begin());
  return bcd2d6(form);
}
std::string OutOfStep() {
  return OutOfStep("A.ndx", NameKey, std::greater<>()) +
         OutOfStep("B.ndx", AgeKey, [](const std::string& a, const std::string& b) {
           return Number(a) > Number(b);
         });
}

// --- The session, in this process.

// What the host refuses: operations from the k-th on, or it alone; half of it is written or none.
struct Refuse {
  int k = 0, ops = 0;
  bool forever = false, half = false;
} refuse;
bool May(FileOp, std::size_t& n) {
  ++refuse.ops;
  if (refuse.k <= 0 || refuse.ops < refuse.k || (!refuse.forever && refuse.ops > refuse.k))
    return true;
  n = refuse.half && refuse.ops == refuse.k ? n / 2 : 0;
  return false;
}

// The host's console keeps in mind what its input is, so each test is a process of its own.
struct Faults : testing::Test {
  TempDir folder;
  int keys[2];
  std::string said;

  void Start() {
    EXPECT_EQ(pipe(keys), 0);
    dup2(keys[0], STDIN_FILENO);
    g_mayChangeFile = May;
    SessionInit();
    PutBytes("R.txt", "ann,30\nbob,12\nbob,7\neve,41\ndan,5\numa,999\n");
    PutBytes("S.txt", "zoe,12\nkim,7\nlea,88\n");
    PutBytes("X.txt", "old"), PutBytes("V.mem", "\x1A"), PutBytes("P.cmd", "? 1\n");
    for (const std::string table : {"T", "S", "X"}) Run("CREATE " + table, "NAME,C,5\nAGE,N,4\n\n");
    Run("USE X : APPEND FROM S.txt SDF DELIMITED : USE S : APPEND FROM S.txt SDF DELIMITED : "
        "USE T : APPEND FROM R.txt SDF DELIMITED : 1 : DELETE : 5 : DELETE : "
        "INDEX ON NAME TO A : INDEX ON AGE TO B : INDEX ON AGE TO C : USE");
    fs::create_directory("made");
    for (const auto& [name, content] : Look()) fs::rename(name, "made/" + name);
    fs::create_directory("run");
    fs::current_path("run");
  }
  template <class Body>
  void InChild(Body body) {
    std::fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
      Start();
      body();
      std::fflush(stdout);
      _exit(HasFailure());
    }
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }

  // The error of the statements, or nothing.
  std::string Run(const std::string& statements, const std::string& typed = "") {
    EXPECT_EQ(write(keys[1], typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    errnum = errNone;
    Lines lines{statements}, steps;
    testing::internal::CaptureStdout();
    if (doCompile(false, lines, maxPromptSteps, steps) == cmpDone)
      doRun(CutSteps(std::move(steps)));
    std::fflush(stdout);
    said = testing::internal::GetCapturedStdout();
    while (_kbhit()) _getch();
    return errnum == errNone ? "" : errnum == errTold ? said : *errmsg;
  }
  void Begin() {
    refuse = {};
    SessionInit();
    for (const auto& [name, content] : Look()) fs::remove(name);
    fs::copy(folder.path / "made", ".");
    EXPECT_EQ(Run("SET TALK OFF : STORE 7 TO V : USE T INDEX A,B"), "");
  }
};

struct Statement {
  const char *text, *typed = "", *before = "";
  bool parts = false;     // changes one record after the other: those before the refused one stay
  bool rebuilds = false;  // indexes may be left behind, marked
  bool silent = false;    // doesn't tell that a file can't be made
};
const Statement statements[] = {
    {"APPEND BLANK"},
    {"REPLACE NAME WITH \"new\", AGE WITH 77", "", "GOTO 3"},
    {"EDIT 3", "abc\rx\r"},
    {"APPEND", "abc\rx\r", "", true},
    {"@ 1,1 GET NAME : @ 2,1 GET AGE : READ", "xyz\r8\r", "GOTO 4"},
    {"BROWSE", "q\r5\r\x17"},
    {"DELETE", "", "GOTO 3"},
    {"DELETE ALL FOR AGE>10", "", "", true},
    {"RECALL ALL", "", "", true},
    {"DELETE ALL", "", "SET INDEX TO", true},
    {"APPEND FROM S FOR AGE>10", "", "USE X", true},
    {"UPDATE FROM S ON AGE ADD AGE", "", "USE X", true},
    {"PACK", "", "", false, true},
    {"REINDEX"},
    {"INDEX ON NAME TO A"},
    {"INDEX ON NAME TO C"},
    {"INDEX ON NAME TO N"},
    {"COPY TO X", "", "", false, false, true},
    {"COPY TO N", "", "", false, false, true},
    {"COPY TO X STRUCTURE", "", "", false, false, true},
    {"COPY TO X.txt SDF"},
    {"APPEND FROM S", "", "", true},
    {"APPEND FROM S FOR AGE<50", "", "", true},
    {"APPEND FROM S.txt SDF DELIMITED", "", "", true},
    {"SORT ON NAME TO X"},
    {"JOIN TO X FOR P.AGE>S.AGE", "", "SELECT B : USE S : SELECT A"},
    {"TOTAL TO X ON NAME", "", "", false, false, true},
    {"UPDATE FROM S ON AGE REPLACE NAME WITH NAME", "", "SET INDEX TO B,A", true},
    {"SAVE TO V"},
    {"SAVE TO N"},
    {"CREATE X", "NAME,C,5\nNEW,N,4\n\n"},
    {"CREATE N", "NAME,C,5\nAGE,N,4\n\n"},
    {"MODIFY STRUCTURE", "Y\x17", "", false, true},
    {"MODIFY COMMAND P", "x\x17"},
    {"MODIFY COMMAND N", "x\x17"},
    {"RENAME \"S.txt\" TO \"N.txt\""},
    {"USE S", "", "DELETE"},
};

// Each record is as it was before or after, and none is missing. One that a form was to fill may
// still be blank.
bool InParts(const Rows& before, const Rows& after, const Rows& now, bool typed) {
  if (now.size() < std::min(before.size(), after.size())) return false;
  for (size_t i = 0; i < now.size(); ++i)
    if ((i >= before.size() || now[i] != before[i]) && (i >= after.size() || now[i] != after[i]) &&
        !(typed && isBlank(now[i])))
      return false;
  return true;
}

struct Seen {
  State state = Look();
  std::map<std::string, Rows> rows;
  Seen() {
    for (const auto& [name, content] : state)
      if (name.ends_with(".dbf")) rows[name] = Records(name);
  }
  bool is(const Seen& other, const std::string& name) const {
    return state.contains(name) == other.state.contains(name) &&
           (!state.contains(name) || state.at(name) == other.state.at(name));
  }
};

// What is wrong with the files when a statement ended with this report.
std::string Wrong(const Statement& s, const Seen& before, const Seen& after, const Seen& now,
                  const std::string& told) {
  State names = before.state;
  names.insert(after.state.begin(), after.state.end());
  names.insert(now.state.begin(), now.state.end());
  std::string wrong;
  for (const auto& [name, content] : names) {
    if (now.is(after, name) || ((told != "" || s.silent) && now.is(before, name))) continue;
    if (told != "" && (name == "A.ndx" || name == "B.ndx")) continue;  // looked at below
    if (told != "" && s.parts && now.rows.contains(name) &&
        InParts(before.rows.at(name), after.rows.at(name), now.rows.at(name), *s.typed))
      continue;
    if (told != "" && (name == "T.dbf" || s.parts) && refuse.forever && refuse.half)
      continue;  // torn
    wrong += " " + name;
  }
  return wrong;
}

struct Refusals : Faults {
  void Each() {
    int tried = 0, marked = 0;
    const auto try1 = [&](const Statement& s, const Seen& before, const Seen& after) {
      const std::string told = Run(s.text, s.typed);
      dbRest();
      refuse.k = -refuse.k;
      const bool refused = refuse.ops >= -refuse.k, mark = Marked("A.ndx") || Marked("B.ndx");
      SCOPED_TRACE(s.text + (" refused at " + std::to_string(-refuse.k)) +
                   (refuse.forever ? " on" : "") + (refuse.half ? " by half: " : ": ") + told);
      EXPECT_TRUE(told == "" || refused);
      EXPECT_EQ(Wrong(s, before, after, Seen(), told), "");
      EXPECT_TRUE(!mark || refuse.forever || told == "" || s.rebuilds) << "marked";
      EXPECT_EQ(mark ? "" : OutOfStep(), "");
      const std::string use = Run("USE T INDEX A,B");
      EXPECT_TRUE(use == "" || (mark && use.starts_with("REINDEX"))) << use;
      EXPECT_EQ(use == "" ? "" : Run("REINDEX"), "");
      EXPECT_EQ(Run("APPEND BLANK : REPLACE NAME WITH \"tail\", AGE WITH 5"), "");
      dbRest();
      EXPECT_EQ(OutOfStep(), "");
      EXPECT_FALSE(Marked("A.ndx") || Marked("B.ndx"));
      tried += refused, marked += mark;
      return refused;
    };
    for (const Statement& s : statements) {
      Begin();
      EXPECT_EQ(Run(s.before), "");
      const Seen before;
      EXPECT_EQ(Run(s.text, s.typed), "") << s.text;
      dbRest();
      const Seen after;
      for (const auto& [forever, half] :
           {std::pair(false, false), {false, true}, {true, false}, {true, true}}) {
        int k = 0;
        do {
          Begin();
          Run(s.before);
          refuse = {++k, 0, forever, half};
        } while (try1(s, before, after) && !(HasFailure() && getenv("MOX_STOP")));
      }
    }
    std::printf("%d refusals, %d indexes marked\n", tried, marked);
  }
};

TEST_F(Refusals, OfEachStatement) {
  InChild([&] { Each(); });
}

}  // namespace
}  // namespace mox
