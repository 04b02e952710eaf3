// Files as the session sees them: text files read line by line, names found whatever their case,
// and the table of numbered open files.
#pragma once

#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "session/misc.h"

namespace mox {

struct FileCloser {
  void operator()(std::FILE* f) const { std::fclose(f); }
};
// A stream that closes with its owner.
using File = std::unique_ptr<std::FILE, FileCloser>;

// Opens the path as it stands; null when it can't be opened or is a directory.
File FileOpen(const std::string& path, const char* mode);

// The name of an existing file: the path as it stands if such a file is there, else the one file
// of the same directory whose name differs only in letter case, else the path as it stands.
std::string FnFind(const std::string& path);

// True when both paths lead to one and the same existing file.
bool SameFile(const std::string& a, const std::string& b);

// A file that is to replace another is written beside it under a name that no file has, and takes
// its place when it is complete. FileReplace keeps the permissions of the file at path and follows
// a link there: 0, or -1 with the new file gone and the old one as it was. FileRemove: the same 0
// or -1.
std::string FileBeside(const std::string& path);
int FileReplace(const std::string& beside, const std::string& path);
int FileRemove(const std::string& path);

// The most bytes that one read of a text line gives, its line end included.
constexpr size_t maxLine = 131;

// Reads one line of at most max bytes from a stream that was opened in binary mode, the line end
// (a line feed) included in the text and in the count: a longer line comes in several reads.
// CR LF is one line end, and a byte 0x1A ends the text. A zero byte ends the line's content.
// False at the end of the text.
bool ReadTextLine(std::FILE* f, size_t max, std::string& line);

// The lines of a text file without their line ends, in reads of maxLine bytes; a line of exactly
// maxLine bytes comes back as that line and an empty one. Nothing when the file can't be opened.
std::optional<Lines> ReadLines(const std::string& path);

// Replaces or makes a text file of these lines: 0, or -1 with a file that was there as it was.
int WriteLines(const std::string& path, const Lines& lines);

// The table of numbered files: slots 0 to 9, of which 0 is the standard output, 1 the standard
// input, and 2 to 9 are free for files. No statement reaches it yet; a run leaves it closed.
void K7Init();  // FpCloseAll
void FpCloseAll();
int FpFreeFile();  // lowest free slot, or -1
// 0; -1 for a slot outside 2 to 9; -2 when it is in use; -3 when the file can't be opened.
int FpOpen(int slot, const std::string& path, const char* mode);
int FpClose(int slot);  // 0; -1 for a slot outside 2 to 9; -2 when it isn't open
// The next line of at most maxLine bytes without its line end; nothing for a slot outside 0 to 9,
// a free slot, or the end of the file.
std::optional<std::string> FpLineInput(int slot);
bool FpEOF(int slot);  // also true for a slot outside 0 to 9 and for a free slot
int FpPrintTxt(int slot, std::string_view text);  // 0; -1 outside 0 to 9; -2 for a free slot

}  // namespace mox
