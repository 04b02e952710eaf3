// What no person types: the program ends with status 0, silent on its error stream.
#include <gtest/gtest.h>

#include "session/misc.h"
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
  PutBytes("in", "");
  EXPECT_EQ(RunProgram(MOX_PROGRAM, {"--help"}, "dir", "."), "");
  EXPECT_TRUE(Bytes("out").starts_with("Usage: mox [FILE]\n"));
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
  for (size_t length = 0; length <= session.size(); length += 7) Type(session.substr(0, length));
}

// Each statement that needs a table says so, and does nothing.
TEST_F(Hostile, NoTableInUse) {
  const mox::Lines statements = mox::split(
      "APPEND|APPEND BLANK|APPEND FROM f|APPEND FROM f SDF|BROWSE|COPY TO x|COPY TO x SDF|"
      "COPY TO x STRUCTURE|COUNT|DELETE|DISPLAY|DISPLAY STRUCTURE|EDIT|FIND 1|GO TOP|"
      "INDEX ON 1 TO x|JOIN TO x FOR T|LIST|LOCATE|MODIFY STRUCTURE|PACK|RECALL|REINDEX|"
      "REPLACE A WITH 1|SET INDEX TO x|SKIP|SORT ON A TO x|SUM 1|TOTAL TO x ON A|"
      "UPDATE FROM f ON A|? EOF|? *|? #|5",
      "|");
  std::string typed, told = ". ";
  for (const std::string& s : statements) {
    typed += s + '\n';
    told += "NO DATABASE FILE IN USE \n. ";
  }
  PutBytes("dir/f.txt", "a\n");
  EXPECT_EQ(Type(typed), told + '\n');
  EXPECT_EQ(std::distance(fs::directory_iterator("dir"), {}), 1);
}

// The last that is allowed of each limit, and the first beyond it.
TEST_F(Hostile, Limits) {
  const auto ends = [](const std::string& input, const std::string& output) {
    const std::string out = Type(input);
    EXPECT_TRUE(out.ends_with(output + ". \n")) << input << out.substr(out.size() / 2);
  };
  const auto each = [](int n, const std::string& before, const std::string& behind) {
    std::string all;
    for (int i = 1; i <= n; ++i) all += before + std::to_string(i) + behind;
    return all;
  };
  // Words and signs of a statement, its continued lines included; blocks; files in files; macros.
  PutBytes("dir/a.cmd", "? 1" + Times(48, "+1") + ";\n+1\n");
  PutBytes("dir/b.cmd", "? 1" + Times(48, "+1") + ";\n+-1\n");
  ends("DO a\n", ".   50 \n");
  ends("DO b\n", "*** SYNTAX ERROR *** \nLINE 2: +-1\n");
  ends(Times(20, "IF T\n") + "? 7\n" + Times(20, "ENDIF\n"), ">   7 \n");
  ends(Times(21, "IF T\n"), "*** SYNTAX ERROR *** nesting error - too deep\nLINE 21: IF T\n");
  PutBytes("dir/deep.cmd", "STORE N+1 TO N\nIF N<L THEN DO deep\nSTORE M+1 TO M\n");
  const std::string deep = "SET TALK OFF\nSTORE 0 TO N : STORE 0 TO M : STORE ";
  ends(deep + "100 TO L : DO deep\n? M\n", ".         100 \n");
  ends(deep + "101 TO L : DO deep\n? M\n", ". NESTING LIMIT VIOLATION EXCEEDED \n.           0 \n");
  ends("STORE STR(1,99)+STR(2,99) TO X : STORE \"X\" TO Y : ? LEN(&Y)\n", "\nX\n  198 \n");
  ends("STORE STR(1,99)+STR(2,100) TO X : STORE X+\"!\" TO X\nSTORE \"X\" TO Y\n? LEN(&Y)\n",
       "  199 \n");
  ends("? LEN(STR(1,128))\n? STR(1,129)\n", "  128 \n. ARG ERROR STR() too wide\n");
  // Variables; fields and their widths.
  const std::string vars = "SET TALK OFF\n" + each(100, "STORE 1 TO V", "\n");
  ends(vars + "STORE 2 TO V100\n? V100\n", ".           2 \n");
  ends(vars + "STORE 1 TO MORE\n", ". TOO MANY MEMORY VARIABLES \n");
  ends("CREATE T\n" + each(32, "F", ",C,1\n") +
           "USE T : APPEND BLANK : REPLACE F32 WITH \"x\" : DISPLAY\n",
       ". 00001" + Times(32, "  ") + "x \n");
  ends("CREATE W\nN,C,1\nW,C,100\nX,C,101\nL,C,254\nM,C,255\nM,C,0\n\nUSE W : APPEND BLANK : ? 1\n",
       " 005     BAD WIDTH FIELD\n 005     BAD WIDTH FIELD\n 005     .   1 \n");
  // Keys, their expressions, and indexes of a table.
  const std::string use = "SET TALK OFF\nUSE W\n";
  const auto left = [](size_t n) { return "+LEFT(\"" + std::string(n, 'x') + "\",0)"; };
  ends(use +
           "REPLACE W WITH STR(1,100) : INDEX ON W TO W : SET INDEX TO W : FIND STR(1,100) : ? #\n",
       ".   1 \n");
  ends(use + "INDEX ON X TO X\n", ". INDEX KEY IS TOO LONG X\n");
  ends(use + "INDEX ON N TO N\nSET INDEX TO " + Times(6, "N,") + "N : ? 7\n", ".   7 \n");
  ends(use + "SET INDEX TO " + Times(7, "N,") + "N\n", ". INDEX FILE CANNOT BE OPENED \n");
  const std::string parts = Times(4, left(100) + " ;\n");  // a line takes no whole key
  PutBytes("dir/k.cmd", "INDEX ON N" + parts + left(45) + " TO K\n");
  PutBytes("dir/l.cmd", "INDEX ON N" + parts + left(46) + " TO K\n");
  ends(use + "DO k\nSET INDEX TO K : ? 1\n", ". .   1 \n");
  ends(use + "DO l\n",
       ". INDEX KEY EXPRESSION IS TOO LONG N" + Times(4, left(100)) + left(46) + "\n");
  // Fields of a form, steps of a condition, bytes of a text line.
  PutBytes("dir/get.cmd",
           "STORE 0 TO I\nDO WHILE I<64\n@ 1,1 GET V\nSTORE I+1 TO I\nENDDO\nREAD\n");
  ends("SET SCREEN OFF\nSET TALK OFF\nSTORE \"x\" TO V\nDO get\n" + Times(63, "k") + "? 7\n",
       ".   7 \n");
  ends(use + "COUNT FOR N=1" + Times(6, " .OR. N=1") + " TO C : ? C\n", ".           0 \n");
  ends(use + "COUNT FOR N=1" + Times(7, " .OR. N=1") + " TO C : ? C\n", ". OUT OF MEMORY \n");
  for (int n : {1000, 1001}) {
    PutBytes("dir/L.txt", std::string(static_cast<size_t>(n), 'a') + "\nb\n");
    ends(use + "COPY TO E STRUCTURE : USE E : SET TALK ON : APPEND FROM L SDF\n",
         n == 1000 ? ". 00002 RECORD(S) ADDED\n" : ". 00003 RECORD(S) ADDED\n");
  }
}

}  // namespace
