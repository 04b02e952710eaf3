// The keys that terminals send as several bytes: escape sequences of cursor, function and keypad
// keys, and letters beyond ASCII.
#pragma once

#include <cstddef>

namespace mox {

constexpr int keyEscape = 27;

// In place of a key: a terminal that is asked to tells where a pasted text begins and ends.
constexpr int pasteBegin = 256;
constexpr int pasteEnd = 257;

// In what follows, ahead(i) gives the i-th byte behind one that was taken, or keyEnd when it
// doesn't come at once.

struct Sequence {
  int scanCode;   // 0 for a key that has none; -1 when no sequence follows the Escape
  int key;        // of a key without a scan code: what it types, keyOther, or a mark of a paste
  size_t length;  // how many bytes behind the Escape to drop, 0 with a scan code of -1
};

// Reads the sequence behind an Escape. One that is unknown or broken off is a key all the same.
Sequence FoldSequence(int (*ahead)(size_t i));

// How many bytes follow the first one of a letter in UTF-8; 0 for any other byte.
size_t LetterTail(int first, int (*ahead)(size_t i));

// The first of the two bytes that _getch gives for an extended key; the scan code is the second.
int FirstHalf(int scanCode);

}  // namespace mox
