// What Tab brings at the prompt.
#pragma once

#include <string_view>

#include "screen/scr_line.h"

namespace mox {

// What the grammar lets follow the line, as far as its last word, which may be empty, begins so:
// words of the language and functions, fields of the tables in use, variables, options, and files
// of the kind that is due. Words are in the case of the last letter typed, in upper case without
// one; a file is named as it stands on disk, without the extension that its statement adds.
Completion CompleteLine(std::string_view line);

}  // namespace mox
