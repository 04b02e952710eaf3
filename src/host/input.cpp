#include "host/input.h"

#include <algorithm>
#include <cstdio>

#include "host/file.h"
#include "host/host.h"

namespace mox {

Input g_input;

bool InPending() {
  Input& in = g_input;
  if (in.skipLf && in.pos < in.bytes.size()) {
    in.pos += in.bytes[in.pos] == '\n';
    in.skipLf = false;
  }
  return in.pos < in.bytes.size();
}

bool InHave(size_t i, int ms) {
  Input& in = g_input;
  for (;;) {
    if (InPending() && in.pos + i < in.bytes.size()) return true;
    if (in.ended) return false;
    in.bytes.erase(0, in.pos);
    in.pos = 0;
    OS_CountWait();
    std::fflush(nullptr);
    if (!InFill(ms)) return false;
  }
}

int InAhead(size_t i) {
  if (!InHave(i, sequenceWait)) return keyEnd;
  return static_cast<unsigned char>(g_input.bytes[g_input.pos + i]);
}

int InTake(int ms) {
  if (!InHave(0, ms)) return keyEnd;
  return static_cast<unsigned char>(g_input.bytes[g_input.pos++]);
}

std::string InLetter(int first) {
  const size_t tail = LetterTail(first, InAhead);
  std::string letter(1, static_cast<char>(first));
  letter.append(g_input.bytes, g_input.pos, tail);
  g_input.pos += tail;
  return letter;
}

Sequence InTakeSequence() {
  const Sequence sequence = FoldSequence(InAhead);
  g_input.pos += sequence.length;
  return sequence;
}

int InKey(int first) {
  if (first == '\n') return '\r';
  if (first == keyInterrupt && OS_KeysAreTyped()) g_input.interruptKey = true;
  return InLetter(first).size() > 1 ? keyOther : first;
}

int InSequenceKey(const Sequence& sequence) {
  if (sequence.scanCode == 0) return std::min(sequence.key, keyOther);
  g_input.scanCode = sequence.scanCode;
  return FirstHalf(sequence.scanCode);
}

int InLineByte() {
  Input& in = g_input;
  const int c = InTake(forever);
  if (c == endMark) {
    in.ended = !OS_KeysAreTyped();
    in.pos = in.bytes.size();
    return keyEnd;
  }
  if (c != '\r' || !InHave(0, forever) || in.bytes[in.pos] != '\n') return c;
  ++in.pos;
  return '\n';
}

bool InLine(size_t max, std::string& line, int (*next)()) {
  line.clear();
  bool content = true;
  for (size_t n = 0; n < max; ++n) {
    const int c = next();
    if (c == keyEnd) return n > 0 && !OS_Interrupted();
    if (c == 0) content = false;
    if (content || c == '\n') line += static_cast<char>(c);
    if (c == '\n') return true;
  }
  return max > 0;
}

void InForget() {
  Input& in = g_input;
  in.ended = in.ended || !OS_KeysAreTyped();
  in.interruptKey = in.skipLf = false;
  in.pos = in.bytes.size();
  in.scanCode = -1;
}

}  // namespace mox
