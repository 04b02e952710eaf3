// A text that is edited on a terminal, as the terminal shows it: over as many rows as it takes.
//
// Letters and their columns are those of scr_text.h. The text has no control characters.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mox {

// Where the letter begins that ends at a place.
size_t LetterStart(std::string_view text, size_t end);

// A place on the terminal: rows below the one in which the text begins, and the column, from 0.
struct Place {
  int row = 0, col = 0;
};

struct Shown {
  int columns = 0;  // of the window
  Place start;      // of the text
  Place cursor;     // where the terminal's stands
  std::string text;
};

// Begins behind a prompt, which stands at the start of a row, with nothing shown.
void ShowBegin(Shown& s, std::string_view prompt);

// Shows a text in place of what is shown, and puts the cursor ahead of its byte at. Only what
// differs is written.
void Show(Shown& s, const std::string& text, size_t at);

// The same, the prompt too, for a window of another width, in which a terminal lays out its rows
// anew; one that doesn't keeps rests of the text above.
void ShowResized(Shown& s, std::string_view prompt, const std::string& text, size_t at);

}  // namespace mox
