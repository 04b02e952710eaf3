// The output path: every line of the language's output passes here.
#pragma once

#include <string_view>

#include "session/value.h"

namespace mox {

constexpr int outWidth = 80;  // columns of an output line

// Column of the next character on the output line, from 0. It counts all that SayTxt was given,
// also what was cut off, and so may exceed the width.
extern int outcol;

// Sends a text to the routes that are open: the console, the file of ALTERNATE, the printer. The
// last two are opened and closed for each text; one that can't be opened is passed over.
void PrTxt(std::string_view text);

// Prints a text at a column (0 first takes the line back to its start) or, with -1, where the
// line stands. What would stand beyond the width is cut off.
void SayTxt(int column, std::string_view text);
void SayVal(int column, const Value& value);  // the same of a value as the user sees it

void SayNL();  // ends the output line

}  // namespace mox
