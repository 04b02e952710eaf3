// The bytes of the input, and the keys and lines in them: what the console sources of all hosts
// share. The host's source fills the buffer and knows what its terminal is like.
#pragma once

#include <cstddef>
#include <string>

#include "host/sequence.h"

namespace mox {

constexpr int forever = -1;       // in place of ms
constexpr int sequenceWait = 50;  // ms in which the rest of a key of several bytes arrives
constexpr int keyEndOfFile = 4;   // ends a line of a terminal, and the input
constexpr int keyExtended = 256;  // plus a scan code (OS_EditKey)

// Bytes read; those from pos on aren't taken.
struct Input {
  std::string bytes;
  size_t pos = 0;
  bool ended = false;   // no terminal, and at its end
  bool skipLf = false;  // a line feed that comes next belongs to the carriage return before it
  int scanCode = -1;    // second half of an extended key whose first was given
  bool interruptKey = false;  // Ctrl-C was given as a key of a terminal
};
extern Input g_input;

// The host's: appends to the bytes what can be read, waiting at most ms for it. False when nothing
// came.
bool InFill(int ms);

bool InPending();               // true when a byte is in the buffer
bool InHave(size_t i, int ms);  // true when the i-th byte ahead is, after waiting at most ms for it
int InTake(int ms);             // the next byte, or keyEnd
int InAhead(size_t i);          // the i-th byte ahead of a key of several bytes, or keyEnd
std::string InLetter(int first);  // the letter that begins with a byte that was taken
Sequence InTakeSequence();        // behind an Escape

// The key, as _getch gives it, that begins with a byte that was taken and isn't Escape; and that
// of a sequence.
int InKey(int first);
int InSequenceKey(const Sequence& sequence);

// The next byte of a line that no terminal edits here: keyEnd at an end mark, a line feed for CR
// LF.
int InLineByte();
// Reads a line as OS_ReadLine does, of the bytes that next gives.
bool InLine(size_t max, std::string& line, int (*next)());

// Drops what was read: it was typed before an interrupt.
void InForget();

}  // namespace mox
