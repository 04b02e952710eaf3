// Letters and the columns that they take on the screen. A letter is a character of UTF-8; a byte
// that is part of none stands for itself, in one column.
#pragma once

#include <cstddef>
#include <string_view>

namespace mox {

// Where the letter that begins at a place ends.
size_t LetterEnd(std::string_view text, size_t at);
// Columns of a letter: 0 for a control character and what combines with the letter before, 2 for
// what terminals draw wide.
int LetterWidth(std::string_view letter);
// The beginning of the text that takes at most so many columns, whole letters only.
std::string_view TextFit(std::string_view text, int columns);
int TextWidth(std::string_view text);
// The column of the letter to which the byte at a place belongs; behind the text each place counts
// one column.
int TextColumn(std::string_view text, size_t at);

}  // namespace mox
