// The functions of texts, and those between texts and numbers.
//
// A text argument isn't tested: a number that stands for one is taken as its stack text.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "run/handlers.h"
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
  constexpr size_t small = 65536;
  if (hay.size() < small / (needle.size() + 1)) return hay.find(needle) + 1;  // npos + 1 is 0
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

// Changes the argument as it stands, quotes, or the letters of a number's text, and all.
void _mapText(Operands& o, char (*map)(char)) {
  const Value& v = o.value();
  std::string room;
  std::string text(v.isContent() ? v.content(room) : v.text());
  for (char& c : text) c = map(c);
  o.result(v.isContent() ? Value::ofContent(std::move(text)) : Value(std::move(text)));
}

// The escape sequence that sets a color; 8 and above are the bright ones.
std::string EscColor(int base, int color) {
  return StrFmt("\033[%d%sm", base + color % 8, color >= 8 ? ";1" : "");
}

}  // namespace

void OpLen(Operands& o) {
  o.result(N_ToVTLD(static_cast<double>(o.content().size()), countLength, 0));
}

void OpMid(Operands& o) {
  const std::string_view text = o.content();
  const int start = o.integer(), length = o.integer();
  o.result(Value::ofContent(_mid(text, start, length)));
}

void OpLeft(Operands& o) {
  const std::string_view text = o.content();
  o.result(Value::ofContent(_mid(text, 1, o.integer())));
}

void OpRight(Operands& o) {
  const std::string_view text = o.content();
  const int64_t n = o.integer();
  o.result(Value::ofContent(_mid(text, static_cast<int64_t>(text.size()) + 1 - n, n)));
}

void OpInStr(Operands& o) {
  const std::string_view hay = o.content(), needle = o.content();
  o.result(N_ToVTLD(static_cast<double>(_find(hay, needle)), countLength, 0));
}

void OpTrim(Operands& o) {
  std::string text(o.content());
  o.result(Value::ofContent(std::string(dlb(trim(text)))));
}

void OpUCase(Operands& o) { _mapText(o, UpperChr); }

void OpLCase(Operands& o) { _mapText(o, LowerChr); }

void OpChr(Operands& o) {
  const char c = static_cast<char>(o.integer() & 0xFF);
  o.result(Value::ofContent(c ? std::string(1, c) : ""));
}

void OpAsc(Operands& o) {
  const std::string_view text = o.content();
  const int code = text.empty() ? 0 : static_cast<unsigned char>(text[0]);
  o.result(N_ToVTLD(code, countLength, 0));
}

void OpVal(Operands& o) {
  const std::string_view text = o.content();
  const Typ typ = GetTyp(text);
  o.result(typ.type == 'N' ? N_ToVTLD(TxtToDbl(text), typ.length, typ.decimals)
                           : N_ToVTLD(0, 2, 0));
}

void OpStr(Operands& o) {
  const Value& x = o.value();
  const int width = o.more() ? o.integer() : 6;
  const int decimals = o.more() ? o.integer() : 0;
  // A negative width sets the number to the left.
  if (width > maxStrWidth || width < -maxStrWidth || decimals > maxStrWidth) {
    ArgErr("STR() too wide");
    return o.keep();
  }
  o.result(Value::ofContent(FmtFix(x.numberInside(), width, decimals)));
}

void OpColor(Operands& o) {
  const int color = std::min(o.integer(), maxColor);
  o.result(Value::ofContent(color < 0 ? EscColor(0, 0)
                                      : EscColor(40, color >> 4) + EscColor(30, color & 15)));
}

void OpDate(Operands& o) { o.result(Value::ofContent(DateNow())); }

}  // namespace mox
