// Texts, numbers and values, and text files.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include "session/files.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/value.h"
#include "store/dbf.h"
#include "temp_dir.h"

namespace mox {

TEST(Misc, QuotingAndNames) {
  for (const char* text : {"", "\"", "\"\"", "a\"b", "\"a\"\""}) EXPECT_EQ(qs2s(s2qs(text)), text);
  EXPECT_EQ(qs2s("\"a\"b\"") + qs2s("\""), "a");
  EXPECT_EQ(FnExtDflt("a.b/c\\d", ".DBF") + FnExtDflt("a/b.c\\d", ".DBF"), "a.b/c\\d.DBFa/b.c\\d");
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
  for (const double x : {0., -0., -2.5, 0.5, 1e22, -9.995, 1e308, 5e-324})
    for (const int decimals : {0, 2, 60})
      EXPECT_EQ(FmtFix(x, 12, decimals) + FmtFixSigned(x, -12, decimals),
                StrFmt("%*.*f% *.*f", 12, decimals, x, -12, decimals, x));
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

// A number that stands in a text as its field prints it isn't read first: nobody may see that.
TEST(Number, InFields) {
  const TempDir dir;
  std::mt19937 random{7};
  DbfTable t;
  ASSERT_EQ(0, dbfCreate(t, "N"));
  const int widths[] = {6, 8, 20, 20}, decimals[] = {0, 2, 15, 17};
  for (int i = 0; i < 4; ++i) dbfFld(t, i + 1, "F", 'N', widths[i], decimals[i]);
  for (int turn = 0; turn < 20000; ++turn) {
    std::string text;
    for (unsigned n = random() % 12; n > 0; --n) text += "  -+..00129e"[random() % 12];
    if (turn % 2) text = FmtFix(static_cast<double>(random() % 2001) - 1000, 9, random() % 18);
    for (int i = 0; i < 4; ++i) {
      fldput(t, i, text);
      std::string stored = FmtFix(TxtToDbl(text), widths[i], decimals[i]);
      stored.resize(static_cast<size_t>(widths[i]), ' ');
      ASSERT_EQ(stored, fldget(t, i)) << text;
    }
  }
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

// Values of the operand stack: what a value knows is what its text reads as.

namespace {

// A value read from its text alone is the same in every way that shows.
void ExpectAsRead(const Value& value) {
  const std::string text = Value(value).text();  // of a copy: the value itself makes none
  const Value read(text);
  const double x = value.number(), asRead = TxtToDbl(text);
  EXPECT_TRUE(x == asRead && std::signbit(x) == std::signbit(asRead)) << text;
  EXPECT_EQ(value.holds(), TxtToInt(text) != 0) << text;
  const auto shown = [](const Typ& typ, const Value& v) {
    return StrFmt("%c%d.%d %d ", typ.type, typ.length, typ.decimals, L_FmVTLD(v)) + fmtExpr(v);
  };
  EXPECT_EQ(shown(value.typ(), value), shown(GetTyp(text), read)) << text;
}

// Numbers of every kind that a session meets.
double Any(std::mt19937_64& random) {
  const double whole = random() >> 20, small = random() % 9;
  switch (random() % 6) {
    case 0: return std::bit_cast<double>(random());
    case 1: return static_cast<double>(random() % 2000) - 1000;
    case 2: return (whole - 1e13) / std::pow(10, random() % 15);
    case 3: return whole / static_cast<double>(random() % 1000 + 1);
    case 4: return std::pow(10, random() % 17) - std::pow(10, -small);
    default: return std::nextafter(static_cast<double>(random() % 100000) / 1000, 0);
  }
}

}  // namespace

TEST(Value, KnowsWhatItsTextReadsAs) {
  std::mt19937_64 random{1};
  for (int i = 0; i < 20000; ++i) {
    const double x = Any(random);
    const auto decimals = static_cast<int>(random() % 12);
    const Value value = N_ToVTLD(x, i % 2 ? 10 : -1, decimals);
    ASSERT_EQ(Value(value).text().substr(0, Value(value).text().find(',')), FmtSci(x, 15));
    ExpectAsRead(value);
    ExpectAsRead(Value::ofDigits(FmtFix(x, 12, decimals), 12, decimals));
    EXPECT_EQ(FixLength(x, 9, decimals),
              StrFmt("%*.*f", 9, decimals, std::isfinite(x) ? x : 0).size())
        << x << ' ' << decimals;
    if (HasFailure()) return;
  }
  // Its text reads as the number's neighbour.
  const double neighbour = 0.00001 * 0.000001;
  EXPECT_NE(N_ToVTLD(neighbour, 9, 2).number(), neighbour);
  EXPECT_EQ(N_ToVTLD(neighbour, 9, 2).text(), FmtSci(neighbour, 15) + ",N,9,2");
  for (const double x : {0., -0., 0.5, -0.5, 1e15, 5e-324, HUGE_VAL})
    ExpectAsRead(N_ToVTLD(x, 5, 1));
}

TEST(Value, DigitsStayAsTheyAre) {
  for (const char* digits :
       {"", "5", "-5", "-0", "-0.00", "007", "  12.50", "1E3", ".5", "0.9", "YES",
        "123456789012345", "1234567890123456", "999999999999999999999"}) {
    const Value value = Value::ofDigits(digits, 6, 2);
    EXPECT_EQ(Value(value).text(), std::string(digits) + ",N,6,2");
    ExpectAsRead(value);
  }
  // A damaged field's text means what it meant.
  EXPECT_EQ(Value::ofDigits("1,2", 5, 0).text(), "1,2,N,5,0");
  EXPECT_EQ(Value::ofDigits("\"1", 5, 0).typ().type, 'C');
  for (const bool truth : {false, true}) ExpectAsRead(L_ToVTLD(truth));
  for (const int n : {0, -1, 99999}) ExpectAsRead(Value::ofCount(n));
  for (const char* bare : {"Y", "n", "2", " 2.5 ", "NAME", ""}) ExpectAsRead(Value(bare));
}

}  // namespace mox
