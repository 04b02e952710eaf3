// The lines that were typed at the prompt, this session's and those before.
//
// They stand in the file "mox/history" of the user's state folder, a line each, the oldest first;
// the environment variable MOX_HISTORY names another file, and with an empty value or "off" there
// is none, nor when it names something else than a plain file. A line is added by one write at the
// end of the file, and a file that has grown past 2,000 lines is cut to its last 1,000 by the next
// session that reads it; sessions at the same time keep each other's lines by a lock on the empty
// file "history.lock" beside it. Only the user can read the file. What can't be read or written is
// done without: the session then remembers its own lines alone.
#pragma once

#include <cstddef>
#include <string>

namespace mox {

// The newest 1,000 lines, the oldest first.
size_t HistCount();
const std::string& HistLine(size_t i);

// Adds a line unless it is blank or the same as the one before.
void HistAdd(const std::string& line);

}  // namespace mox
