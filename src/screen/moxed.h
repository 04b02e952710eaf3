// The program editor of MODIFY COMMAND: a small full-screen editor of text files.
//
// The text is a vector of lines without trailing blanks. The window shows 23 of them, each from
// its first byte to the right edge of the window, and moves in steps of 8 lines. A line that is
// changed holds at most 160 bytes; the cursor goes no further than column 79.
#pragma once

#include <string>

namespace mox {

// Edits a file, which needn't be there: 0, or -1 after a report when it can't be saved. Lines that
// are unsaved when the terminal hangs up are kept in a file NAME.rescue beside it, NAME.rescue2
// when there is one, and the next edit of the file tells of it.
int MoxEd(const std::string& path);

}  // namespace mox
