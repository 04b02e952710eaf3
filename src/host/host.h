// What the program needs of its host beyond the standard library. One source a host: posix.cpp.
//
// Keys and lines come from one stream, the standard input, in the order in which they were typed
// or piped in; both kinds of read share one buffer, so that they can alternate without losing a
// byte. The terminal is in line mode with echo up to the first look for a key and from each read of
// a line on: what is typed between two keys, and pasted over several lines, is neither echoed nor
// edited by the terminal. A line that was begun in this way is shown and edited when it is read, up
// to its end. The terminal is put back as it was found for each line that it edits, for another
// program, at the end of this one and when a signal stops it.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace mox {

constexpr int keyEnd = -1;       // _getch at the end of the input
constexpr int keyInterrupt = 3;  // Ctrl-C
constexpr int keyOther = 255;    // a key without a code of its own

// Called once at start, before any file is opened: the console interprets ANSI sequences from now
// on, each of the three standard streams is open, and a refused write is an error of that write
// and never the program's end.
void ansi_on();

// The size of the window in which the output is seen; 24 by 80 when it isn't known, and no rows and
// columns when the output is no terminal.
struct Window {
  int rows = 0, cols = 0;
};
Window OS_WindowSize();

// True when the input is a terminal.
bool OS_KeysAreTyped();

// What the terminal needs to look as it did before, for a signal that stops the program; null when
// it needs nothing. The text isn't copied.
void OS_SetRestoreText(const char* text);

// Begins, with true, and ends a time in which the program can't end at once: a hang-up of the
// terminal, or a request to end, is the end of the input, and ends the program behind it.
void OS_HoldEnd(bool hold);

// The arguments of the program, its own name first, as texts in UTF-8 where the host has other
// names.
std::vector<std::string> OS_Arguments(int argc, char** argv);

// Waits for one key, without echo and without line buffering, and gives one byte of it. A cursor
// or function key gives two bytes in two calls: 0 or 224, then its scan code (72 Up, 75 Left,
// 77 Right, 80 Down, 82 Insert, 83 Delete, 71 Home, 79 End, 73 Page Up, 81 Page Down, 59 to 68
// F1 to F10). Every control key arrives as its code, Enter as 13, Backspace as 8, a lone Escape
// as 27. A letter beyond ASCII and an unknown sequence are one key, keyOther, however many bytes
// they have. keyEnd at the end of the input.
int _getch();

// Begins, with true, and ends a time in which many keys are awaited: Ctrl-C is a key between two
// waits, too.
void OS_HoldKeys(bool hold);

// True when a key is pending; doesn't wait, doesn't take it.
bool _kbhit();

// Reads one line of at most max bytes (its line feed included) with the host's line editing; a
// longer line comes in several reads. CR LF is one line end. False at the end of the input, and
// when Ctrl-C breaks the read off.
bool OS_ReadLine(size_t max, std::string& line);

// Editing a line key by key (screen/scr_line.h).
//
// True when input and output are a terminal that understands cursor sequences.
bool OS_CanEdit();
// Begins, with true, and ends the edit of one line. Meanwhile the terminal echoes nothing and tells
// pasted text from typed keys; the keys that interrupt and suspend the program do so.
void OS_EditLine(bool on);
// Waits for one key: a control key as its code (Enter as 13, Backspace as 8), an extended key as
// 256 and its scan code, or one of the codes below; 0 for a letter, whose bytes are then in letter,
// or a byte alone that belongs to none. Keys that aren't known give nothing. Of pasted text, line
// ends come as Enter and tabs as blanks, and other control characters don't come at all. keyEnd
// also when Ctrl-C breaks the wait off.
int OS_EditKey(std::string& letter);
constexpr int keyResized = -2;    // the window has another size
constexpr int keyContinued = -3;  // the program goes on in the foreground, and the line isn't there

// A variable of the environment; none when it isn't set.
std::optional<std::string> OS_Variable(const std::string& name);

// The folder in which the user's programs keep what outlives a session, without a separator at its
// end; empty when there is none.
std::string OS_StateDir();

// Ctrl-C. While a key is awaited it is a key as any other, but noted as well when it comes from a
// terminal. At all other times, from OS_CatchInterrupt on, it is noted, and breaks off a read of a
// line, which then gives false. The note stays until it is forgotten, and what was typed before it
// with it; input that isn't a terminal ends with an interrupt that was no key.
void OS_CatchInterrupt();
bool OS_Interrupted();
void OS_ForgetInterrupt();

// Starts a program, looked up as the host does, with its arguments split as a shell splits words,
// in the current directory and with the terminal in line mode, and waits for its end. Its exit
// code, or -1 when it can't be started or has none. The mode is that of the program's window and
// counts only where there are windows.
int OS_RunProgWait(const std::string& program, const std::string& args, int mode);

// The directory of the running program's file.
std::string OS_GetProgDir();

// The names, without directory part, of the files (or directories, but "." and "..") that fit a
// pattern, in the host's order. The pattern has a directory part and a last part in which * fits
// any run of characters and ? one character; letters match without case.
std::vector<std::string> OS_GetFileList(const std::string& pattern);
std::vector<std::string> OS_GetDirList(const std::string& pattern);

}  // namespace mox
