// The source line that is being compiled, and the syntax error that names it.
#pragma once

#include <string>
#include <string_view>

namespace mox {

extern std::string curline;
extern int curlineno;  // its index in the source, from 0

// Reports a syntax error: the text (mostly empty), a line feed, and the line with its number.
void fail(std::string_view text);

}  // namespace mox
