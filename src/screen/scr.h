// The screen and its keys: the only place that knows how the screen is driven.
//
// The screen is a text console of 24 rows and 80 columns, counted from 0, addressed with ANSI
// sequences on the standard output. There is no copy of it: what was printed stays until something
// overprints it. On a larger window the picture stands at the top left, a text may run beyond it,
// and a 25th row tells the keys; a smaller one is told of before the first screen. With the option
// SCREEN off no sequence is sent, and texts land where the output stands.
//
// A field is a text of fixed width, drawn in reverse video (option INTENSITY) between colons
// (option COLON); with colons its text begins one column right of the field's place.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mox {

constexpr int scrRows = 24;
constexpr int scrCols = 80;

// Key codes. A cursor key and its control key are one and the same; printable characters are
// their own codes, every other extended key is 256 plus its scan code.
enum ScrKey {
  keyCtrlA = 1,
  keyCtrlB = 2,
  keyRight = 4,  // Ctrl-D
  keyUp = 5,     // Ctrl-E
  keyCtrlF = 6,
  keyDelete = 7,     // Ctrl-G
  keyBackspace = 8,  // Ctrl-H
  keyTab = 9,        // Ctrl-I
  keyLineFeed = 10,  // Ctrl-J
  keyEnter = 13,     // Ctrl-M
  keyAbandon = 17,   // Ctrl-Q; also the end of the input
  keyLeft = 19,      // Ctrl-S
  keyMark = 21,      // Ctrl-U
  keyInsert = 22,    // Ctrl-V
  keySave = 23,      // Ctrl-W
  keyDown = 24,      // Ctrl-X
  keyCtrlZ = 26,
  keyExtended = 256,
};
inline bool IsPrintable(int c) { return c >= 32 && c <= 126; }

void ScrClear();
void ScrNewPage();             // lets the old contents scroll away first
void ScrTo(int row, int col);  // not bounded here
void ScrNVid();                // white on black
void ScrRVid();                // black on white

// These take a place beyond the screen as one on its edge. A text that runs past the right edge of
// the window goes on in its next row; what would run past its last cell, and scroll the picture,
// isn't drawn.
void ScrClrEol(int row, int col);
void ScrSay(int row, int col, std::string_view text);
// Draws a text as a field.
void ScrSayRev(int row, int col, std::string_view text);
// Draws a text in a row of its own, up to the right edge of the window.
void ScrSayLine(int row, std::string_view text);
// Goes so many columns behind a place, in the row to which the window folds them.
void ScrToBehind(int row, int col, int columns);
// The column, from that of its first byte on, at which a drawn text has its byte at this place.
int ScrColumnOf(std::string_view text, size_t at);

// The text with its control characters as blanks.
std::string ScrPlain(std::string_view text);
// The same as fields are drawn: with blanks behind it, so that it takes a column for each byte.
std::string ScrDrawn(std::string_view text);

int ScrColumns();            // of the window; those of the screen where there is none
void ScrSayInsert(bool on);  // the label "INSERT", or blanks, in row 0
void ScrLeave();             // to the last line, where the prompt goes on
void ScrRestore();           // takes the colours back that were set: behind each statement
// Tells something that the next screen would cover: on a terminal it waits for a key.
void ScrNotice(const std::string& text);

// Lives while a screen is edited: keys that are typed faster than they are taken stay keys, and
// where the window has a row below the screen, it tells them.
struct ScrKeys {
  explicit ScrKeys(std::string_view hint);
  ~ScrKeys();
  ScrKeys(const ScrKeys&) = delete;
  ScrKeys& operator=(const ScrKeys&) = delete;
};

// Waits for one key. The end of the input ends the session and comes as keyAbandon.
int ScrGetKey();
int ScrGetKeyOrEnd();  // the end comes as keyEnd of the host

// Field entry (scr_get.cpp). A picture has one character for each position of the text:
//
//   X any character    9 # digits and -+. and blank    A letters    ! any, a to z in upper case
//
// and any other takes nothing. A picture shorter than the text limits the entry to its length;
// an empty one stands for 9 throughout when the type is N, else for X.
//
// ScrGet edits the text in place, never changing its length, and returns the key that ended the
// field: 1, 2, 5, 6, 9, 13, 17, 21, 23, 24 or 26; or -1, with nothing shown or changed, when no
// position takes a character.
int ScrGet(int row, int col, std::string& text, char type, std::string_view picture);
// The first position at which something can be typed; -1 when there is none.
int ScrStart(std::string_view text, std::string_view picture);
// Blanks the bytes of the text that the picture wouldn't take.
void _prep(std::string& text, std::string_view picture);

}  // namespace mox
