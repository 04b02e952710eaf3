// What no person types: the program takes any input and ends with status 0, silent on its error
// stream.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "session_run.h"
#include "temp_dir.h"

namespace {

struct Hostile : testing::Test {
  TempDir folder;
  Hostile() { fs::create_directory("dir"); }

  // What the program prints behind the banner, when the input is typed at it.
  static std::string Type(const std::string& input) {
    PutBytes("in", input);
    EXPECT_EQ(RunProgram(MOX_PROGRAM, {}, "dir", ".") + Bytes("err"), "") << input.substr(0, 200);
    const std::string out = Bytes("out");
    return out.substr(std::min(out.find(". "), out.size()));
  }
};

std::string Times(int n, const std::string& text) {
  std::string all;
  while (n-- > 0) all += text;
  return all;
}

TEST_F(Hostile, LongLinesAndBlocks) {
  // 10,000 characters come as lines of 131; a block takes 1,000.
  EXPECT_EQ(Type("*" + std::string(10000, 'x') + "\n").find(". *** SYNTAX ERROR"), 2u);
  EXPECT_NE(Type("?? \"" + std::string(10000, 'x')).find("LINE 1: xxx"), std::string::npos);
  const std::string block = Type("IF T\n" + Times(1998, "\n") + "ENDIF\n? 7\n");
  EXPECT_NE(block.find("> BLOCK TOO LONG \n. . "), std::string::npos);
  EXPECT_TRUE(block.ends_with(". *** SYNTAX ERROR *** nesting error\nLINE 1: ENDIF\n.   7 \n. \n"));
  EXPECT_TRUE(Type("IF T\n" + Times(997, "\n") + "? 7\nENDIF\n").ends_with(">   7 \n. \n"));
}

TEST_F(Hostile, TheInputEndsAnywhere) {
  const std::string session =
      "CREATE t\nA,C,3\n\nUSE t\nAPPEND BLANK\nDISPLAY STATUS\n IF T\nTEXT\n?\nENDTEXT\nENDIF\n"
      "SET STEP ON\nDO f\nyn? 1\nDO WHILE F\n? ;\nENDDO\n;? \"\n";
  PutBytes("dir/f.cmd", "? 1\n? 2\n? 3\n");
  for (size_t length = 0; length <= session.size(); length += 3) Type(session.substr(0, length));
}

// Each statement that needs a table says so, and does nothing.
TEST_F(Hostile, NoTableInUse) {
  std::istringstream statements(
      "APPEND|APPEND BLANK|APPEND FROM f|APPEND FROM f SDF|BROWSE|COPY TO x|COPY TO x SDF|"
      "COPY TO x STRUCTURE|COUNT|DELETE|DISPLAY|DISPLAY STRUCTURE|EDIT|FIND 1|GO TOP|INDEX ON 1 TO "
      "x|"
      "JOIN TO x FOR T|LIST|LOCATE|MODIFY STRUCTURE|PACK|RECALL|REINDEX|REPLACE A WITH 1|"
      "SET INDEX TO x|SKIP|SORT ON A TO x|SUM 1|TOTAL TO x ON A|UPDATE FROM f ON A|? EOF|? *|? "
      "#|5");
  std::string typed, told = ". ";
  for (std::string statement; std::getline(statements, statement, '|');) {
    typed += statement + '\n';
    told += "NO DATABASE FILE IN USE \n. ";
  }
  PutBytes("dir/f.txt", "a\n");
  EXPECT_EQ(Type(typed), told + '\n');
  EXPECT_EQ(std::distance(fs::directory_iterator("dir"), {}), 1);
}

}  // namespace
