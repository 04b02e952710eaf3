// The prompt on a terminal: every key, what the terminal then shows, and what is remembered.
#include "screen.h"

namespace {

const std::string kUp = "\x1b[A", kDown = "\x1b[B", kRight = "\x1b[C", kLeft = "\x1b[D",
                  kHome = "\x1b[H", kEnd = "\x1b[F", kDelete = "\x1b[3~", kBack = "\x7f",
                  kSearch = "\x12", kRetry = "\x0f", kBegin = "\x01", kToEnd = "\x05",
                  kRest = "\x0b", kFront = "\x15", kWord = "\x17", kInterrupt = "\x03";
const std::string kEmpty = kToEnd + kFront;  // leaves an empty line

class LineTest : public OnScreen {
 protected:
  LineTest() { setenv("MOX_HISTORY", "h", 1); }

  // Types keys, then expects the row in which the cursor stands, and its column there.
  void Do(const std::string& keys, const std::string& row, int col) {
    screen_->Type(keys);
    Above(0, row);
    EXPECT_TRUE(screen_->Until([&] { return screen_->Cursor().second == col; })) << row << col;
  }
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
      {"a\xffz" + kLeft + kBack + "c", ". acz", 4},
      // What is no key types nothing.
      {std::string("a\0b\x1b[99~\x1b[1;5P\x1bx\x1b\xc3\xa4\x1bOcc\x1b[5~\xc2\x9b\x13\x16", 32) +
           "d",
       ". abcd", 6},
      {"ab\x1b[1;5DX\x1b[4~Y\x1bOHZ\x1bOp", ". Z0aXbY", 4},
  };
  for (const auto& c : cases) Do(kEmpty + c.keys, c.row, c.col);
  Line(kEmpty + "? 4" + kHome + kRight + kRight + "2", "  24");
  Do("abc" + kLeft, ". abc", 4);
  Line(kInterrupt, ". abc^C", "");
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
  for (const char* file : {"Club.dbf", "clock.dbf", "clean.cmd", "notes.txt", "no-name.txt"})
    PutBytes(file, "");
  Start({"STORE 5 TO price", "CREATE people", "NAME,C,10", "NUMBER,N,5", "", "USE people"});
  // What Tab adds stands behind the bar.
  std::istringstream cases(
      "DISP|LAY;Disp|lay;DISPLAY STA|TUS;DO W|HILE;do c|;DO cl|ean;USE Clu|b;COPY TO cloc|k;"
      "MODI COMM no|tes.txt;DELETE FILE no|tes.txt;RENAME \"no-|name.txt\";REPLACE NA|ME;? nu|mber;"
      "? 1 : LIST NU|MBER;IF NAME>\"x\" .A|ND.;? pri|ce;? LEF|T(;SET INT|ENSITY;SET TALK O|;"
      "SELE S|ECONDARY;SORT ON NA|ME;HELP LOC|ATE;? \"LEF|");
  for (std::string line; std::getline(cases, line, ';');) {
    const size_t bar = line.find('|');
    screen_->Type(kEmpty + line.substr(0, bar) + kTab);
    Above(0, ". " + line.substr(0, bar) + line.substr(bar + 1));
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
  Start({"DO WHILE T", "  ? 7"});
  Line("? (", "LINE 3: ? (");
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
  Do(kInterrupt, ".", 2);
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
  const std::string full = "* " + Repeat("0123456789", 12) + "012345678";  // 131 bytes
  Do(full + "x", full.substr(78), 53);
  EXPECT_EQ(screen_->Row(kFirst), ". " + full.substr(0, 78));
  // The edge of the window: the cursor stands in the next row as soon as one is full.
  Do(Repeat(kLeft, 52), full.substr(78), 1);
  Do(kLeft, full.substr(78), 0);
  Do(kLeft, ". " + full.substr(0, 78), 79);
  Do(kHome + kDelete, ". " + full.substr(1, 78), 2);
  Do(kToEnd, full.substr(79), 52);
  Do(kWord + Repeat("y", 77), "", 0);
  Do("\xe6\x97\xa5", "??", 2);
  Do(kBack + kBack + "\xe6\x97\xa5", "??", 2);
  EXPECT_EQ(screen_->Row(kFirst), ".  " + Repeat("y", 76));
  Do(kBack + "z" + kLeft + "\xe6\x97\xa5", "??z", 2);
  EXPECT_EQ(screen_->Row(kFirst), ".  " + Repeat("y", 76));
  Do(kLeft, "??z", 0);
  Do(kLeft, ".  " + Repeat("y", 76), 78);
  Do(kRest + kFront, ".", 2);
  EXPECT_EQ(screen_->Row(kFirst + 1), "");
  // What isn't taken isn't run: this DELETE would be one of all records.
  Line("ACCEPT TO A" + kEnter + Repeat("z", 140), Repeat("z", 52));
  Line("? LEN(A)", "  131");
  // At the bottom the rows above move up.
  screen_->Type(Repeat(kEnter, 24));
  Do(Repeat("w", 100) + kHome, ". " + Repeat("w", 78), 2);
  EXPECT_EQ(screen_->Cursor().first, 22);
  Do(kRest, ".", 2);
  Quit();
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

}  // namespace
