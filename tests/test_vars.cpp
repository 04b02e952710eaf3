// The table of memory variables.
#include <gtest/gtest.h>

#include "vars/vars.h"

namespace mox {

TEST(Vars, StoreAndFetch) {
  VarClear();
  EXPECT_EQ(VarPutS2("X", 0, 1, "a"), varNoArray);
  EXPECT_EQ(VarPut("X.Y", "a"), varDotted);
  EXPECT_EQ(VarPutS2("X", 0, 0, "abc"), 0);
  EXPECT_EQ(VarPutS2("X", -1, 0, "a"), varNoElement);
  EXPECT_EQ(VarPut("X", VarGet("X").text().substr(1)), 0);
  EXPECT_EQ(VarGet("X").text(), "bc");
  EXPECT_EQ(VarDim("X", 2, 3), varNoArray);
  ASSERT_EQ(VarDim("ARR", 2, 3), 1);
  for (int i = 0; i < 6; ++i) EXPECT_EQ(VarPutI2(1, i / 3, i % 3, std::to_string(i)), 0);
  EXPECT_EQ(VarGetI2(1, 1, 0).text(), "3");
  EXPECT_EQ(VarGetI2(1, 0, 3).text(), "");
  EXPECT_EQ(VarSetProp(1, maxProps, 1), -1);
}

TEST(Vars, HundredAtMostAndPatterns) {
  VarClear();
  for (int i = 0; i < maxVars; ++i) EXPECT_EQ(VarPut("V" + std::to_string(i), "x"), 0);
  EXPECT_EQ(VarPut("MORE", "x"), varFull);
  EXPECT_EQ(VarPut("V99", "y"), 0);
  VarDelExcept("V9?");  // the tail fits nothing as well: V9 stays
  EXPECT_EQ(VarCount(), 11);
  EXPECT_EQ(*VarName(1), "V90");
  VarDel("*");
  EXPECT_EQ(VarCount(), 0);
  for (const char* fits : {"AB", "AB??", "A*Z", "?B", "*", "AB*?"}) EXPECT_TRUE(IsLike("AB", fits));
  for (const char* not_ : {"", "A", "?", "ab", "AB*Z"}) EXPECT_FALSE(IsLike("AB", not_)) << not_;
}

}  // namespace mox
