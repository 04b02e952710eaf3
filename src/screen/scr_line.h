// Lines that a person types on a terminal: the editor of the prompt and of questions.
//
// As long as nothing is moved or taken back, the terminal shows a line as it would by itself. A
// line takes at most maxLine bytes. moxhelp.txt has the keys (KEYS PROMPT).
//
// Where the input or the output is no terminal, or one that can't move its cursor, and with the
// option SCREEN off, lines come from OS_ReadLine as they are, and nothing is written.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "session/misc.h"

namespace mox {

// What can stand at the end of a line that is being typed: texts for its part from start on.
struct Completion {
  size_t start;
  Lines texts;
};
using Completer = Completion (*)(std::string_view line);

// Reads a line of the prompt, which stands already: '.' where a command begins, '>' where its block
// goes on. The line is remembered. False at the end of the input, which Ctrl-D in an empty line is
// too, and when Ctrl-C breaks the read off.
bool ScrReadCommand(char prompt, Completer complete, std::string& line);

// The same for the answer to a question, whose text stands already. It isn't remembered.
bool ScrReadAnswer(std::string_view question, std::string& line);

}  // namespace mox
