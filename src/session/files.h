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

// Opens a stream by the path as it stands: to read, a plain file, which has an end; to append, also
// a device. Null when it can't be opened.
File FileOpen(const std::string& path, const char* mode);

// The name of an existing file: the path as it stands if such a file is there, else the one file
// of the same directory whose name differs only in letter case, else the path as it stands.
std::string FnFind(const std::string& path);

// True when both paths lead to one and the same existing file.
bool SameFile(const std::string& a, const std::string& b);

bool FileExists(const std::string& path);  // of any kind
// Deletes a plain file or a link: false when it can't.
bool FileDelete(const std::string& path);
// Renames a plain file to a name that no other file has: false when it can't.
bool FileRename(const std::string& from, const std::string& to);
// The files that are open as tables and indexes, each for the lifetime of an object.
class FileUse {
 public:
  explicit FileUse(std::string path);
  ~FileUse();
  FileUse(const FileUse&) = delete;
  FileUse& operator=(const FileUse&) = delete;
  const std::string path;
};
bool FileInUse(const std::string& path);  // of this session, however the path is spelt

// The most bytes that one read of a text line gives, its line end included.
constexpr size_t maxLine = 131;

// Reads the lines of a stream that was opened in binary mode, in blocks: nobody else reads it then.
// A line is at most max bytes with its line end (a line feed), which is part of the text and of the
// count: a longer line comes in several reads. CR LF is one line end, and a byte 0x1A ends the
// text. A zero byte ends the line's content.
class TextReader {
 public:
  explicit TextReader(std::FILE* f) : f_(f) {}
  bool read(size_t max, std::string& line);  // false at the end of the text
  bool ended() const { return ended_; }      // a read met the end of the file

 private:
  bool fill();
  std::FILE* f_;
  std::string block_;
  size_t at_ = 0;  // in the block: the next byte
  bool ended_ = false;
};

// True behind the last read of a stream that came to the end of its file; otherwise the file
// couldn't be read, and that is reported.
bool ReadEnded(std::FILE* f, const std::string& path);

// The lines of a text file without their line ends, in reads of maxLine bytes; a line of exactly
// maxLine bytes comes back as that line and an empty one. A byte order mark of UTF-8 in front is
// left out. Nothing when the file can't be opened or read.
std::optional<Lines> ReadLines(const std::string& path);

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
