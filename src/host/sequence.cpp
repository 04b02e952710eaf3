#include "host/sequence.h"

#include <string>
#include <string_view>

#include "host/host.h"

namespace mox {

namespace {

constexpr size_t _maxSequence = 16;

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

// The sequence ahead: its text, empty when what comes is none.
std::string _peek(int (*ahead)(size_t i)) {
  std::string text;
  while (text.size() < _maxSequence) {
    const int c = ahead(text.size());
    if (c == keyEnd) break;
    text += static_cast<char>(c);
    if (text.size() == 1) {
      if (c != '[' && c != 'O') break;
    } else if (text[0] == 'O' || text[1] == '[') {
      if (text.size() == (text[0] == 'O' ? 2 : 3)) return text;
    } else if (c >= 0x40 && c <= 0x7E) {
      return text;
    } else if (c < 0x20 || c > 0x7E) {
      break;
    }
  }
  return {};
}

// The sequence without the modifier keys: "[1;5C" is "[C", "[3;2~" is "[3~".
std::string _plain(std::string sequence) {
  const size_t semicolon = sequence.find(';');
  if (semicolon == sequence.npos) return sequence;
  const char final = sequence.back();
  sequence.erase(final == '~' ? semicolon : 1);
  return sequence += final;
}

}  // namespace

Sequence FoldSequence(int (*ahead)(size_t i)) {
  const std::string sequence = _peek(ahead);
  if (sequence.empty()) return {-1, 0};
  const std::string plain = _plain(sequence);
  int scanCode = sequence[0] == '[' ? 0 : -1;
  for (const Known& known : _sequences)
    if (known.text == plain) scanCode = known.scanCode;
  return {scanCode, scanCode < 0 ? 0 : sequence.size()};
}

int FirstHalf(int scanCode) { return scanCode >= 59 && scanCode <= 68 ? 0 : 224; }

}  // namespace mox
