// The forms of a value on the operand stack. Values are texts from end to end.
//
//   quoted string  "abc"            a character value, inner quotes doubled
//   VTLD           12.50,N,5,2      a number: value text, type N, display length, decimals
//                  -1,L,1,0         true; 0,L,1,0 is false
//   bare text      2                a count, a name, a source text: no comma, no leading quote
//
// The value text of a number is whatever reads as a number; it isn't normalised. Length and
// decimals are for display and for the width rules of the operators only.
#pragma once

#include <string>
#include <string_view>

namespace mox {

inline constexpr std::string_view valTrue = "-1,L,1,0";
inline constexpr std::string_view valFalse = "0,L,1,0";

struct Typ {
  char type = 'N';  // C, N or L; or whatever letter stands in a VTLD tail
  int length = 0;
  int decimals = 0;
  int bare = 0;  // -1 for a bare true (Y, y, T, t), -2 for a bare false (N, n, F, f), else 0
};

// Reads the type of a value. A comma that doesn't begin ",letter,length,decimals" is an internal
// error. A bare text is a logical when it is one of the letters, and else a number.
Typ GetTyp(std::string_view text);

// The value with this type information, the length bounded to 1 to 254 and the decimals to less
// than it. A quoted string stays as it is.
std::string SetTyp(std::string_view text, char type, int length, int decimals);

// The number of a value; one of another type is a syntax error and still gives what it reads as.
double N_FmVTLD(std::string_view text, int& length, int& decimals);
// A number as a value. A negative length is worked out: that of the printed number with its sign
// column, one less for 0, and one more without decimals.
std::string N_ToVTLD(double x, int length, int decimals);

// The number on the stack, cut toward zero and bounded to 32 bits.
int StackInt(std::string_view text);

bool L_FmVTLD(std::string_view text);  // truth, as the logical operators see it
std::string L_ToVTLD(bool truth);

// The value as the user sees it.
std::string fmtExpr(std::string_view text);

}  // namespace mox
