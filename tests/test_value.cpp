// Values of the operand stack: what a value knows is what its text reads as.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <random>

#include "session/misc.h"
#include "session/number.h"
#include "session/value.h"

namespace mox {

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
