#include "screen/scr_shown.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "host/host.h"
#include "screen/scr_text.h"
#include "session/misc.h"

namespace mox {

namespace {

// A terminal that has filled a row goes to the next one only with another character.
constexpr char nextRow[] = " \r";
constexpr int leastColumns = 2;  // a window of fewer shows no letter of two
constexpr size_t maxLetter = 4;  // bytes

std::string_view _letterAt(std::string_view text, size_t at) {
  return text.substr(at, LetterEnd(text, at) - at);
}

// The place behind a letter.
Place _behind(Place place, int width, int columns) {
  if (place.col + width > columns) place = {place.row + 1, 0};
  place.col += width;
  return place.col == columns ? Place{place.row + 1, 0} : place;
}

// The place behind the first n bytes of a text.
Place _placeOf(const Shown& s, std::string_view text, size_t n) {
  Place place = s.start;
  for (size_t i = 0; i < n; i = LetterEnd(text, i))
    place = _behind(place, LetterWidth(_letterAt(text, i)), s.columns);
  return place;
}

// The place of the cursor ahead of a byte: a letter that has no room in a row stands in the next.
Place _cursorAt(const Shown& s, std::string_view text, size_t at) {
  const Place place = _placeOf(s, text, at);
  const int width = at < text.size() ? LetterWidth(_letterAt(text, at)) : 0;
  return place.col + width > s.columns ? Place{place.row + 1, 0} : place;
}

void _move(std::string& out, Place from, Place to) {
  const int rows = to.row - from.row, cols = to.col - from.col;
  if (rows != 0) out += StrFmt("\033[%d%c", std::abs(rows), rows < 0 ? 'A' : 'B');
  if (cols != 0) out += StrFmt("\033[%d%c", std::abs(cols), cols < 0 ? 'D' : 'C');
}

// Writes a text at a place and gives the place behind it.
Place _write(const Shown& s, std::string& out, Place place, std::string_view text) {
  bool filled = false;
  for (size_t i = 0; i < text.size(); i = LetterEnd(text, i)) {
    const std::string_view letter = _letterAt(text, i);
    const int width = LetterWidth(letter);
    if (place.col + width > s.columns) out.append(static_cast<size_t>(s.columns - place.col), ' ');
    out += letter;
    place = _behind(place, width, s.columns);
    if (width > 0) filled = place.col == 0;
  }
  if (filled) out += nextRow;
  return place;
}

// What can be seen of a text behind its last line end: no control character, and no sequence that
// changes colours.
std::string _lastRow(std::string_view text) {
  std::string seen;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' || text[i] == '\r') seen.clear();
    if (text.substr(i, 2) == "\033[")
      i = std::min(text.find_first_not_of("0123456789;", i + 2), text.size());
    else if (static_cast<unsigned char>(text[i]) >= ' ')
      seen += text[i];
  }
  return seen;
}

// How many bytes two texts have in common, in whole letters with what combines with them.
size_t _same(std::string_view a, std::string_view b) {
  size_t at = 0;
  while (at < a.size() && at < b.size() && _letterAt(a, at) == _letterAt(b, at))
    at = LetterEnd(a, at);
  const auto combines = [&](std::string_view text) {
    return at < text.size() && LetterWidth(_letterAt(text, at)) == 0;
  };
  while (at > 0 && (combines(a) || combines(b))) at = LetterStart(a, at);
  return at;
}

}  // namespace

size_t LetterStart(std::string_view text, size_t end) {
  for (size_t size = maxLetter; size > 1; --size)
    if (size <= end && LetterEnd(text.substr(0, end), end - size) == end) return end - size;
  return end - 1;
}

void ShowBegin(Shown& s, std::string_view prompt) {
  s = {std::max(OS_WindowSize().cols, leastColumns), {}, {}, {}};
  const std::string seen = _lastRow(prompt);
  s.start.col = _placeOf(s, seen, seen.size()).col;
  s.cursor = s.start;
  if (!seen.empty() && s.start.col == 0) std::printf("%s", nextRow);
}

void Show(Shown& s, const std::string& text, size_t at) {
  std::string out;
  const size_t same = _same(text, s.text);
  if (same < text.size() || same < s.text.size()) {
    const auto cells = [&](Place place) { return place.row * s.columns + place.col; };
    const Place from = _placeOf(s, text, same);
    const int before = cells(_placeOf(s, s.text, s.text.size()));
    _move(out, s.cursor, from);
    s.cursor = _write(s, out, from, std::string_view(text).substr(same));
    const int spare = std::max(before - cells(s.cursor), 0);
    s.cursor = _write(s, out, s.cursor, std::string(static_cast<size_t>(spare), ' '));
    s.text = text;
  }
  const Place to = _cursorAt(s, text, at);
  _move(out, s.cursor, to);
  s.cursor = to;
  std::fwrite(out.data(), 1, out.size(), stdout);
}

void ShowResized(Shown& s, std::string_view prompt, const std::string& text, size_t at) {
  ShowBegin(s, prompt);
  const Place start, cursor = {_cursorAt(s, text, at).row, 0};
  std::string out = "\r";
  _move(out, cursor, start);
  std::printf("%s\033[J%s", out.c_str(), std::string(prompt).c_str());
  Show(s, text, at);
}

}  // namespace mox
