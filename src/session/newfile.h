// The one door for files that a statement makes or replaces.
//
// A new file is made beside its place and moved there when it is whole, so that what stands there
// is the old file or the whole new one at every moment. Its name while it is made is that of its
// place with ".mox~" behind; what a killed program leaves under it goes when the name is next
// written.
//
// A name means the file of that spelling, else the one that differs only in letter case, else a new
// one. Only a plain file, or nothing, is replaced, and no file that an area of this or of another
// session has open. Links are followed. A file with several names or of another owner, or in a
// folder in which nothing can be made, is written over in place: first what makes it longer, and
// back to what it was when the host refuses.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/file.h"

namespace mox {

// The results of the door beside 0; tables use the same numbers.
enum FileResult {
  fileCantCreate = -2,
  fileCantWrite = -5,
  fileInUse = -6,
};
// Reports such a result with the name of the file.
void FileErr(int result, const std::string& path);

// True when no area of this or of another session has the file open.
bool FileIsFree(const std::string& path);

struct NewFile {
  std::string path;       // what the name means
  std::string place;      // the same behind links
  std::string made;       // the file while it is made
  FileHandle f = noFile;  // open to read and write
  std::int64_t size = 0;  // bytes that NewFileAppend has written
  bool inPlace = false;
  bool evenOpen = false;

  NewFile() = default;
  ~NewFile();  // the new file goes unless it took its place
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
};

// Begins a file: 0, or a FileResult. With evenOpen the caller answers for a file that is open in
// this session.
int NewFileOpen(NewFile& n, const std::string& name, bool evenOpen = false);
bool NewFileAppend(NewFile& n, std::string_view bytes);
// Puts the file in its place: 0, or a FileResult with the old file as it was, which somebody may
// have opened meanwhile. The caller's handle of the old file becomes one of what is there then,
// kept for this session.
int NewFileDone(NewFile& n, FileHandle* old = nullptr);

// Makes a file hold a text, its line ends those of the host, or bytes: 0, or a FileResult.
int FileWriteText(const std::string& name, std::string_view text);
int FileWriteBytes(const std::string& name, std::string_view bytes);

// The text with its line feeds as the host's line ends.
std::string HostText(std::string_view text);

}  // namespace mox
