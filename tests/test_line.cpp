// The prompt on a terminal: every key, what the terminal then shows, and what is remembered.

#include <gtest/gtest.h>

#include <cstdlib>
#include <random>

#include "screen.h"
#include "temp_dir.h"

namespace {

const std::string kUp = "\x1b[A", kDown = "\x1b[B", kRight = "\x1b[C", kLeft = "\x1b[D",
                  kHome = "\x1b[H", kEnd = "\x1b[F", kDelete = "\x1b[3~", kBack = "\x7f",
                  kEnter = "\r", kTab = "\t", kSearch = "\x12", kRetry = "\x0f", kBegin = "\x01",
                  kToEnd = "\x05", kRest = "\x0b", kFront = "\x15", kWord = "\x17";
const std::string kEmpty = kToEnd + kFront;  // leaves an empty line

std::string Repeat(const std::string& text, int n) {
  std::string all;
  while (n-- > 0) all += text;
  return all;
}

class LineTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!Screen::Possible()) GTEST_SKIP() << "No pseudo-terminal can be had here";
    setenv("MOX_HISTORY", "h", 1);
  }
  void TearDown() override { setenv("MOX_HISTORY", "off", 1); }

  void Start() {
    screen_ = std::make_unique<Screen>(MOX_PROGRAM, std::vector<std::string>(), dir_.path);
  }
  std::string RowAbove(int rows) const { return screen_->Row(screen_->Cursor().first - rows); }
  // Types keys, then expects the row in which the cursor stands, and its column there.
  void Do(const std::string& keys, const std::string& row, int col) {
    screen_->Type(keys);
    screen_->Until([&] { return RowAbove(0) == row && screen_->Cursor().second == col; });
    EXPECT_EQ(RowAbove(0), row) << screen_->All();
    EXPECT_EQ(screen_->Cursor().second, col) << row;
  }
  void Above(int rows, const std::string& text) {
    screen_->Until([&] { return RowAbove(rows) == text; });
    EXPECT_EQ(RowAbove(rows), text) << screen_->All();
  }
  // Types a line and expects what stands above the next prompt.
  void Line(const std::string& keys, const std::string& above) {
    screen_->Type(keys + kEnter);
    screen_->Until([&] { return RowAbove(0) == "." && RowAbove(1) == above; });
    EXPECT_EQ(RowAbove(1), above) << screen_->All();
  }
  void Quit() {
    screen_->Type(kEmpty + "QUIT" + kEnter);
    EXPECT_EQ(screen_->Ended(), 0) << screen_->All();
  }

  TempDir dir_;
  std::unique_ptr<Screen> screen_;
};

TEST_F(LineTest, KeysEdit) {
  Start();
  struct {
    std::string keys, row;
    int col;
  } const cases[] = {
      {"abc", ". abc", 5},
      {"abc" + kLeft + "X", ". abXc", 5},
      {"abc" + kHome + "X" + kEnd + "Y", ". XabcY", 7},
      {"abc" + kBegin + "X" + kToEnd + "Y" + kRight + "Z", ". XabcYZ", 8},
      {"abc" + Repeat(kLeft, 9) + kDelete + "\x04", ". c", 2},
      {"abc" + kLeft + kBack, ". ac", 3},
      {"abc" + kBegin + kBack + kRight + kRest, ". a", 3},
      {"abc" + kLeft + kFront, ". c", 2},
      {"one two  " + kWord + "x", ". one x", 7},
      {"one two" + Repeat(kLeft, 2) + kWord, ". one wo", 6},
      {"abc\x02\x02\x06X", ". abXc", 5},
      // Letters of two, three and four bytes, wide ones and one that joins; bytes that are none.
      {"a\xc3\xa4z" + kLeft + kLeft + kDelete, ". az", 3},
      {"\xe6\x97\xa5\xe6\x9c\xac" + kLeft + "x", ". ??x??", 5},
      {"a\xf0\x9f\x98\x80" + kBack + "e\xcc\x81z" + kLeft + kBack + kBack, ". az", 3},
      {"a\xff"
       "b" +
           kLeft + kBack + "c",
       ". acb", 4},
      // What is no key types nothing.
      {std::string("a\0b\x1b[99~\x1b[1;5P\x1bx\x1b\xc3\xa4\x1bOcc\x1b[5~\xc2\x9b\x13\x16", 32) +
           "d",
       ". abcd", 6},
      {"ab\x1b[1;5DX\x1b[4~Y\x1bOHZ\x1bOp", ". Z0aXbY", 4},
  };
  for (const auto& c : cases) Do(kEmpty + c.keys, c.row, c.col);
  Do(kEmpty + "? 4" + kHome + kRight + kRight + "2" + kEnter, ".", 2);
  Quit();
}

// The start of a session has four lines above its first prompt.
constexpr int kFirst = 4;

TEST_F(LineTest, HistoryWalksAndLasts) {
  Start();
  Line("STORE \"1\" TO A", "1");
  Line("? A", " 1");
  Line("? A", " 1");
  Line("   ", ".");
  Line("ACCEPT \"x\" TO B" + kEnter + "answer", "x:answer");
  Do("draft" + kUp, ". ACCEPT \"x\" TO B", 17);
  Do(kUp + kUp + kUp + kUp, ". STORE \"1\" TO A", 16);
  Do(kDown + "+A", ". ? A+A", 7);
  Line("", " 11");
  Do("draft" + kUp + kUp + kDown + kDown + kDown, ". draft", 7);
  Quit();
  const std::string lines = "STORE \"1\" TO A\n? A\nACCEPT \"x\" TO B\n? A+A\nQUIT\n";
  EXPECT_EQ(Bytes("h"), lines);
  EXPECT_EQ(fs::status("h").permissions(), fs::perms(0600));
  // Two sessions at once keep each other's lines; a damaged line is passed over.
  PutBytes("h", lines + "\x1b[2J\n" + Repeat("x", 132) + "\n");
  Start();
  auto first = std::move(screen_);
  Start();
  Line("? 21", "  21");
  screen_ = std::move(first);
  Do(kUp + kUp, ". ? A+A", 7);
  Line(kEmpty + "? 22", "  22");
  EXPECT_TRUE(Bytes("h").ends_with("x\n? 21\n? 22\n"));
  Quit();
}

TEST_F(LineTest, HistoryFile) {
  // It stands in the user's state folder, which is made for it, for nobody else.
  unsetenv("MOX_HISTORY");
  setenv("XDG_STATE_HOME", (dir_.path / "new/state").c_str(), 1);
  Start();
  Quit();
  unsetenv("XDG_STATE_HOME");
  EXPECT_EQ(Bytes("new/state/mox/history"), "QUIT\n");
  EXPECT_EQ(fs::status("new/state/mox").permissions(), fs::perms(0700));
  // A file with more than 2,000 lines is cut.
  std::string lines;
  for (int i = 0; i < 2001; ++i) lines += "? " + std::to_string(i) + "\n";
  PutBytes("h", lines);
  setenv("MOX_HISTORY", "h", 1);
  Start();
  Do(kUp, ". ? 2000", 8);
  Quit();
  EXPECT_EQ(Bytes("h"), lines.substr(lines.find("? 1001\n")) + "QUIT\n");
  // Without a file a session remembers its own lines.
  for (const char* none : {"", "off", ".", "none/h"}) {
    setenv("MOX_HISTORY", none, 1);
    Start();
    Line("? 3", "  3");
    Do(kUp, ". ? 3", 5);
    Quit();
  }
  EXPECT_FALSE(fs::exists("off") || fs::exists("none"));
}

TEST_F(LineTest, HistorySearch) {
  PutBytes("h", "? 1+2\nSTORE 7 TO price\n? 1*3\n? 1*3\n");
  Start();
  Do("new" + kSearch, ". search \"\": new", 16);
  Do("PRI", ". search \"PRI\": STORE 7 TO price", 27);
  Do("x", ". search \"PRIx\": STORE 7 TO price", 28);
  Do(kBack + kBack + kBack + kBack + "? 1", ". search \"? 1\": ? 1*3", 16);
  Do(kSearch, ". search \"? 1\": ? 1+2", 16);
  Do("\x07", ". new", 5);
  Do(kFront + kSearch + "price" + kHome + kDelete, ". TORE 7 TO price", 2);
  Do(kUp, ". ? 1+2", 7);
  Do(kFront + kEnter, ".", 2);
  Line(kSearch + "*", "  3");
  Quit();
}

TEST_F(LineTest, TabCompletes) {
  PutBytes("Club.dbf", "");
  PutBytes("clock.dbf", "");
  PutBytes("clean.cmd", "");
  PutBytes("notes.txt", "");
  PutBytes("no-name.txt", "");
  Start();
  Line("STORE 5 TO price", " 5");
  Screen& s = *screen_;
  s.Type("CREATE people" + kEnter + "NAME,C,10" + kEnter + "NUMBER,N,5" + kEnter + kEnter);
  s.Type("USE people" + kEnter);
  struct {
    std::string keys, row;
  } const cases[] = {
      {"DISP", ". DISPLAY"},
      {"Disp", ". Display"},
      {"DISPLAY STA", ". DISPLAY STATUS"},
      {"DO W", ". DO WHILE"},
      {"do c", ". do c"},
      {"DO cl", ". DO clean"},
      {"USE Clu", ". USE Club"},
      {"COPY TO cloc", ". COPY TO clock"},
      {"MODI COMM no", ". MODI COMM notes.txt"},
      {"DELETE FILE no", ". DELETE FILE notes.txt"},
      {"RENAME \"no-", ". RENAME \"no-name.txt\""},
      {"REPLACE NA", ". REPLACE NAME"},
      {"? nu", ". ? number"},
      {"? 1 : LIST NU", ". ? 1 : LIST NUMBER"},
      {"IF NAME>\"x\" .A", ". IF NAME>\"x\" .AND."},
      {"? pri", ". ? price"},
      {"? LEF", ". ? LEFT("},
      {"SET INT", ". SET INTENSITY"},
      {"SET TALK O", ". SET TALK O"},
      {"SELE S", ". SELE SECONDARY"},
      {"SORT ON NA", ". SORT ON NAME"},
      {"HELP LOC", ". HELP LOCATE"},
      {"? \"LEF", ". ? \"LEF"},
  };
  for (const auto& c : cases) {
    s.Type(kEmpty + c.keys + kTab);
    s.Until([&] { return RowAbove(0) == c.row; });
    EXPECT_EQ(RowAbove(0), c.row);
  }
  // In the middle of a line what follows stays.
  Do(kEmpty + "LI NAME" + kHome + kRight + kRight + kTab, ". LIST NAME", 6);
  // The second Tab lists, and the line stands again below.
  Do(kEmpty + "REPL n" + kTab + kTab, ". REPL n", 8);
  Above(1, "name    number");
  Line(kEmpty + "ACCEPT TO A" + kEnter + "LIS" + kTab + "NA" + kTab + "|", ":LIS NA |");
  Quit();
}

TEST_F(LineTest, BlockIsTriedAgain) {
  Start();
  Screen& s = *screen_;
  s.Type("DO WHILE T" + kEnter + "  ? 7" + kEnter);
  Do("? (", "> ? (", 5);
  Line("", "LINE 3: ? (");
  // Its lines come one by one, and all of them again in their order.
  Do(kUp, ". ? (", 5);
  Do(kUp + kUp, ". DO WHILE T", 12);
  Line(kEmpty + "? 5", "  5");
  Do(kRetry, ". DO WHILE T", 12);
  Do(kEnter, ">   ? 7", 7);
  Do(kBack + "8" + kEnter, "> ? (", 5);
  // What wasn't reached is kept for a further try.
  Do(kBack + kBack + kBack + "WHAT" + kEnter, ".", 2);
  Do(kRetry + kEnter + kEnter, "> WHAT", 6);
  Do("\x03", ".", 2);
  // A line is put in ahead of one that is offered.
  Do(kRetry + kEmpty + "IF 1=1" + kEnter + kRetry + "? 6" + kEnter, ">   ? 8", 7);
  Do(kEnter, "> WHAT", 6);
  Do(kFront + "? 9" + kEnter + "ENDIF" + kEnter, ".", 2);
  Above(3, "  6");
  Above(2, "  8");
  // Another line in place of the first leaves the block for later.
  Line(kRetry + kEmpty + "? 5", "  5");
  Do(kRetry, ". IF 1=1", 8);
  Quit();
}

TEST_F(LineTest, LongLines) {
  Start();
  Screen& s = *screen_;
  const std::string full = "* " + Repeat("0123456789", 12) + "012345678";  // 131 bytes
  Do(full + "x", full.substr(78), 53);
  EXPECT_EQ(s.Row(kFirst), ". " + full.substr(0, 78));
  // The edge of the window: the cursor stands in the next row as soon as one is full.
  Do(Repeat(kLeft, 52), full.substr(78), 1);
  Do(kLeft, full.substr(78), 0);
  Do(kLeft, ". " + full.substr(0, 78), 79);
  Do(kHome + kDelete, ". " + full.substr(1, 78), 2);
  Do(kToEnd, full.substr(79), 52);
  Do(kWord + Repeat("y", 77), "", 0);
  Do("\xe6\x97\xa5", "??", 2);
  Do(kBack + kBack + "\xe6\x97\xa5", "??", 2);
  EXPECT_EQ(s.Row(kFirst), ".  " + Repeat("y", 76));
  Do(kBack + "z" + kLeft + "\xe6\x97\xa5", "??z", 2);
  EXPECT_EQ(s.Row(kFirst), ".  " + Repeat("y", 76));
  Do(kLeft, "??z", 0);
  Do(kLeft, ".  " + Repeat("y", 76), 78);
  Do(kRest + kFront, ".", 2);
  EXPECT_EQ(s.Row(kFirst + 1), "");
  // What isn't taken isn't run: this DELETE would be one of all records.
  Line("ACCEPT TO A" + kEnter + Repeat("z", 140), Repeat("z", 52));
  Line("? LEN(A)", "  131");
  // At the bottom the rows above move up.
  s.Type(Repeat(kEnter, 24));
  Do(Repeat("w", 100) + kHome, ". " + Repeat("w", 78), 2);
  EXPECT_EQ(s.Cursor().first, 22);
  Do(kRest, ".", 2);
  Quit();
}

// Whatever was changed, the terminal shows what it would show had it been drawn at once.
TEST_F(LineTest, AnyChangeDrawsAsAnew) {
  PutBytes("h", "? 1\n" + Repeat("\xe6\x97\xa5", 40) + "\n");
  const std::vector<std::string> keys = {
      "a",   "bcdefghijkl", "\xc3\xa4", "\xe6\x97\xa5", " ",   kLeft, kLeft, kRight,
      kHome, kEnd,          kDelete,    kBack,          kWord, kUp,   kDown, kRest};
  std::mt19937 random(7);
  Start();
  const std::string anew = "\x0c";
  // What is shown once the keys are done: a search begins and ends behind them.
  const auto shown = [&](const std::string& typed) {
    const auto searches = [&] { return screen_->All().find("search") != std::string::npos; };
    screen_->Type(typed + kSearch);
    screen_->Until(searches);
    screen_->Type("\x07");
    screen_->Until([&] { return !searches(); });
    screen_->Type("");
    return std::to_string(screen_->Cursor().second) + '\n' + screen_->All();
  };
  for (int cols : {80, 13, 10}) {
    screen_->Resize(cols);
    screen_->Type(anew);
    for (int round = 0; round < 4; ++round) {
      std::string typed;
      for (int i = 0; i < 20; ++i) typed += keys[random() % keys.size()];
      const std::string changed = shown(typed + kLeft);
      ASSERT_EQ(shown(anew), changed);
    }
  }
}

TEST_F(LineTest, WindowChanges) {
  Start();
  Do("? " + Repeat("1", 30), ". ? " + Repeat("1", 30), 34);
  screen_->Resize(50);
  Do(Repeat("2", 30), Repeat("2", 14), 14);
  EXPECT_EQ(screen_->Row(kFirst).size(), 50u);
  Quit();
}

TEST_F(LineTest, Pastes) {
  PutBytes("wait.cmd", "WAIT TO K\nACCEPT TO A\n? K+A\n");
  Start();
  const std::string begin = "\x1b[200~", end = "\x1b[201~";
  // Line ends are Enter, tabs are blanks, and other control characters are nothing.
  Do(begin + "IF 1=1\r\n\t? 7\n? \"a\x01\x1b[Ab\"\rENDIF\r? 1" + end + "2", ". ? 12", 6);
  EXPECT_EQ(screen_->Row(kFirst + 1), ">  ? 7");
  EXPECT_EQ(screen_->Row(kFirst + 5), " ab");
  Line("", "  12");
  // What is pasted behind a line is there for the keys and lines that this asks for.
  Do(begin + "DO wait\nxyz" + end + kEnter, ".", 2);
  Above(1, " xyz");
  Do("LI" + kTab, ". LIST", 7);
  Do(begin + "? 5\n" + end, ".", 2);
  Quit();
}

TEST_F(LineTest, EndAndInterrupt) {
  Start();
  Do("abc" + kLeft, ". abc", 4);
  Do("\x03", ".", 2);
  EXPECT_EQ(screen_->Row(kFirst), ". abc^C");
  Do("DO WHILE T" + kEnter + "? 1", "> ? 1", 5);
  Do("\x03", ".", 2);
  Do("ACCEPT \"x\" TO A" + kEnter + "no", "x:no", 4);
  Do("\x03", ".", 2);
  Above(1, "*** INTERRUPTED");
  Do("ab" + kHome + "\x04\x04", ".", 2);
  screen_->Type("\x04");
  EXPECT_EQ(screen_->Ended(), 0);
}

}  // namespace
