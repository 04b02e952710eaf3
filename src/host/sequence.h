// The escape sequences that terminals send for their cursor and function keys.
#pragma once

#include <cstddef>

namespace mox {

constexpr int keyEscape = 27;

struct Sequence {
  int scanCode;   // 0 for a key that has none; -1 when no sequence follows the Escape
  size_t length;  // how many bytes behind the Escape to drop, 0 with a scan code of -1
};

// Reads the sequence behind an Escape that was taken. ahead(i) gives the i-th byte behind it, or
// keyEnd when it doesn't come at once. Only an unknown key of the "[" kind is dropped.
Sequence FoldSequence(int (*ahead)(size_t i));

// The first of the two bytes that _getch gives for an extended key; the scan code is the second.
int FirstHalf(int scanCode);

}  // namespace mox
