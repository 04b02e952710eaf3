// Text and number helpers, and text files.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "session/files.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/strreplace.h"
#include "temp_dir.h"

namespace mox {

TEST(Misc, QuotingCuttingAndNames) {
  for (const char* text : {"", "\"", "\"\"", "a\"b", "\"a\"\""}) EXPECT_EQ(qs2s(s2qs(text)), text);
  EXPECT_EQ(qs2s("\"a\"b\""), "a");
  EXPECT_EQ(qs2s("\""), "");
  EXPECT_EQ(split("a,,b,", ","), (Lines{"a", "", "b", ""}));
  EXPECT_EQ(str_replace("aaa", "aa", "aaaa"), "aaaaa");
  EXPECT_EQ(StrFmt("%0300d", 7).size(), 300u);
  EXPECT_EQ(FnExtDflt("a.b/c\\d", ".DBF"), "a.b/c\\d.DBF");
  EXPECT_EQ(FnExtDflt("a/b.c\\d", ".DBF"), "a/b.c\\d");
  EXPECT_EQ(FnExtDflt("a.b\\c", ".DBF"), "a.b\\c.DBF");
}

TEST(Number, Reading) {
  const double big = std::numeric_limits<double>::max();
  const std::pair<std::string, double> cases[] = {
      {"", 0},          {" \v\f+.5", .5},
      {"5.", 5},        {"1.2.3", 1.2},
      {"-2e", -2},      {"1e+2x", 100},
      {"NANCY", 0},     {"inf", 0},
      {"0x10", 0},      {"+-1", 0},
      {".", 0},         {"1e999", big},
      {"0e999", 0},     {"0.0001e400", big},
      {"-1e999", -big}, {"- 1", 0},
      {"1e-999", 0},    {"1e-999999999999999999999", 0}};
  for (const auto& [text, number] : cases) EXPECT_EQ(TxtToDbl(text), number) << text;
  EXPECT_EQ(TxtToDbl(std::string(400, '9')), big);
  EXPECT_EQ(TxtToDbl("." + std::string(400, '0') + "1"), 0);
  EXPECT_EQ(TxtToInt("99999999999999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(TxtToInt("-2147483649"), std::numeric_limits<int>::min());
  EXPECT_EQ(DblToInt(-1e300), std::numeric_limits<int>::min());
}

TEST(Number, PrintsLikePrintf) {
  for (const double x : {0., -0., -2.5, 0.5, 1e22, -9.995, 1e308, 5e-324}) {
    for (const int decimals : {0, 2, 60}) {
      EXPECT_EQ(FmtFix(x, 12, decimals), StrFmt("%*.*f", 12, decimals, x));
      EXPECT_EQ(FmtFixSigned(x, -12, decimals), StrFmt("% *.*f", -12, decimals, x));
    }
  }
  EXPECT_EQ(FmtSci(12.5, 15), " 1.250000000000000e+001");
  EXPECT_EQ(FmtSci(-1e-300, 0), "-1e-300");
  EXPECT_EQ(FmtSci(HUGE_VAL, 3), " 1.798e+308");
  EXPECT_EQ(FmtFix(NAN, 4, 1), " 0.0");
}

TEST(Number, SixByteForm) {
  EXPECT_EQ(d2bcd6(12.5), (Bcd6{0x41, 0x12, 0x50, 0, 0, 0}));
  EXPECT_EQ(d2bcd6(-12.5), (Bcd6{0xC1, 0x12, 0x50, 0, 0, 0}));
  EXPECT_EQ(d2bcd6(0), (Bcd6{0x40, 0, 0, 0, 0, 0}));
  EXPECT_EQ(bcd2d6(d2bcd6(1.2345678906)), 1.234567890);
  for (const double x : {-0.001, 9999999999., 1e63, -1e-64}) EXPECT_EQ(bcd2d6(d2bcd6(x)), x);
  EXPECT_TRUE(std::isfinite(bcd2d6(d2bcd6(1e300))));
  EXPECT_TRUE(std::isfinite(bcd2d6({0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF})));
}

TEST(Files, LinesOfTextFiles) {
  const TempDir dir;
  const std::string full(maxLine, 'x'), most(maxLine - 1, 'y');
  const std::pair<std::string, Lines> cases[] = {
      {"a\r\nb\n\nc", {"a", "b", "", "c"}}, {"a\rb\r\r\n", {"a\rb"}},
      {"a\nb\x1Az\n", {"a", "b"}},          {{"a\0b\nc", 5}, {"a", "c"}},
      {full + "z\n", {full, "z"}},          {"\xEF\xBB\xBF" + full + "z\n", {full, "z"}},
      {"\xEF\xBBz", {"\xEF\xBBz"}},         {full + "\r\nz", {full, "", "z"}},
      {most + "\r\nz", {most, "z"}}};
  std::string blocks;  // a line end over two of them, of 64 KiB
  while (blocks.size() < 65535) blocks += std::string(62, 'x') + "\n";
  blocks.resize(65535);
  PutBytes("t", blocks + "\r\nz");
  const Lines ends = ReadLines("t").value();
  EXPECT_EQ(ends[ends.size() - 2] + "|" + ends.back(), std::string(65535 % 63, 'x') + "|z");
  for (const auto& [bytes, lines] : cases) {
    PutBytes("t", bytes);
    EXPECT_EQ(ReadLines("t"), lines) << bytes;
  }
  EXPECT_FALSE(ReadLines("."));
}

}  // namespace mox
