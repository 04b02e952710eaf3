// Numbers as text and text as numbers: the one place for both, the same on every host.
//
// A number's text is made of blanks, a sign, decimal digits, one point and an exponent, whatever
// the locale. There is no text for an infinity or a not-a-number: a result beyond the range of a
// double prints as the largest one, and what is no number prints as 0.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace mox {

// The number at the start of a text: blanks, a sign, digits, one point, an exponent, and stops.
// 0 when no digits stand there. "INF", "NAN" and "0x10" read 0.
double TxtToDbl(std::string_view text);

// The integer at the start of a text: blanks, a sign, digits; 0 when none. Bounded to 32 bits.
int TxtToInt(std::string_view text);

// The number cut toward zero, bounded to 32 bits.
int DblToInt(double x);

// As the conversions "%*.*f" and "% *.*f" print: right-aligned in the width, wider when the
// digits need it; with a sign column a number that isn't negative begins with a blank.
std::string FmtFix(double x, int width, int decimals);
std::string FmtFixSigned(double x, int width, int decimals);

// The length of FmtFix(x, width, decimals), for a width that isn't negative.
size_t FixLength(double x, int width, int decimals);

// As "% .*e" prints, sign column included, but with at least three digits of exponent:
// FmtSci(12.5, 15) is " 1.250000000000000e+001".
std::string FmtSci(double x, int decimals);

// True when FmtSci(x, 15) surely reads as x again: a number of at most 15 digits and 9 decimals.
// Of other numbers the text may read as the neighbour.
bool ReadsBack(double x);

// The 6-byte decimal form of a number, used in memory files and numeric index keys:
//
//   byte 0     bit 7: 1 for a negative number; bits 6 to 0: decimal exponent plus 64
//   bytes 1-5  ten digits, two to a byte, the high nibble first; the point follows the first digit
//
// Zero has the exponent byte 64 and ten zero digits. Ten significant digits survive: the eleventh
// is rounded to and then dropped. An exponent outside -64 to 63 doesn't survive the form.
using Bcd6 = std::array<unsigned char, 6>;
Bcd6 d2bcd6(double x);
double bcd2d6(const Bcd6& form);

}  // namespace mox
