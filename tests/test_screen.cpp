// The full-screen statements as a person meets them: keys in, the picture out, and the files
// afterwards.
#include "screen.h"

#include <csignal>
#include <optional>

#include "session/strreplace.h"
#include "session_run.h"

namespace {

const std::string kUp = "\x05", kDown = "\x18", kLeft = "\x13", kRight = "\x04", kSave = "\x17",
                  kQuit = "\x11", kInsert = "\x16", kDelete = "\x07", kBack = "\x08",
                  kMark = "\x15", kPanLeft = "\x01", kPanRight = "\x06";

// Lines one below the other, from a place on.
struct Seen {
  int row, col;
  std::string text;
};

struct Field {
  std::string name;
  char type;
  int length, decimals = 0;
};

class ScreenTest : public OnScreen {
 protected:
  using Place = std::optional<std::pair<int, int>>;
  // Types keys, then expects what stands on the screen, and the cursor at a place.
  void Do(const std::string& keys, const std::vector<Seen>& seen = {}, const Place& cursor = {}) {
    screen_->Type(keys);
    for (auto [row, col, text] : seen) {
      std::istringstream lines(text);
      while (std::getline(lines, text)) {
        const auto sees = [&] {
          return (screen_->Row(row) + std::string(130, ' ')).compare(col, text.size(), text) == 0;
        };
        EXPECT_TRUE(screen_->Until(sees)) << text << "\n" << screen_->All();
        ++row;
      }
    }
    EXPECT_EQ(screen_->Cursor(), cursor.value_or(screen_->Cursor()));
  }
  // The records of p.dbf as text, one behind the other, each with its mark.
  static std::string Records() {
    const std::string file = Bytes("p.dbf");
    return file.size() < 521 ? file : file.substr(521, file.size() - 522);
  }
  // Makes p.dbf, of records whose fields have their full width.
  static void Table(const std::vector<Field>& fields, const std::vector<std::string>& records) {
    std::string file = {2, static_cast<char>(records.size()), 0, 0, 0, 0, 0, 0};
    for (Field f : fields) {
      f.name.resize(11);
      file += f.name + f.type + static_cast<char>(f.length) + std::string(2, '\0') +
              static_cast<char>(f.decimals);
    }
    file += '\r';
    file.resize(521);
    for (const std::string& record : records) file += ' ' + record;
    PutBytes("p.dbf", file + '\x1a');
  }
};

TEST_F(ScreenTest, FormDrawsAndSaves) {
  Table({{"NAME", 'C', 10}, {"AGE", 'N', 5, 1}, {"OK", 'L', 1}},
        {"Bob         7.5T", "Eve         8.0F"});
  PutBytes("f.fmt", "@ 5,10 SAY \"Name\" GET NAME\n@ 6,10 SAY \"Age\" GET AGE\n@ 2*4-1,10 GET V\n");
  Start({"USE p", "STORE \"abc\" TO V", "SET FORMAT TO f", "ERASE"});
  Do("READ" + kEnter, {{5, 10, "Name:Bob       :\nAge:  7.5:\n:abc:"}}, {{5, 15}});
  EXPECT_EQ(screen_->Row(5, true), std::string(15, ' ') + "Bob_______");
  // A lone field end keeps what was typed; a number gets its form when its field is left.
  Do("Al\"" + kMark, {{5, 10, "Name:Al\"       :"}});
  Do(kEnter + "1.25" + kUp, {{6, 10, "Age:  1.3:"}}, {{5, 15}});
  Do("\x1b[B\x1b[BXY" + kEnter, {{23, 0, ". "}});
  EXPECT_EQ(Records(), " Al\"         1.3T Eve         8.0F");
  Line("? V", " XYc");
  Quit();
}

TEST_F(ScreenTest, FormPlacesAndPictures) {
  PutBytes(
      "a.cmd",
      "STORE \"12x45\" TO P\nSTORE T TO L\nSTORE F TO M\nSTORE 3 TO N\nSTORE \"ab\" TO S\nCOUNT TO "
      "C\n"
      "ERASE\n@ 2,79 GET S\n@ 3,70 SAY \"ABCDEFGHIJ\" GET S\n@ 4,0 SAY 1.5\n@ 4,10 SAY T\n"
      "@ 5,0 GET P PICTURE \"99.99\"\n@ 6,0 GET S PICTURE \"--\"\n@ 7,0 GET L\n@ 8,0 GET S PICTURE "
      "\"!A\"\n@ 9,0 GET N\n@ 99,99 SAY \".\"\n@ 10,0 GET C\n@ 22,70 SAY \"123456789012\"\n"
      "@ 11,0 GET M\n@ 23,60 GET LONG\nREAD\n");
  Table({{"LONG", 'C', 60}}, {std::string(60, 'L'), std::string(60, 'L')});
  Start({"USE p", "SET CONFIRM ON", "SET SCREEN ON"});
  Do("DO a" + kEnter,
     {{2, 76, ":ab\n:ab"},
      {4, 0, " 1.5      .T.\n:12x45:\n:ab:\n:T:\n:ab:\n:         3:\n:         2:\n:F:"},
      {22, 60, "          1234567890\n:" + std::string(19, 'L')}});
  // Every printable character in turn: the picture decides which positions take it, and the
  // field without any is passed over.
  std::string all;
  for (char c = ' '; c < 127; ++c) all += c;
  Do(kDown + kDown + all, {{5, 0, ": + 45:"}});
  Do(kDown + "n" + kDown + "z9Z" + kDown + kDown + kDown + "y" + kDown + "abc" +
         Repeat(kRight, 40) + "Z",
     {{22, 70, "1234567890"}, {23, 60, ":abc" + std::string(16, 'L')}}, {{23, 79}});
  Do(kSave);
  EXPECT_EQ(Records().substr(61), " abc" + std::string(40, 'L') + "Z" + std::string(16, 'L'));
  Line("?? L : ? M", " .F.  .T.");
  Line("? S", " ZZ");
  Quit();
}

TEST_F(ScreenTest, OptionsAndWhatAFormLeaves) {
  Table({{"NAME", 'C', 5}, {"AGE", 'N', 3}}, {"Bob    7", "Eve    8"});
  Start({"USE p", "2", "STORE \"abc\" TO V", "SET COLON OFF"});
  Do("ERASE : @ 5,0 SAY \"ab\" GET V : @ 6,0 GET V : @ 22,0" + kEnter,
     {{5, 0, "ababc "}, {6, 0, "abc "}});
  EXPECT_EQ(screen_->Row(5, true), "  abc");
  Do("READ" + kEnter + "x", {{5, 0, "abxbc "}}, {{5, 3}});
  // What was abandoned waits no more; neither does what CLEAR GETS forgot.
  Do(kQuit + "READ" + kEnter, {{23, 0, ". "}});
  Lines({"SET COLON ON", "SET INTENSITY OFF"});
  Do("ERASE : @ 5,0 GET V : CLEAR GETS : READ : @ 22,0" + kEnter, {{4, 0, ":abc:"}, {22, 0, ". "}});
  EXPECT_EQ(screen_->Row(4, true), "");
  // BROWSE has no colons, and begins without inserting; both are as before behind it.
  Do("BROWSE" + kEnter + kInsert + "Z", {{2, 0, "ZEve    8"}, {0, 18, "INSERT"}});
  Do(kQuit + "BROWSE" + kEnter + "Z" + kSave, {{23, 0, ". "}});
  Do("SET INTENSITY ON : ERASE : @ 5,0 GET V : @ 22,0" + kEnter, {{5, 0, ":abc:"}});
  Do("SET CARRY ON : DELETE" + kEnter + "APPEND" + kEnter,
     {{0, 0, "RECORD # 00003"}, {0, 32, "DELETED"}, {1, 10, ":Zve  :"}, {2, 10, ":  8:"}});
  Do("new" + kQuit + "SET CARRY OFF" + kEnter + "APPEND" + kEnter, {{1, 10, ":     :"}});
  Do("n" + kSave + "? #" + kEnter);
  EXPECT_EQ(Records(), " Bob    7*Zve    8*Zve    8 n      0");
  Quit();
}

TEST_F(ScreenTest, RecordEditor) {
  Table({{"NAME", 'C', 10}, {"AGE", 'N', 5, 2}, {"OK", 'L', 1}, {"BIG", 'N', 4, 1}},
        {"Bob        1.25T1234", "Eve        2.50F 0.5"});
  Start({"USE p"});
  Do("EDIT 1" + kEnter, {{0, 0, "RECORD # 00001\nNAME      :Bob       :\nAGE       : 1.25:"},
                         {4, 0, "BIG       :1234:"}});
  Do(kMark + kMark + kMark + "\"Al\"" + kTab, {{1, 10, ":\"Al\"      :"}, {0, 32, "DELETED"}});
  Do("123.4", {{2, 10, ": 0.00:"}});  // the field is full; the number has no room
  Do(kUp + "99.99-" + kUp, {{3, 10, ":-:"}});
  // What was only passed by stays, even where it doesn't fit its own form.
  Do(kSave + "APPEND" + kEnter, {{0, 0, "RECORD # 00003"}, {4, 10, ":    :"}});
  Do("New" + kEnter + "x" + kEnter + "T", {{2, 10, ": 0.00:"}});
  Do("-10" + kEnter, {{23, 0, ". "}});
  EXPECT_EQ(Records(), "*\"Al\"      99.99-1234 Eve        2.50F 0.5 New        0.00T 0.0");
  Quit();
}

TEST_F(ScreenTest, RecordEditorScrollsAndTakesAnyWidth) {
  std::vector<Field> fields;
  for (int i = 1; i <= 31; ++i) fields.push_back({"F" + std::to_string(i), 'C', 1});
  fields.push_back({"WIDE", 'C', 254});
  const std::string record(31, 'a');
  Table(fields, {record + std::string(254, 'w')});
  Start({"USE p", "SET CONFIRM ON"});
  Do("EDIT 1" + kEnter, {{1, 0, "F1        :a:"}, {23, 0, "F23       :a:"}});
  Do(Repeat(kDown, 23), {{1, 0, "F24       :a:"}, {9, 0, "WIDE      :www"}});
  Do(kUp + Repeat(kDown, 9) + Repeat(kRight, 300) + "Z" + kSave, {{23, 0, ". "}});
  EXPECT_EQ(Records(), " " + record + std::string(253, 'w') + "Z");
  Quit();
}

TEST_F(ScreenTest, Browse) {
  std::vector<std::string> records;
  for (int i = 101; i <= 145; ++i)
    records.push_back("name" + std::to_string(i) + "   x" + std::to_string(i) + "w");
  Table({{"NAME", 'C', 10}, {"LONGNAME", 'C', 1}, {"N", 'N', 3}, {"W", 'C', 1}}, records);
  Start({"USE p"});
  Do("BROWSE" + kEnter, {{0, 0, "RECORD # :00001\nNAME------ L N-- W\nname101    x 101 w"},
                         {20, 0, "name119    x 119 w"}});
  EXPECT_EQ(screen_->Row(2, true), "name101___ x 101 w");
  Do(Repeat(kDown, 19), {{2, 0, "name120"}, {20, 0, "name138"}, {0, 10, "00020"}});
  Do(kUp, {{2, 0, "name115"}, {6, 0, "name119"}, {0, 10, "00019"}});
  EXPECT_EQ(screen_->Row(6, true), "name119___ x 119 w");
  // A row is written when it is left; abandoning drops the current row only.
  Do("\"a\"" + kDown + "lost" + kQuit, {{23, 0, ". "}});
  EXPECT_EQ(Records().substr(18 * 16, 32), " \"a\"e119   x119w name120   x120w");
  Do("GOTO 45 : BROWSE" + kEnter, {{2, 0, "name145    x 145 w"}, {3, 0, "     "}});
  Do(kDown + kPanRight + kPanRight, {{1, 0, "N-- W"}, {2, 0, "145 w"}});
  Do("9" + kPanLeft, {{2, 0, "x 145 w"}});  // a pan drops the row's edits
  Do(kPanRight + "1.5" + kMark, {{0, 32, "DELETED"}, {2, 0, "  2 w"}});
  Do(Repeat(kTab, 9) + kSave);
  Line("? #", "  45");
  EXPECT_EQ(Records().substr(44 * 16), "*name145   x145w");
  Quit();
}

TEST_F(ScreenTest, ModifyStructure) {
  Table({{"NAME", 'C', 10}, {"AGE", 'N', 5, 1}}, {"Bob         7.5"});
  const std::string before = Bytes("p.dbf");
  Start({"USE p", "MODIFY STRUCTURE"});
  EXPECT_TRUE(screen_->Prints("n", "RECORDS ... PROCEED? (Y/N) N"));
  Do("MODIFY STRUCTURE" + kEnter + "y",
     {{1, 10, " NAME      TYP LEN  DEC\n:NAME       C  010  000  :\n:AGE        N  005  001  :"},
      {23, 0, "FIELD 22  :                        :"}});
  Do(Repeat(kDown, 22), {{2, 0, "FIELD 09"}, {23, 0, "FIELD 30"}});
  Do(Repeat(kDown, 40), {{2, 0, "FIELD 17"}, {17, 0, "FIELD 32"}});
  Do("LOST" + kQuit, {{23, 0, ". "}});
  EXPECT_EQ(Bytes("p.dbf"), before);
  Do("MODIFY STRUCTURE" + kEnter + "Y" + kTab + kUp + kTab + kEnter + "bad x 1" + kDown + "flag l" +
         kDown + kDown + "dropped c 3" + kSave,
     {{22, 0, "BAD TYPE FIELD"}});
  Lines({"APPEND BLANK"});
  EXPECT_EQ(Records(), std::string(17, ' '));  // what stands behind a blank line has no room
  EXPECT_TRUE(screen_->Prints("DISPLAY STRUCTURE" + kEnter, "004     FLAG         L    001"));
  EXPECT_FALSE(fs::exists("p.dbf.new"));
  Quit();
}

TEST_F(ScreenTest, ProgramEditor) {
  std::string text;
  for (int i = 1; i <= 23; ++i) text += "line " + std::to_string(i) + "\n";
  const std::string seventy(70, 's'), wide(100, 'w');
  PutBytes("a.cmd", "one  \ntwo\n" + seventy + "\n" + wide + "\n\n \n");
  PutBytes("b.cmd", text);
  Start();
  Do("MODIFY COMMAND a" + kEnter,
     {{0, 18, "INSERT"}, {1, 0, "one"}, {4, 0, wide.substr(0, 80)}, {5, 0, "  "}});
  Do("X" + kRight + kInsert + "Y" + kInsert, {{1, 0, "XoY"}, {0, 18, "INSERT"}});
  Do(kRight + kRight + kDelete, {{1, 0, "XoYetwo"}, {2, 0, seventy}}, {{1, 4}});
  Do(kEnter + kEnter + kBack, {{1, 0, "XoYe"}, {2, 0, "   "}, {3, 0, "two"}});
  Do(kDown + Repeat(kRight, 79) + kDelete,
     {{4, 0, seventy}, {5, 0, wide.substr(0, 80)}});  // too long to join
  Do(kSave, {{23, 0, ". "}});
  EXPECT_EQ(Bytes("a.cmd"), "XoYe\n\ntwo\n" + seventy + "\n" + wide + "\n");
  Do("MODIFY COMMAND b" + kEnter + "lost" + kQuit, {{23, 0, ". "}});
  EXPECT_EQ(Bytes("b.cmd"), text);
  Do("MODIFY COMMAND b" + kEnter + Repeat(kDown, 22), {{23, 0, "line 23"}});
  Do(kDown + kDown + "end", {{1, 0, "line 9"}, {15, 0, "line 23"}, {17, 0, "end"}});
  Do(Repeat(kUp, 17), {{1, 0, "line 1"}, {8, 0, "line 8"}}, {{8, 3}});
  Do(kSave, {{23, 0, ". "}});
  EXPECT_EQ(Bytes("b.cmd"), text + "\nend\n");
  fs::create_directory("d.cmd");
  Do("MODIFY COMMAND d" + kEnter, {{22, 0, "CANNOT CREATE FILE d.cmd"}});
  Do("MODIFY COMMAND new.fmt" + kEnter + kDelete + "a" + kEnter + " b");
  fs::create_directory("new.fmt");
  Do(kSave, {{23, 0, "CANT SAVE FILE WAITING"}});
  fs::remove("new.fmt");
  Do(" " + kSave, {{23, 0, ". "}});
  EXPECT_EQ(Bytes("new.fmt"), "a\n b\n");
  Quit();
}

// What keys make of the record "Bob   1.25 0.5TAb-c" in the middle of three, as the help
// tells it; a picture blanks what it does not take as soon as its field is entered; "|" stands
// between statements. A form that hasn't ended takes the QUIT behind it.
TEST_F(ScreenTest, KeysAndWhatTheyLeave) {
  const std::string full = Repeat(kRight, 9), five = Repeat(kDown, 5), b = kDown, c = b + b,
                    read = "SET FORMAT TO f|GOTO 2|READ";
  const struct {
    std::string statements, keys, record;
  } rows[] = {
      {"EDIT 2", full + "Z9" + kSave, " Bob Z  9.00 0.5TAb-c"},
      {"EDIT 2", kBack + kRight + kRight + kBack + kLeft + kLeft + "x" + kSave,
       " xb     1.25 0.5TAb-c"},
      {"EDIT 2", kRight + kDelete + kDelete + kDown + kUp + "x" + kSave, " x      1.25 0.5TAb-c"},
      {"EDIT 2", kInsert + "x" + kInsert + "y" + kSave, " xyob   1.25 0.5TAb-c"},
      {"EDIT 2", "12345" + kEnter + "7" + kTab + "F" + "zzzz", " 12345  1.2570.5Fzzzz"},
      {"EDIT 2", kUp + kUp + "x" + five, " xob    1.25 0.5TAb-c"},
      {"SET CONFIRM ON|EDIT 2", "123456" + five + b + "zzzzz" + kSave, " 12345  1.25 0.5Tzzzz"},
      {"EDIT 2", kMark + "x" + kQuit, " Bob    1.25 0.5TAb-c"},
      {"EDIT 2", b + "1234.5" + "-9.9" + kSave, " Bob    0.00-9.9TAb-c"},
      {"EDIT 2", b + "999.99abc" + kDown + kUp + kSave, " Bob  999.99 0.0TAb-c"},
      {"DELETE RECORD 3|EDIT 2", kSave + "APPEND\r" + kQuit, " Bob    1.25 0.5TAb-c"},
      {read, "X" + b + "a1b2" + kSave, " Xob  121.00 0.5TAb-c"},
      {read, b + "99-9.9" + c + "t5" + kSave, " Bob   99.00 0.5t5b c"},
      {read, kUp + c + "12.5" + "5F" + "zZ" + kRight + "9y", " Bob    1.0012.5FZZ y"},
      {read, "X" + five + kUp + kQuit, " Xob    1.00 0.5TAb c"},
      {read, "X" + b + kQuit, " Bob    1.25 0.5TAb-c"},
      {"SET CONFIRM ON|" + read, five + b + kUp + "F" + kSave, " Bob    1.00 0.5FAb c"},
      {"GOTO 2|BROWSE", "x" + kUp + "y" + kQuit, " xob    1.25 0.5TAb-c"},
      {"GOTO 2|BROWSE", "x" + kTab + "7" + kDown + kUp + kQuit, " Bob    7.00 0.5TAb-c"},
      {"GOTO 2|BROWSE", kTab + "1234.5" + kTab + "9999" + kSave, " Bob    1.25 0.5TAb-c"},
      {"GOTO 2|BROWSE", kMark + kQuit, "*Bob    1.25 0.5TAb-c"},
      {"GOTO 2|BROWSE", kMark + kDown + kUp + kMark + "x" + kQuit, " Bob    1.25 0.5TAb-c"},
      {"SET CARRY ON|GOTO 1|BROWSE", kDown + kInsert + "x" + kDown + kUp + kInsert + "y" + kSave,
       " yBob   1.25 0.5TAb-c"},
  };
  PutBytes("f.fmt",
           "@ 0,0 GET A\n@ 1,0 GET B PICTURE \"99#9.9\"\n@ 2,0 GET C\n@ 3,0 GET D PICTURE \"A\"\n"
           "@ 4,0 GET E PICTURE \"!X-A\"\n");
  for (const auto& row : rows) {
    const std::string other = "Eve    2.00 1.0Fabcd";
    Table({{"A", 'C', 5}, {"B", 'N', 6, 2}, {"C", 'N', 4, 1}, {"D", 'L', 1}, {"E", 'C', 4}},
          {other, "Bob    1.25 0.5TAb-c", other});
    PutBytes("in", "SET SCREEN OFF\nUSE p\n" + mox::str_replace(row.statements, "|", "\n") + "\n" +
                       row.keys + "QUIT\n");
    EXPECT_EQ(RunProgram(MOX_PROGRAM, {}, ".", "."), "");
    EXPECT_EQ(Records().substr(21, 21), row.record) << row.statements << " " << &row - rows;
  }
}

// A larger window has room for more of a text and tells the keys in its 25th row, a smaller one is
// told of once; the colours of fields go with the statement.
TEST_F(ScreenTest, Windows) {
  struct {
    Cells rows, cols;
    std::pair<int, int> edge, cursor;
    std::string shown;
  } const cases[] = {{24, 80, {23, 79}, {3, 21}, "H"},
                     {30, 120, {23, 79}, {2, 101}, "HELLO"},
                     {20, 60, {19, 59}, {3, 41}, "H"}};
  PutBytes("a.cmd", "ERASE\n@ 30,100 SAY \"HELLO\"\n@ 2,0 GET V\n@ 3,0\n");
  PutBytes("b.cmd", std::string(100, 'b') + "\n");
  for (const auto& c : cases) {
    Table({{"A", 'C', 1}, {"W", 'C', 120}}, {std::string(121, 'w')});
    Start({"USE p", "STORE 1 TO V", "DO a"}, c.rows, c.cols);
    if (c.rows < 24) Do("", {{8, 0, "WINDOW OF 20 X 60: SCREENS NEED 24 X 80 WAITING"}});
    Do(c.rows < 24 ? " " : "", {{c.edge.first, c.edge.second, c.shown}, {2, 0, ":         1:"}});
    EXPECT_TRUE(screen_->Plain(3, 0));
    Do("EDIT 1" + kEnter + kDown + Repeat(kRight, 90), {}, c.cursor);
    EXPECT_EQ(screen_->All().find("\nCtrl-W saves, ") != std::string::npos, c.rows > 24);
    Do("X" + kSave, {{std::min(24, c.rows - 1), 0, "."}});
    EXPECT_TRUE(screen_->Plain(screen_->Cursor().first, 0));
    EXPECT_EQ(Records(), " " + std::string(91, 'w') + "X" + std::string(29, 'w'));
    Do("MODIFY COMMAND b" + kEnter);
    EXPECT_EQ(screen_->Row(1).size(), std::min<size_t>(c.cols, 100));
    Do(kQuit);
    Quit();
  }
}

// One key, whatever its bytes, and one letter, whatever its columns.
TEST_F(ScreenTest, KeysAndLettersOfSeveralBytes) {
  PutBytes("a.cmd", "ERASE\n@ 5,0 GET A\n@ 6,0 GET N\nREAD\nWAIT TO K\nACCEPT TO L\n");
  Start({"STORE \"\xc3\xa4\xe2\x82\xac\"+\"b  \" TO A", "STORE 123456789012 TO N", "DO a"});
  Do(Repeat(kRight, 5), {{5, 0, ":??b     :"}}, {{5, 3}});
  for (const char* key : {"\xc3\xa4", "\xe0\xa4\x85", "\x1bx", "\x1bOc", "\x1b[9~"})
    Do(key, {}, {{5, 3}});
  // Stars hide a number until it is typed over.
  Do("X" + kDown + "9" + kUp, {{6, 0, ":*************:"}});
  Do("\x1bOM" + kUp + kDown + "77" + kSave);
  Do("\xc3\xa4typed" + kEnter);
  Line("? A+K+L", " ??X   typed");
  Line("? N", "           77");
  Quit();
}

// Unsaved lines outlive the terminal, and those that outlived another one.
TEST_F(ScreenTest, HangUp) {
  PutBytes("a.cmd", "one\n");
  for (const std::string name : {"a.cmd.rescue", "a.cmd.rescue2"}) {
    Start();
    const bool again = fs::exists("a.cmd.rescue");
    const std::string told = again ? "UNSAVED LINES OF a.cmd ARE IN a.cmd.rescue WAITING" : "";
    Do("MODIFY COMMAND a" + kEnter, {{23, 0, told}});
    Do((again ? " new\x03" : "new\x03"), {{1, 0, "newone"}});
    screen_->HangUp();
    EXPECT_EQ(screen_->Ended(), 128 + SIGHUP);
    EXPECT_EQ(Bytes("a.cmd") + Bytes(name), "one\nnewone\n");
  }
}

TEST_F(ScreenTest, ExampleClub) {
  for (const auto& file : fs::directory_iterator(fs::path(MOX_ROOT) / "examples/club"))
    if (file.path().extension() != ".ndx" && file.path().filename() != "MEMBERS.dbf")
      fs::copy(file, ".");
  screen_ = std::make_unique<Screen>([] { execl(MOX_PROGRAM, MOX_PROGRAM, "CLUB", nullptr); });
  Do("", {{4, 20, "1  Add a member"}, {10, 20, "Your choice: :"}});
  Do("1", {{3, 10, "Name   :                    :"}});
  Do("Novak, Eva" + kEnter + "Praha" + kEnter + "202480.5" + kEnter + "T");
  Do("1Nobody" + kQuit, {{10, 20, "Your choice: :"}});
  Do("2Olsen" + kEnter, {{3, 10, "Name   :Olsen, Ruth"}});
  Do(kEnter + "Oslo  " + kEnter + kDown + "  90" + kSave);
  // Browse follows the index; a changed name takes its new place.
  Do("3", {{2, 0, "Aalto, Mika"}, {4, 0, "Novak, Eva"}});
  Do("Zaalto, Mi" + kDown, {{2, 0, "Zaalto, Mi"}});
  Do(kUp + kUp + kUp, {{2, 0, "Novak, Eva"}, {5, 0, "Zaalto, Mi"}});
  Do(kQuit + "4", {{1, 7, "Costa, Ines"},
                   {3, 7, "Olsen, Ruth          Oslo             1998   90.00 .T."},
                   {7, 1, "Fees    446.00\nPaid    290.50"}});
  Do(" 0");
  EXPECT_EQ(screen_->Ended(), 0);
  EXPECT_EQ(Bytes("MEMBERS.dbf")[1], 5);
}

}  // namespace
