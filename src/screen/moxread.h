// Forms: the entry fields that wait on the screen, and the loop that fills them in.
//
// A GET adds a field of the current table or a memory variable to the list and draws it; READ
// walks the list, writes all values back at once, and empties it. The list lives as long as the
// program.
#pragma once

#include <string_view>

namespace mox {

constexpr int maxGets = 63;

// Prints a text; the next GET stands behind it.
void AtSay(int row, int col, std::string_view text);
// Adds a field behind the text of the last SAY and draws it: 0, or -1 without a report when the
// list is full, with one when there is no field or variable of the name.
int AtGet(int row, int col, std::string_view name, std::string_view picture);
void AtClear();
void MoxRead();

}  // namespace mox
