// What a person has stays, whatever the host refuses: each statement with each of its openings,
// writes, resizes and moves refused, once or from there on, wholly or in the middle of a write.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
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
  bool kills = false;  // the host ends the program in place of the refusal
} refuse;
bool May(FileOp, std::size_t& n) {
  ++refuse.ops;
  if (refuse.k <= 0 || refuse.ops < refuse.k || (!refuse.forever && refuse.ops > refuse.k))
    return true;
  if (refuse.kills) raise(SIGKILL);
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
    PutBytes("L.cmd", "DO WHILE .NOT. EOF\nREPLACE AGE WITH AGE+1\nSKIP\nENDDO\n");
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
    {"DO L", "", "USE X", true},
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

// A program that is killed at an operation leaves what was there, and indexes that are in step or
// marked; what it left in the making goes when the statement is given again.
struct Kills : Refusals {
  // True when there was an operation to be killed at.
  bool At(const Statement& s, int k, const Seen& before, const Seen& after) {
    const pid_t child = fork();
    if (child == 0) {
      Begin();
      Run(s.before);
      refuse = {k, 0, false, false, true};
      Run(s.text, s.typed);
      dbRest();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    SCOPED_TRACE(s.text + (" killed at " + std::to_string(k)));
    State left;
    for (const auto& [name, content] : Look())
      if (name.ends_with("~")) fs::rename(name, "../" + name), left[name];
    EXPECT_EQ(Wrong(s, before, after, Seen(), "killed"), "");
    for (const auto& [name, content] : left) fs::rename("../" + name, name);
    refuse = {};
    SessionInit();
    const bool mark = Marked("A.ndx") || Marked("B.ndx");
    EXPECT_EQ(mark ? "" : OutOfStep(), "");
    EXPECT_EQ(Run("SET TALK OFF : STORE 7 TO V : USE T INDEX A,B").substr(0, 7),
              mark ? "REINDEX" : "");
    EXPECT_EQ(Run("REINDEX"), "");
    EXPECT_EQ(OutOfStep(), "");
    Run(s.before);
    Run(s.text, s.typed);
    for (const auto& [name, content] : Look()) EXPECT_FALSE(name.ends_with("~")) << name;
    return WIFSIGNALED(status);
  }
};

TEST_F(Kills, AtEachOperation) {
  InChild([&] {
    int kills = 0;
    for (const Statement& s : statements) {
      Begin();
      Run(s.before);
      const Seen before;
      Run(s.text, s.typed);
      dbRest();
      const Seen after;
      for (int k = 1; At(s, k, before, after); ++k) ++kills;
    }
    std::printf("%d kills\n", kills);
  });
}

// Changes of records wait for others in a run that tells nothing: they are in the file before
// anything is told, another file is changed or the run ends, and also when it goes on and on.
TEST_F(Faults, HeldChanges) {
  InChild([&] {
    const auto writes = [&](const std::string& body) {
      Begin();
      Run("SET INDEX TO");
      PutBytes("L.cmd",
               "STORE 0 TO I\nDO WHILE I<400\nREPLACE AGE WITH AGE+1\n"
               "STORE I+1 TO I\n" +
                   body + "ENDDO\n");
      EXPECT_EQ(Run("DO L"), "");
      return refuse.ops;
    };
    const int alone = writes("");
    EXPECT_LT(alone, 50);
    EXPECT_EQ(Records("T.dbf")[0].substr(6), " 430");
    for (const std::string body :
         {"? I\n", "APPEND BLANK\nGOTO 1\n", "SET INDEX TO\n", "STORE \"I\" TO K\nSTORE &K TO J\n",
          "SELECT B\nUSE S\nREPLACE AGE WITH I\nSELECT A\n"})
      EXPECT_GT(writes(body), 400) << body;
    for (const std::string run :
         {"DO L", "DO M", "REPLACE AGE WITH 7 : ? 1", "REPLACE AGE WITH 7 : USE"}) {
      Begin();
      Run("SET INDEX TO");
      PutBytes("L.cmd", "REPLACE AGE WITH 7\nDO WHILE 1=1\nENDDO\n");
      PutBytes("M.cmd", "REPLACE AGE WITH 7\nRETURN\n");
      refuse = {1};
      EXPECT_EQ(Run(run), "CANNOT WRITE FILE T.dbf") << run;
      EXPECT_EQ(Records("T.dbf")[0].substr(6), "  30");
      EXPECT_EQ(Run("? AGE"), "");
      EXPECT_EQ(said, "   30 \n");
    }
  });
}

// --- Random histories against a model: two areas on one table, indexes whose keys fail.

struct Record {
  std::string name;
  int age = 0;
  bool blank = false, deleted = false;
  std::string row() const {
    return (deleted ? "*" : " ") + StrFmt("%-5s", name.c_str()) +
           (blank ? "    " : StrFmt("%4d", age));
  }
};

struct Model {
  std::vector<Record> recs;
  int v = 2520;                                       // 0: there is no variable V
  std::vector<std::pair<std::string, int>> items[3];  // NAME, AGE+1000, V/AGE
  int attached = 3;

  std::string key(int i, const Record& r) const {  // none: it fails
    if (i == 0) return StrFmt("%-5s", r.name.c_str());
    if (i == 2 && (v == 0 || r.age == 0)) return "";
    return StrFmt("%08d", i == 1 ? r.age + 1000 : v / r.age);
  }
  auto item(int i, int rno) {
    return std::find_if(items[i].begin(), items[i].end(), [&](auto& x) { return x.second == rno; });
  }
  void add(int i, int rno, const std::string& k) {
    const auto above = [](const std::string& a, const auto& b) { return a < b.first; };
    items[i].insert(std::upper_bound(items[i].begin(), items[i].end(), k, above), {k, rno});
  }
  bool change(int rno, const Record& to) {
    for (int i = 0; i < attached; ++i)
      if (key(i, to) == "" || (key(i, recs[rno - 1]) == "" && item(i, rno) != items[i].end()))
        return false;
    for (int i = 0; i < attached; ++i) {
      if (const auto old = item(i, rno); old != items[i].end()) items[i].erase(old);
      add(i, rno, key(i, to));
    }
    recs[rno - 1] = to;
    return true;
  }
  bool append(const Record& r) {  // true when an index lacks it
    bool lacks = false;
    recs.push_back(r);
    for (int i = 0; i < attached; ++i)
      if (key(i, r) == "")
        lacks = true;
      else
        add(i, static_cast<int>(recs.size()), key(i, r));
    return lacks;
  }
  bool build(int i) {  // as far as the first record tells the form of the key
    if (i == 2 && (recs.empty() || key(i, recs[0]) == "")) return false;
    items[i].clear();
    for (size_t r = 0; r < recs.size(); ++r)
      if (const std::string k = key(i, recs[r]); k != "") add(i, static_cast<int>(r) + 1, k);
    return true;
  }
  bool rebuild() {
    bool all = true;
    for (int i = 0; i < attached; ++i) all &= build(i);
    return all;
  }
  // UPDATE FROM S ON NAME REPLACE AGE WITH AGE: true when no record refused.
  bool update(const std::vector<Record>& source) {
    bool all = true;
    size_t at = 0, s = 0;
    while (at < items[0].size() && s < source.size()) {
      const auto& [name, rno] = items[0][at];
      const std::string from = key(0, source[s]);
      if (name < from) {
        ++at;
        continue;
      }
      if (name == from) {
        const int changed = rno;
        Record to = recs[changed - 1];
        to.age = source[s].age, to.blank = false;
        all &= change(changed, to);
        at = static_cast<size_t>(item(0, changed) - items[0].begin());
      }
      ++s;
    }
    return all;
  }
};

const char* const indexFiles[] = {"N.ndx", "G.ndx", "F.ndx"};
const std::vector<Record> source = {{"ann", 4}, {"bob", 0}, {"eve", 5}, {"zoe", 7}};

struct Histories : Faults {
  Model m;
  std::mt19937 random;
  int other = 0;  // the record of area B

  int any(int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); }
  int rec() { return any(static_cast<int>(m.recs.size())) + 1; }
  std::string name() { return std::string(1, "abez"[any(4)]) + "nob"[any(3)]; }

  void Open(unsigned seed) {
    random.seed(seed);
    m = {};
    Begin();
    Run("USE : DELETE FILE \"A.ndx\" : DELETE FILE \"B.ndx\" : SET TALK OFF");
    PutBytes("S.txt", "ann,4\nbob,0\neve,5\nzoe,7\n");
    Run("USE S : DELETE ALL : PACK : APPEND FROM S.txt SDF DELIMITED : STORE 2520 TO V : USE T : "
        "DELETE ALL : PACK : APPEND FROM S.txt SDF DELIMITED : "
        "INDEX ON NAME TO N : INDEX ON AGE+1000 TO G : INDEX ON V/AGE TO F : SET INDEX TO N,G,F");
    Run(any(2) ? "SELECT B : USE T : SELECT A" : "SELECT B : USE T INDEX G : SELECT A");
    m.recs = source;
    m.rebuild();
    other = 0;
  }
  void Place(int area, int rno) {
    Run((area ? "SELECT B : GOTO " : "GOTO ") + std::to_string(rno) + " : SELECT A");
    if (area) Run("SELECT B : GOTO " + std::to_string(rno)), Run("SELECT A"), other = rno;
  }
  // Runs a change: the report must come when the model refuses, or the host did.
  void Told(const std::string& statement, bool expected) {
    const std::string told = Run(statement);
    EXPECT_EQ(told != "", expected) << statement << ": " << told;
  }

  void Replace() {
    const int rno = rec(), area = any(3) == 0;
    Record to = m.recs[static_cast<size_t>(rno) - 1];
    std::string text = "REPLACE ";
    if (any(3)) text += "NAME WITH \"" + (to.name = name()) + "\", ";
    to.age = any(11), to.blank = false;
    text += "AGE WITH " + std::to_string(to.age);
    const bool broken = any(8) == 0;
    if (broken) text += ", NAME WITH NOPE/2";
    Place(area, rno);
    if (area) Run("SELECT B");
    if (any(4) == 0) refuse = {1 + any(7), 0, false, any(2) == 1};
    const std::string told = Run(text);
    const bool refused = std::exchange(refuse.k, 0) > 0 && told.starts_with("CANNOT WRITE");
    EXPECT_EQ(told == "", !broken && !refused && m.change(rno, to)) << text << ": " << told;
    if (area) Run("SELECT A");
  }
  void Pack() {
    std::erase_if(m.recs, [](const Record& r) { return r.deleted; });
    bool built = m.rebuild();
    if (m.recs.empty())
      built = Run("PACK") == "", m.items[2].clear();  // a record that is gone gives the form
    else
      Told("PACK", !built);
    if (!built) {
      EXPECT_TRUE(Marked("F.ndx"));
      Told("SET INDEX TO N,G", true);
      Told("REINDEX", false);
      m.attached = 2;
    }
    if (!m.recs.empty()) Place(1, rec());
  }
  void Attach() {
    Run("SET INDEX TO");
    const bool built = m.build(2);
    Told("INDEX ON V/AGE TO F", !built);
    m.attached = built ? 3 : 2;
    Told(built ? "SET INDEX TO N,G,F" : "SET INDEX TO N,G", false);
  }
  void Look1() {
    if (m.items[0].empty()) return;  // LIST then shows the record in place
    Run("LIST");
    std::vector<int> shown, expected;
    for (const std::string& line : split(said, "\n"))
      if (line.size() > 5) shown.push_back(TxtToInt(line));
    for (const auto& [k, rno] : m.items[0]) expected.push_back(rno);
    EXPECT_EQ(shown, expected);
    const std::string text = name();
    const auto begins = [&](const auto& x) { return x.first.starts_with(text); };
    const auto hit = std::find_if(m.items[0].begin(), m.items[0].end(), begins);
    Run("FIND \"" + text + "\" : ? RECNO()");
    EXPECT_EQ(TxtToInt(said), hit == m.items[0].end() ? 0 : hit->second) << text;
  }
  void Step() {
    const int what = any(m.recs.empty() ? 3 : 16);
    if (what == 0) {
      Told("APPEND BLANK", false);
      m.recs.push_back({"", 0, true});
    } else if (what == 1) {
      const int least = any(3) * 4 - 1;
      bool lacks = false;
      for (const Record& r : source)
        if (r.age > least) lacks |= m.append(r);
      Told("APPEND FROM S FOR AGE>" + std::to_string(least), lacks);
    } else if (what == 2) {
      m.v = any(3) * 2520;
      Run(m.v ? "STORE " + std::to_string(m.v) + " TO V" : "RELEASE V");
    } else if (what == 3) {
      const int rno = rec();
      Place(0, rno);
      const bool mark = any(3) != 0;
      Told(mark ? "DELETE" : "RECALL", false);
      m.recs[static_cast<size_t>(rno) - 1].deleted = mark;
    } else if (what == 4) {
      Pack();
    } else if (what == 5) {
      Told("REINDEX", !m.rebuild());
    } else if (what == 6) {
      Told("UPDATE FROM S ON NAME REPLACE AGE WITH AGE", !m.update(source));
    } else if (what == 7) {
      Attach();
    } else if (what == 8) {
      Place(1, rec());
    } else if (what == 9) {
      Look1();
    } else {
      Replace();
    }
  }
  void Same() {
    dbRest();
    const Rows rows = Records("T.dbf");
    ASSERT_EQ(rows.size(), m.recs.size());
    for (size_t r = 0; r < rows.size(); ++r) EXPECT_EQ(rows[r], m.recs[r].row()) << r + 1;
    for (int i = 0; i < m.attached; ++i) {
      const Items items = Leaves(indexFiles[i]);
      ASSERT_EQ(items.size(), m.items[i].size()) << i;
      for (size_t k = 0; k < items.size(); ++k) {
        EXPECT_EQ(items[k].rno, m.items[i][k].second) << i;
        EXPECT_EQ(i ? StrFmt("%08.0f", Number(items[k].key)) : items[k].key, m.items[i][k].first);
      }
      EXPECT_FALSE(Marked(indexFiles[i]));
    }
    if (other < 1 || other > static_cast<int>(m.recs.size())) return;
    Run("? S.NAME");
    EXPECT_EQ(said, " " + m.recs[static_cast<size_t>(other) - 1].row().substr(1, 5) + " \n");
  }
};

TEST_F(Histories, RecordsAndIndexesAreThoseOfTheModel) {
  const char* const wanted = std::getenv("MOX_HISTORIES");
  InChild([&] {
    for (int seed = 1, last = wanted ? TxtToInt(wanted) : 30; seed <= last && !HasFailure();
         ++seed) {
      Open(static_cast<unsigned>(seed));
      for (int step = 1; step <= 40 && !HasFailure(); ++step) {
        SCOPED_TRACE(StrFmt("history %d, step %d", seed, step));
        Step();
        Same();
      }
    }
  });
}

}  // namespace
}  // namespace mox
