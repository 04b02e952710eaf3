// The functions of texts, and those between texts and numbers.
//
// A text argument isn't tested: a number that stands for one is taken as its stack text.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "run/handlers.h"
#include "run/run_func.h"
#include "session/error.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/value.h"

namespace mox {

namespace {

constexpr int countLength = 3;  // of the result of a function that counts bytes
constexpr int maxStrWidth = 128;
constexpr int maxColor = 255;

// At most n bytes of the text from position p on, which counts from 1.
std::string _mid(std::string_view text, int64_t p, int64_t n) {
  const auto length = static_cast<int64_t>(text.size());
  const int64_t offset = p < 1 ? 0 : p > length ? length : p - 1;
  return std::string(text.substr(static_cast<size_t>(offset),
                                 static_cast<size_t>(std::clamp<int64_t>(n, 0, length))));
}

// Position of the first needle in hay, from 1 on, or 0. Linear in time also for megabytes in which
// the needle nearly fits everywhere.
size_t _find(std::string_view hay, std::string_view needle) {
  // border[i]: length of the longest text that both begins and ends the first i + 1 bytes, less
  // than all of them.
  std::vector<size_t> border(needle.size());
  for (size_t i = 1, n = 0; i < needle.size(); ++i) {
    while (n > 0 && needle[i] != needle[n]) n = border[n - 1];
    if (needle[i] == needle[n]) ++n;
    border[i] = n;
  }
  size_t fits = 0;
  for (size_t i = 0; i < hay.size() && fits < needle.size(); ++i) {
    while (fits > 0 && hay[i] != needle[fits]) fits = border[fits - 1];
    if (hay[i] == needle[fits]) ++fits;
    if (fits == needle.size()) return i + 2 - fits;
  }
  return needle.empty();
}

// The escape sequence that sets a color; 8 and above are the bright ones.
std::string EscColor(int base, int color) {
  return StrFmt("\033[%d%sm", base + color % 8, color >= 8 ? ";1" : "");
}

}  // namespace

int OpLen(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "LEN(str)");
  if (!arg) return 0;
  arg[0] = N_ToVTLD(static_cast<double>(qs2s(arg[0]).size()), countLength, 0);
  return -1;
}

int OpMid(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 3, 3, "MID(str,start,len)");
  if (!arg) return 0;
  arg[0] = s2qs(_mid(qs2s(arg[0]), StackInt(arg[1]), StackInt(arg[2])));
  return -3;
}

int OpLeft(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 2, 2, "LEFT(str,len)");
  if (!arg) return 0;
  arg[0] = s2qs(_mid(qs2s(arg[0]), 1, StackInt(arg[1])));
  return -2;
}

int OpRight(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 2, 2, "RIGHT(str,len)");
  if (!arg) return 0;
  const std::string text = qs2s(arg[0]);
  const int64_t n = StackInt(arg[1]);
  arg[0] = s2qs(_mid(text, static_cast<int64_t>(text.size()) + 1 - n, n));
  return -2;
}

int OpInStr(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 2, 2, "INSTR(hay,needle)");
  if (!arg) return 0;
  arg[0] = N_ToVTLD(static_cast<double>(_find(qs2s(arg[0]), qs2s(arg[1]))), countLength, 0);
  return -2;
}

int OpTrim(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "TRIM(str)");
  if (!arg) return 0;
  std::string text = qs2s(arg[0]);
  arg[0] = s2qs(dlb(trim(text)));
  return -1;
}

// Both change the argument where it stands, quotes, or the letters of a number's text, and all.
int OpUCase(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "UCASE(str)");
  if (!arg) return 0;
  for (char& c : arg[0]) c = UpperChr(c);
  return -1;
}

int OpLCase(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "LCASE(str)");
  if (!arg) return 0;
  for (char& c : arg[0]) c = LowerChr(c);
  return -1;
}

int OpChr(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "CHR(n)");
  if (!arg) return 0;
  const char c = static_cast<char>(StackInt(arg[0]) & 0xFF);
  arg[0] = s2qs(c ? std::string(1, c) : "");
  return -1;
}

int OpAsc(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "ASC(str)");
  if (!arg) return 0;
  const std::string text = qs2s(arg[0]);
  const int code = text.empty() ? 0 : static_cast<unsigned char>(text[0]);
  arg[0] = N_ToVTLD(code, countLength, 0);
  return -1;
}

int OpVal(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "VAL(str)");
  if (!arg) return 0;
  const std::string text = qs2s(arg[0]);
  const Typ typ = GetTyp(text);
  arg[0] = typ.type == 'N' ? N_ToVTLD(TxtToDbl(text), typ.length, typ.decimals) : N_ToVTLD(0, 2, 0);
  return -1;
}

int OpStr(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 3, "STR(n[,width[,dec]])");
  if (!arg) return 0;
  const int count = ArgCount(depth, stk);
  const int width = count >= 2 ? StackInt(arg[1]) : 6;
  const int decimals = count >= 3 ? StackInt(arg[2]) : 0;
  // A negative width sets the number to the left.
  if (width > maxStrWidth || width < -maxStrWidth || decimals > maxStrWidth) {
    ArgErr("STR() too wide");
    return 0;
  }
  std::string_view number = arg[0];
  if (!number.empty() && number[0] == '"') number.remove_prefix(1);
  arg[0] = s2qs(FmtFix(TxtToDbl(number), width, decimals));
  return -count;
}

int OpColor(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "COLOR(n)");
  if (!arg) return 0;
  const int color = std::min(StackInt(arg[0]), maxColor);
  arg[0] = s2qs(color < 0 ? EscColor(0, 0) : EscColor(40, color >> 4) + EscColor(30, color & 15));
  return -1;
}

int OpDate(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 0, 0, "DATE()");
  if (!arg) return 0;
  arg[0] = s2qs(DateNow());
  return 0;
}

}  // namespace mox
