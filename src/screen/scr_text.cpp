#include "screen/scr_text.h"

#include <algorithm>

namespace mox {

namespace {

struct Range {
  unsigned first, last;
  int width;
};
// What takes no column, and what takes two.
constexpr Range ranges[] = {
    {0x80, 0x9F, 0},       {0x0300, 0x036F, 0},   {0x1100, 0x115F, 2},   {0x200B, 0x200F, 0},
    {0x20D0, 0x20FF, 0},   {0x2E80, 0x303E, 2},   {0x3041, 0xA4CF, 2},   {0xAC00, 0xD7A3, 2},
    {0xF900, 0xFAFF, 2},   {0xFE00, 0xFE0F, 0},   {0xFE30, 0xFE6F, 2},   {0xFF00, 0xFF60, 2},
    {0xFFE0, 0xFFE6, 2},   {0x1F300, 0x1F64F, 2}, {0x1F680, 0x1F6FF, 2}, {0x1F900, 0x1F9FF, 2},
    {0x20000, 0x3FFFD, 2},
};

bool _isTail(char c) { return (c & 0xC0) == 0x80; }

size_t _letterSize(unsigned char first) {
  return first < 0xC2 ? 1 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : first < 0xF5 ? 4 : 1;
}

unsigned _codePoint(std::string_view letter) {
  constexpr unsigned leadBits[] = {0, 0x7F, 0x1F, 0x0F, 0x07};
  unsigned code = static_cast<unsigned char>(letter[0]) & leadBits[letter.size()];
  for (char c : letter.substr(1)) code = code << 6 | (c & 0x3F);
  return code;
}

}  // namespace

size_t LetterEnd(std::string_view text, size_t at) {
  const size_t size = _letterSize(static_cast<unsigned char>(text[at]));
  if (size == 1) return at + 1;
  const std::string_view tail = text.substr(at + 1, size - 1);
  const bool whole = tail.size() == size - 1 && std::all_of(tail.begin(), tail.end(), _isTail);
  return at + (whole ? size : 1);
}

int LetterWidth(std::string_view letter) {
  if (letter.size() == 1) return (letter[0] >= 0 && letter[0] < ' ') || letter[0] == 127 ? 0 : 1;
  const unsigned code = _codePoint(letter);
  for (const Range& r : ranges)
    if (code >= r.first && code <= r.last) return r.width;
  return 1;
}

std::string_view TextFit(std::string_view text, int columns) {
  size_t at = 0;
  while (at < text.size()) {
    const size_t end = LetterEnd(text, at);
    columns -= LetterWidth(text.substr(at, end - at));
    if (columns < 0) break;
    at = end;
  }
  return text.substr(0, at);
}

int TextWidth(std::string_view text) { return TextColumn(text, text.size()); }

int TextColumn(std::string_view text, size_t at) {
  int column = 0;
  for (size_t i = 0; i < text.size();) {
    const size_t end = LetterEnd(text, i);
    if (at < end) return column;
    column += LetterWidth(text.substr(i, end - i));
    i = end;
  }
  return column + static_cast<int>(at - text.size());
}

}  // namespace mox
