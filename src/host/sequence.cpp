#include "host/sequence.h"

#include <string>
#include <string_view>

#include "host/host.h"

namespace mox {

namespace {

constexpr size_t _maxSequence = 32;

struct Known {
  std::string_view text;
  int scanCode;
};
constexpr Known _sequences[] = {
    {"[A", 72},   {"[B", 80},   {"[C", 77},   {"[D", 75},   {"[H", 71},   {"[F", 79},
    {"OA", 72},   {"OB", 80},   {"OC", 77},   {"OD", 75},   {"OH", 71},   {"OF", 79},
    {"[1~", 71},  {"[2~", 82},  {"[3~", 83},  {"[4~", 79},  {"[5~", 73},  {"[6~", 81},
    {"[7~", 71},  {"[8~", 79},  {"OP", 59},   {"OQ", 60},   {"OR", 61},   {"OS", 62},
    {"[P", 59},   {"[Q", 60},   {"[R", 61},   {"[S", 62},   {"[[A", 59},  {"[[B", 60},
    {"[[C", 61},  {"[[D", 62},  {"[[E", 63},  {"[11~", 59}, {"[12~", 60}, {"[13~", 61},
    {"[14~", 62}, {"[15~", 63}, {"[17~", 64}, {"[18~", 65}, {"[19~", 66}, {"[20~", 67},
    {"[21~", 68},
};

// True when this isn't the last character of a sequence.
bool _goesOn(const std::string& text) {
  const char c = text.back();
  if (text[0] == 'O') return (c >= '0' && c <= '9') || c == ';';
  return c < '@' || text == "[[";
}

// The sequence ahead, as far as it comes; empty when what comes is none.
std::string _peek(int (*ahead)(size_t i)) {
  std::string text;
  while (text.size() < _maxSequence) {
    const int c = ahead(text.size());
    const bool kind = text.empty() ? c == '[' || c == 'O' : c >= ' ' && c <= '~';
    if (!kind) break;
    text += static_cast<char>(c);
    if (text.size() > 1 && !_goesOn(text)) break;
  }
  return text.size() > 1 ? text : "";
}

// The sequence without the modifier keys: "[1;5C" is "[C", "[3;2~" is "[3~", "O5P" is "OP".
std::string _plain(std::string sequence) {
  const size_t semicolon = sequence.find(';');
  const char final = sequence.back();
  if (sequence[0] == 'O')
    sequence.erase(1);
  else if (semicolon != sequence.npos)
    sequence.erase(final == '~' ? semicolon : 1);
  else
    return sequence;
  return sequence += final;
}

// What a key without a scan code types: one of the keypad comes as "O" and the character plus 64.
int _typed(const std::string& sequence) {
  if (sequence == "[200~") return pasteBegin;
  if (sequence == "[201~") return pasteEnd;
  const char final = sequence.back();
  const bool known = sequence[0] == 'O' && ((final >= 'j' && final <= 'y') || final == 'M');
  return known ? final - 64 : keyOther;
}

}  // namespace

Sequence FoldSequence(int (*ahead)(size_t i)) {
  const std::string sequence = _peek(ahead);
  if (sequence.empty()) return {-1, keyOther, 0};
  const std::string plain = _plain(sequence);
  for (const Known& known : _sequences)
    if (known.text == plain) return {known.scanCode, keyOther, sequence.size()};
  return {0, _typed(plain), sequence.size()};
}

size_t LetterTail(int first, int (*ahead)(size_t i)) {
  if (first < 0xC2 || first > 0xF4) return 0;
  const size_t size = first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
  for (size_t i = 0; i < size; ++i)
    if (const int c = ahead(i); c < 0x80 || c > 0xBF) return 0;
  return size;
}

int FirstHalf(int scanCode) { return scanCode >= 59 && scanCode <= 68 ? 0 : 224; }

}  // namespace mox
