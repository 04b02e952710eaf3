// What a person has stays, whatever the host refuses and whenever the program dies: each statement
// with each of its uses of files refused; targets that can't be replaced; random histories.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>
#include <map>

#include "session/newfile.h"
#include "session/number.h"
#include "store/db.h"
#include "temp_dir.h"
#include "typed.h"

namespace mox {
namespace {

// --- The files, read without the program.

unsigned Get2(const std::string& b, size_t at) {
  return at + 1 < b.size() ? (b[at] & 255) + 256 * (b[at + 1] & 255) : 0;
}

using Rows = std::vector<std::string>;
Rows Records(const std::string& b) {
  Rows rows;
  for (unsigned r = 0, size = Get2(b, 6); r < Get2(b, 1); ++r)
    rows.push_back(b.substr(std::min(b.size(), size_t(521) + r * size), size));
  return rows;
}

// A's keys are long, so that few go into a page.
const std::string longName = "NAME+\"" + std::string(95, ' ') + "\"";
using Items = std::vector<std::pair<std::string, unsigned>>;  // key, a number in 8 digits; record
void Walk(const std::string& b, unsigned page, int depth, Items& items) {
  const size_t at = page * 512, size = b[7] & 255, end = at + 1 + (b[at] & 255) * size;
  ASSERT_TRUE(page > 0 && at < b.size() && depth < 16);
  for (size_t i = at + 1; i < end; i += size) {
    if (const unsigned below = Get2(b, i)) {
      Walk(b, below, depth + 1, items);
      continue;
    }
    Bcd6 form;
    std::copy_n(b.begin() + i + 4, form.size(), form.begin());
    const bool number = b[9] == 8;
    items.emplace_back(
        number ? StrFmt("%08.0f", bcd2d6(form)) : b.substr(i + 4, std::min<size_t>(size - 4, 5)),
        Get2(b, i + 2));
  }
  if (const unsigned next = Get2(b, end)) Walk(b, next, depth + 1, items);
}
Items Index(const std::string& file) {
  Items items;
  const std::string b = Bytes(file);
  Walk(b, Get2(b, 2), 0, items);
  return items;
}
bool Marked() { return Get2(Bytes("A.ndx"), 0) + Get2(Bytes("B.ndx"), 0) != 0; }

// The index has these items, in the order of their keys.
void ExpectItems(const std::string& file, Items found, Items expected) {
  EXPECT_TRUE(std::is_sorted(found.begin(), found.end(), [](const auto& a, const auto& b) {
    return a.first < b.first;
  })) << file;
  std::sort(found.begin(), found.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(found, expected) << file;
}
// A and B have each record of T once, with its key. A blank record may lack.
void ExpectInStep() {
  const Rows rows = Records(Bytes("T.dbf"));
  for (const std::string file : {"A.ndx", "B.ndx"}) {
    Items found = Index(file), expected;
    for (unsigned r = 1; r <= rows.size(); ++r) {
      const std::string name = rows[r - 1].substr(1, 5), age = rows[r - 1].substr(6, 4);
      if (isBlank(name + age))
        std::erase_if(found, [&](const auto& x) { return x.second == r; });
      else
        expected.emplace_back(file == "A.ndx" ? name : StrFmt("%08.0f", TxtToDbl(age)), r);
    }
    ExpectItems(file, found, expected);
  }
}

// What counts of each file in the folder: of a table what is fixed, and then each record.
using State = std::map<std::string, Rows>;
State Look() {
  State state;
  for (const auto& entry : fs::directory_iterator(".")) {
    const std::string name = entry.path().filename(), bytes = Bytes(name);
    Rows& s = state[name] = {bytes};
    if (name.ends_with(".dbf")) {
      s = Records(bytes);
      s.insert(s.begin(), bytes.substr(6, 515));
    } else if (name.ends_with(".ndx")) {
      s = {bytes.substr(6, 506) + testing::PrintToString(Index(name))};
    }
  }
  return state;
}

enum How { once, half, on, onHalf, killed };
// What the host refuses: the k-th use of a file, or all from it on; of a write half of it or none.
struct Refuse {
  int k = 0;
  How how = once;
  int uses = 0;
  bool isWrite = false;  // the k-th use
} refuse;
bool May(FileOp op, std::size_t& n) {
  const bool isIt = ++refuse.uses == refuse.k;
  if (isIt) refuse.isWrite = op == FileOp::write;
  if (refuse.k <= 0 || refuse.uses < refuse.k || (!isIt && refuse.how < on)) return true;
  n = isIt && (refuse.how == half || refuse.how == onHalf) ? n / 2 : 0;
  return false;
}

struct Faults : testing::Test {
  TempDir folder{access("/dev/shm", W_OK) == 0 ? "/dev/shm"
                                               : fs::temp_directory_path()};  // in memory
  std::map<std::string, std::string> made;  // the files at the beginning of each try

  void InChild(const std::function<void()>& body) {
    const auto whole = [&] {
      g_mayUseFile = May;
      Start();
      body();
      return HasFailure();
    };
    EXPECT_EQ(mox::InChild(whole), 0);
  }
  void Start() {
    fs::create_directory("run");
    fs::current_path("run");
    SessionInit();
    PutBytes("R.txt", "ann,30\nbob,12\nbob,7\neve,41\ndan,5\numa,999\n");
    PutBytes("S.txt", "zoe,12\nkim,7\nlea,88\n");
    PutBytes("X.txt", std::string(70000, 'o'));
    PutBytes("V.mem", "\x1A");
    PutBytes("P.cmd", "? 1\n");
    PutBytes("K.cmd", "DO WHILE .NOT. EOF\nREPLACE AGE WITH AGE+1\nSKIP\nENDDO\n");
    for (const std::string table : {"T", "S", "X"}) Do("CREATE " + table, "NAME,C,5\nAGE,N,4\n\n");
    for (int i = 0; i < 300; ++i) std::ofstream("W.txt", std::ios::app) << "w" << i << "\n";
    Do("CREATE W", "NAME,C,254\n\n");  // more than a block of an image
    Do("USE W : APPEND FROM W.txt SDF : USE X : APPEND FROM S.txt SDF DELIMITED : USE S : APPEND "
       "FROM S.txt SDF DELIMITED : "
       "USE T : APPEND FROM R.txt SDF DELIMITED : 1 : DELETE : 5 : DELETE : "
       "INDEX ON " +
       longName + " TO A : INDEX ON AGE TO B : INDEX ON AGE TO C : USE");
    for (const auto& [name, content] : Look()) made[name] = Bytes(name);
    fs::rename("P.cmd", "../P.cmd");
    fs::create_symlink("../P.cmd", "P.cmd");
    for (const std::string name : {"V.mem", "X.txt"}) fs::create_hard_link(name, "../" + name);
  }
  // P is a link; V and the text X have a second name, so that they are written in place.
  void Begin(const std::string& before = "") {
    refuse = {};
    SessionInit();
    for (const auto& entry : fs::directory_iterator("."))
      if (!made.contains(entry.path().filename())) fs::remove(entry);
    for (const auto& [name, content] : made)
      if (Bytes(name) != content) PutBytes(name, content);
    EXPECT_TRUE(fs::is_symlink("P.cmd") && fs::hard_link_count("V.mem") > 1);
    EXPECT_EQ(Do("SET TALK OFF : STORE 7 TO V : USE T INDEX A,B"), "");
    EXPECT_EQ(Do(before), "");
    OS_CountWait();
  }
};

struct Statement {
  const char *text, *typed = "", *before = "";
  bool parts = false;     // changes one record after the other: those before the refused one stay
  bool rebuilds = false;  // indexes may be left behind, marked
  bool reads = false;     // tells each refusal
};
// clang-format off
const Statement statements[] = {
    {"APPEND BLANK"},
    {"REPLACE NAME WITH \"new\", AGE WITH 77", "", "GOTO 3"},
    {"EDIT 3", "abc\rx\r"},
    {"APPEND", "abc\rx\r", "", true}, {"APPEND", "\x17", "SET CARRY ON", true},
    {"@ 1,1 GET NAME : @ 2,1 GET AGE : READ", "xyz\r8\r", "GOTO 4"},
    {"BROWSE", "q\r5\r\x17"},
    {"DELETE", "", "GOTO 3"}, {"DELETE ALL FOR AGE>10", "", "", true}, {"RECALL ALL", "", "", true},
    {"DELETE ALL", "", "SET INDEX TO", true},
    {"PACK", "", "", false, true}, {"REINDEX"},
    {"INDEX ON NAME TO A"}, {"INDEX ON NAME TO C"}, {"INDEX ON NAME TO N"},
    {"COPY TO X"}, {"COPY TO N"}, {"COPY TO X STRUCTURE"},
    {"COPY TO X.txt SDF"}, {"COPY TO X.txt FOR AGE=7 SDF"},
    {"APPEND FROM S FOR AGE>10", "", "USE X", true},
    {"APPEND FROM S", "", "", true}, {"APPEND FROM S FOR AGE<50", "", "", true},
    {"APPEND FROM S.txt SDF DELIMITED", "", "", true},
    {"SORT ON NAME TO X"}, {"TOTAL TO X ON NAME"},
    {"JOIN TO X FOR P.AGE>S.AGE", "", "SELECT B : USE S : SELECT A"},
    {"UPDATE FROM S ON AGE ADD AGE", "", "USE X", true}, {"DO K", "", "USE X", true},
    {"UPDATE FROM S ON AGE REPLACE NAME WITH NAME", "", "SET INDEX TO B,A", true},
    {"SAVE TO V"}, {"SAVE TO N"},
    {"CREATE X", "NAME,C,5\nNEW,N,4\n\n"}, {"CREATE N", "NAME,C,5\nAGE,N,4\n\n"},
    {"MODIFY STRUCTURE", "Y\x17", "", false, true},
    {"MODIFY COMMAND P", "x\x17"}, {"MODIFY COMMAND N", "x\x17"},
    {"RENAME \"S.txt\" TO \"N.txt\""}, {"DELETE FILE S.txt"}, {"USE S", "", "DELETE"},
    {"INDEX ON $(NAME,1,5) TO N", "", "USE W"}, {"COPY TO X", "", "USE W"}, {"COPY TO X.txt SDF", "", "USE W"},
    {"DELETE ALL", "", "USE W", true}, {"APPEND FROM S", "", "USE W", true},
    {"LIST FOR AGE>0", "", "", false, false, true}, {"SUM AGE", "", "USE X", false, false, true},
    {"GOTO 2 : ? NAME", "", "USE X", false, false, true},
};
// clang-format on

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
bool IsLeft(const State::value_type& file) { return file.first.ends_with("~"); }

// Each file is as before or after the statement, of which one in the making may be left.
void ExpectWhole(const Statement& s, State before, State after, bool told) {
  State now = Look(), all = now;
  all.insert(before.begin(), before.end());
  all.insert(after.begin(), after.end());
  for (const auto& file : all) {
    const std::string& name = file.first;
    if (now[name] == after[name] || (told && now[name] == before[name]) || IsLeft(file)) continue;
    if (told && (name == "A.ndx" || name == "B.ndx")) continue;  // looked at otherwise
    if (told && s.parts && InParts(before[name], after[name], now[name], *s.typed)) continue;
    if (told && refuse.how == onHalf && (name == "T.dbf" || s.parts)) continue;  // torn
    if (told && refuse.how >= on && fs::hard_link_count(name) > 1) continue;
    ADD_FAILURE() << name << ": " << testing::PrintToString(now[name]);
  }
}

struct Refusals : Faults {
  // False when there was no k-th use of a file.
  bool Try(const Statement& s, const State& before, const State& after) {
    const std::string told = Do(s.text, s.typed);
    dbRest();
    const bool refused = refuse.uses >= refuse.k, goesOn = refuse.how >= on, mark = Marked();
    SCOPED_TRACE(StrFmt("%s refused at %d, mode %d: ", s.text, refuse.k, refuse.how) + told);
    refuse.k = 0;
    EXPECT_TRUE(told == "" || refused);
    EXPECT_TRUE(told != "" || !refused || !s.reads) << "silent";
    ExpectWhole(s, before, after, told != "" || refuse.how == killed);
    EXPECT_TRUE(!mark || goesOn || told == "" || s.rebuilds) << "marked";
    if (!mark) ExpectInStep();
    if (refuse.how == killed) SessionInit(), Do("SET TALK OFF : STORE 7 TO V");
    const std::string use = Do("USE T INDEX A,B");
    EXPECT_TRUE(use == "" ? !mark || refuse.how != killed : mark && use.starts_with("REINDEX"));
    EXPECT_EQ(use == "" ? "" : Do("REINDEX"), "");
    EXPECT_EQ(Do("APPEND BLANK : REPLACE NAME WITH \"tail\", AGE WITH 5"), "");
    dbRest();
    ExpectInStep();
    EXPECT_FALSE(Marked());
    const State left = Look();
    if (std::any_of(left.begin(), left.end(), IsLeft)) {
      Do(s.before), Do(s.text, s.typed);
      for (const auto& file : Look()) EXPECT_FALSE(IsLeft(file)) << file.first;
    }
    return refused;
  }
  void Each(const Statement& s) {
    Begin(s.before);
    const State before = Look();
    EXPECT_EQ(Do(s.text, s.typed), "") << s.text;
    dbRest();
    const State after = Look();
    std::vector<bool> isWrite;
    for (const How how : {once, half, on, onHalf, killed}) {
      for (int k = 1; !HasFailure() && (how == once || k <= int(isWrite.size())); ++k) {
        if ((how == half || how == onHalf) && !isWrite[k - 1]) continue;
        Begin(s.before);
        refuse = {k, how};
        if (!Try(s, before, after)) break;
        if (how == once) isWrite.push_back(refuse.isWrite);
      }
    }
    Locked(s, before, after);
  }
  // Where no file can be made, a file that is there changes as elsewhere, and a new one is refused.
  void Locked(const Statement& s, const State& before, const State& after) {
    Begin(s.before);
    for (const auto& file : before) chmod(file.first.c_str(), 0666);
    chmod(".", 0555);
    const bool isRoot = geteuid() == 0 && seteuid(65534) == 0;
    const std::string told = Do(s.text, s.typed);
    EXPECT_TRUE(!isRoot || seteuid(0) == 0);
    chmod(".", 0755), dbRest();
    const bool isNew = after.size() != before.size() || after.contains("N.txt");
    EXPECT_EQ(told != "", isNew) << s.text << told;
    EXPECT_EQ(Look(), isNew ? before : after) << s.text;
  }
};

TEST_F(Refusals, OfEachStatement) {
  InChild([&] {
    for (const Statement& s : statements) Each(s);
  });
}

// Folders, pipes, links to them, and what another session has open or is making are replaced by
// nothing, and nothing waits for them; nor is what another session opened meanwhile.
TEST_F(Refusals, OfTargets) {
  InChild([&] {
    Begin("SELECT B : USE S : SELECT A");
    NewFile making;
    EXPECT_EQ(NewFileOpen(making, "S.txt"), 0);
    fs::create_directory("F.dbf"), fs::create_symlink("Q.dbf", "L.dbf");
    mkfifo("Q.dbf", 0600);
    std::vector<FileHandle> others;
    for (const std::string name : {"X.dbf", "C.ndx", "N.dbf.mox~", "S.txt"})
      EXPECT_TRUE(OS_FileKeep(others.emplace_back(OS_FileOpen(name, FileMode::make)), name));
    EXPECT_EQ(NewFileDone(making), fileInUse);
    PutBytes("K.txt.mox~", std::string(9999, 'x'));  // a killed program's
    EXPECT_EQ(Do("COPY TO K.txt SDF"), "");
    EXPECT_EQ(fs::file_size("K.txt"), 60u);
    for (const char* text :
         {"COPY TO %s", "COPY TO %s STRUCTURE", "COPY TO %s.dbf SDF", "SORT ON NAME TO %s",
          "TOTAL TO %s ON NAME", "JOIN TO %s FOR P.AGE=S.AGE", "CREATE %s", "SAVE TO %s.dbf",
          "INDEX ON NAME TO %s.dbf", "MODIFY COMMAND %s.dbf"})
      for (const char* to : {"F", "Q", "L", "X", "N"})
        EXPECT_NE(Do(StrFmt(text, to), "x\x17"), "") << text << to;
    for (const char* text :
         {"RENAME \"P.cmd\" TO \"X.dbf\"", "RENAME \"X.dbf\" TO \"N.txt\"", "DELETE FILE X.dbf",
          "SET ALTERNATE TO X.dbf", "INDEX ON AGE TO C", "SET INDEX TO C", "SELECT C : USE X",
          "DELETE FILE Q.dbf", "APPEND FROM L", "DO L.dbf", "RESTORE FROM L.dbf",
          "APPEND FROM L.dbf SDF"})
      EXPECT_NE(Do(text), "") << text;
    EXPECT_TRUE(fs::is_directory("F.dbf") && fs::is_fifo("Q.dbf") && fs::is_symlink("L.dbf"));
    EXPECT_EQ(Bytes("X.dbf") + Bytes("C.ndx") + Bytes("S.txt"),
              made["X.dbf"] + made["C.ndx"] + made["S.txt"]);
    fs::create_symlink("/proc/self/mem", "E.txt");  // a plain file that no read succeeds on
    for (const char* text :
         {"MODIFY COMMAND E.txt", "DO E.txt", "RESTORE FROM E.txt", "APPEND FROM E SDF"})
      EXPECT_EQ(Do("SELECT A : " + std::string(text)).substr(0, 16),
                fs::exists("E.txt") ? "CANNOT READ FILE" : "")
          << text;
    for (const FileHandle f : others) OS_FileClose(f);
    const FileHandle late = OS_FileOpen("X.dbf", FileMode::change);
    fs::rename("R.txt", "X.dbf");
    EXPECT_FALSE(OS_FileKeep(late, "X.dbf"));
    for (const char* text : {"USE T INDEX A,B", "PACK", "REINDEX", "MODIFY STRUCTURE"}) {
      Do(text, "Y\x17");
      for (const std::string name : {"T.dbf", "A.ndx", "B.ndx"})
        EXPECT_FALSE(OS_FileKeep(OS_FileOpen(name, FileMode::change), name)) << text << name;
    }
  });
}

// --- Random histories against a model: two areas on one table, indexes whose keys fail.

const char* const indexes[] = {"A.ndx", "B.ndx", "C.ndx"};  // of NAME, AGE+1000, V/AGE
struct Record {
  std::string name;
  int age = 0;
  bool blank = false, deleted = false;
  std::array<std::string, 3> keys = {};  // in the indexes; none: no item
  std::string row() const {
    return (deleted ? "*" : " ") + StrFmt("%-5s", name.c_str()) +
           (blank ? "    " : StrFmt("%4d", age));
  }
};

struct Model {
  std::vector<Record> recs;
  int v = 2520;  // 0: there is no variable V
  int attached = 3;

  std::string key(int i, const Record& r) const {  // none: it fails
    if (i == 0) return StrFmt("%-5s", r.name.c_str());
    if (i == 2 && (v == 0 || r.age == 0)) return "";
    return StrFmt("%08d", i == 1 ? r.age + 1000 : v / r.age);
  }
  bool change(Record& r, Record to) {  // false when it is refused
    for (int i = 0; i < attached; ++i) {
      to.keys[i] = key(i, to);
      if (to.keys[i] == "" || (key(i, r) == "" && r.keys[i] != "")) return false;
    }
    r = to;
    return true;
  }
  bool append(Record r) {  // false when an index lacks it
    for (int i = 0; i < attached; ++i) r.keys[i] = key(i, r);
    recs.push_back(r);
    return attached < 3 || r.keys[2] != "";
  }
  bool build(int i = 0) {  // false when the first record doesn't tell the form of C's key
    const bool tells = attached < 3 || (!recs.empty() && key(2, recs[0]) != "");
    for (; i < (tells ? attached : 2); ++i)
      for (Record& r : recs) r.keys[i] = key(i, r);
    return tells;
  }
  Items items(int i) const {
    Items all;
    for (size_t r = 0; r < recs.size(); ++r)
      if (recs[r].keys[i] != "") all.emplace_back(recs[r].keys[i], r + 1);
    return all;
  }
};

struct Histories : Faults {
  Model m;
  std::mt19937 random;
  std::vector<Record> source;  // the records of S
  unsigned other = 0;          // the record of area B

  unsigned any(size_t n) { return static_cast<unsigned>(random() % n); }
  unsigned rec() { return any(m.recs.size()) + 1; }
  // A statement that reports when the model refuses, and only then.
  void Told(const std::string& statement, bool expected) {
    const std::string told = Do(statement);
    EXPECT_EQ(told != "", expected) << statement << ": " << told;
  }
  void Place(bool areaB, unsigned rno) {
    Do((areaB ? "SELECT B : GOTO " : "SELECT A : GOTO ") + std::to_string(rno));
    if (areaB) other = rno;
  }
  void Open(unsigned seed) {
    random.seed(seed);
    m = {{{"ann", 4}, {"bob", 0}, {"eve", 5}, {"zoe", 7}}};
    source = m.recs;
    other = 0;
    Begin("USE");
    PutBytes("S.txt", "ann,4\nbob,0\neve,5\nzoe,7\n");
    Do("STORE 2520 TO V : USE S : DELETE ALL : PACK : APPEND FROM S.txt SDF DELIMITED : USE T : "
       "DELETE ALL : PACK : APPEND FROM S.txt SDF DELIMITED : "
       "INDEX ON " +
       longName + " TO A : INDEX ON AGE+1000 TO B : INDEX ON V/AGE TO C : SET INDEX TO A,B,C");
    Do(any(2) ? "SELECT B : USE T : SELECT A" : "SELECT B : USE T INDEX B : SELECT A");
    m.build();
  }
  void Replace() {
    const unsigned rno = rec();
    const bool areaB = any(3) == 0, broken = any(8) == 0;
    Record to = m.recs[rno - 1];
    if (any(3)) to.name = std::string(1, "abez"[any(4)]) + "nob"[any(3)];
    to.age = static_cast<int>(any(11)), to.blank = false;
    const std::string text = StrFmt("REPLACE NAME WITH \"%s\", AGE WITH %d%s", to.name.c_str(),
                                    to.age, broken ? ", NAME WITH NOPE/2" : "");
    Place(areaB, rno);
    if (any(4) == 0) OS_CountWait(), refuse = {1}, Do("DISPLAY"), refuse.k = 0;
    if (any(4) == 0) OS_CountWait(), refuse = {int(1 + any(9)), any(2) ? once : half};
    const std::string told = Do(text);
    const bool refused = std::exchange(refuse.k, 0) > 0 && told.starts_with("CANNOT ");
    EXPECT_EQ(told == "", !broken && !refused && m.change(m.recs[rno - 1], to))
        << text << ": " << told;
  }
  void Pack() {
    std::erase_if(m.recs, [](const Record& r) { return r.deleted; });
    const bool built = m.build();
    const std::string told = Do("PACK");  // a record gone may have given the form
    if (m.recs.empty() && told == "") return;
    EXPECT_TRUE(m.recs.empty() || (told == "") == built) << told;
    if (!built) {
      Told("SET INDEX TO A,B", true);
      Told("REINDEX", false);
      m.attached = 2;
    }
    if (!m.recs.empty()) Place(true, rec());
  }
  void Attach() {
    Do("SET INDEX TO");
    m.attached = 3;
    const bool built = m.build(2);
    Told("INDEX ON V/AGE TO C", !built);
    m.attached = built ? 3 : 2;
    Told(built ? "SET INDEX TO A,B,C" : "SET INDEX TO A,B", false);
  }
  void Append() {
    const int least = static_cast<int>(any(3)) * 4 - 1;
    bool all = true;
    for (const Record& r : source)
      if (r.age > least) all &= m.append(r);
    Told("APPEND FROM S FOR AGE>" + std::to_string(least), !all);
  }
  void Mark() {
    const unsigned rno = rec();
    Place(false, rno);
    const bool deleted = m.recs[rno - 1].deleted = any(3) != 0;
    Told(deleted ? "DELETE" : "RECALL", false);
  }
  void Step() {
    Do("SELECT A");
    switch (any(m.recs.empty() ? 3 : 14)) {
      case 0: Told("APPEND BLANK", false), m.recs.push_back({"", 0, true}); break;
      case 1: Append(); break;
      case 2: m.v = any(3) * 2520, Do(m.v ? StrFmt("STORE %d TO V", m.v) : "RELEASE V"); break;
      case 3: Mark(); break;
      case 4: Pack(); break;
      case 5: Told("REINDEX", !m.build()); break;
      case 6: Attach(); break;
      case 7: Place(true, rec()); break;
      default: Replace();
    }
  }
  void ExpectSame() {
    dbRest();
    Rows expected;
    for (const Record& r : m.recs) expected.push_back(r.row());
    EXPECT_EQ(Records(Bytes("T.dbf")), expected);
    for (int i = 0; i < m.attached; ++i) {
      ExpectItems(indexes[i], Index(indexes[i]), m.items(i));
      EXPECT_EQ(Get2(Bytes(indexes[i]), 0), 0u) << i;
    }
    const bool stands = other >= 1 && other <= expected.size();
    EXPECT_EQ(stands ? dbRow(1) : "", stands ? expected[other - 1] : "");
  }
};

TEST_F(Histories, RecordsAndIndexesAreThoseOfTheModel) {
  const char* const wanted = std::getenv("MOX_HISTORIES");
  InChild([&] {
    const int last = wanted ? TxtToInt(wanted) : 30;
    for (int seed = 1; seed <= last && !HasFailure(); ++seed) {
      Open(static_cast<unsigned>(seed));
      for (int step = 1; step <= 40 && !HasFailure(); ++step) {
        SCOPED_TRACE(StrFmt("history %d, step %d", seed, step));
        Step();
        ExpectSame();
      }
    }
  });
}

}  // namespace
}  // namespace mox
