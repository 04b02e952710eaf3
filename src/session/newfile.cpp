#include "session/newfile.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "host/path.h"
#include "session/error.h"
#include "session/files.h"
#include "session/strreplace.h"

namespace mox {

namespace fs = std::filesystem;

namespace {

constexpr char _inTheMaking[] = ".mox~";
constexpr std::size_t _piece = 1 << 16;

// The file to which the path leads, or the path when there is none yet.
std::string _behindLinks(const std::string& path) {
  std::error_code ec;
  const fs::path file = fs::canonical(PathOf(path), ec);
  return ec ? path : TextOf(file);
}

// A file at hand for a moment.
struct Opened {
  FileHandle f;
  explicit Opened(FileHandle h) : f(h) {}
  ~Opened() { OS_FileClose(f); }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
};

// What stands in the place: 0 for nothing or a file that may be replaced.
int _mayReplace(const NewFile& n, bool evenOpen) {
  std::error_code ec;
  if (!fs::exists(fs::symlink_status(PathOf(n.place), ec))) return 0;
  const Opened old(OS_FileOpen(n.place, FileMode::change));
  if (old.f == noFile) return fileCantCreate;
  if (evenOpen) return 0;
  return FileInUse(n.place) || !OS_FileKeep(old.f) ? fileInUse : 0;
}

// Makes the empty file, over what a killed program may have left.
int _make(NewFile& n, const std::string& made) {
  n.f = OS_FileOpen(made, FileMode::make);
  if (n.f == noFile) return fileCantCreate;
  if (!OS_FileKeep(n.f)) {
    OS_FileClose(n.f);
    n.f = noFile;
    return fileInUse;
  }
  n.made = made;
  return OS_FileSize(n.f) == 0 || OS_FileResize(n.f, 0) ? 0 : fileCantWrite;
}

void _drop(NewFile& n) {
  OS_FileClose(n.f);
  n.f = noFile;
  if (!n.made.empty()) FileDelete(n.made);
  n.made.clear();
}

// Copies bytes from one file to another: how many before the first that was refused.
std::int64_t _copy(FileHandle from, FileHandle to, std::int64_t begin, std::int64_t end) {
  std::string bytes;
  for (std::int64_t at = begin; at < end; at += static_cast<std::int64_t>(bytes.size())) {
    bytes.resize(static_cast<std::size_t>(std::min<std::int64_t>(end - at, _piece)));
    if (OS_FileRead(from, at, bytes.data(), bytes.size()) != bytes.size() ||
        !OS_FileWrite(to, at, bytes.data(), bytes.size()))
      return at;
  }
  return end;
}

// Writes the new bytes over the old file.
int _writeOver(NewFile& n) {
  const Opened old(OS_FileOpen(n.place, FileMode::change));
  const std::int64_t before = OS_FileSize(old.f), after = OS_FileSize(n.f);
  if (old.f == noFile || before < 0) return fileCantWrite;
  const std::int64_t both = std::min(before, after);
  if (_copy(n.f, old.f, both, after) != std::max(both, after)) {
    OS_FileResize(old.f, before);
    return fileCantWrite;
  }
  std::string kept(static_cast<std::size_t>(both), '\0');
  OS_FileRead(old.f, 0, kept.data(), kept.size());
  if (_copy(n.f, old.f, 0, both) == both && (after >= before || OS_FileResize(old.f, after)))
    return 0;
  OS_FileWrite(old.f, 0, kept.data(), kept.size());
  if (after > before) OS_FileResize(old.f, before);
  return fileCantWrite;
}

int _moveThere(NewFile& n) {
  std::error_code ec;
  const fs::file_status old = fs::status(PathOf(n.place), ec);
  if (fs::exists(old)) fs::permissions(PathOf(n.made), old.permissions(), ec);
  OS_FileClose(n.f);  // an open file can't be moved on every host
  n.f = noFile;
  if (!OS_FileMove(n.made, n.place)) return fileCantWrite;
  n.made.clear();
  return 0;
}

int _writeWhole(const std::string& name, std::string_view bytes) {
  NewFile n;
  if (const int made = NewFileOpen(n, name); made != 0) return made;
  return NewFileAppend(n, bytes) ? NewFileDone(n) : fileCantWrite;
}

}  // namespace

void FileErr(int result, const std::string& path) {
  SetErr(result == fileInUse        ? "FILE IS IN USE"
         : result == fileCantCreate ? "CANNOT CREATE FILE"
                                    : "CANNOT WRITE FILE",
         FnFind(path));
}

NewFile::~NewFile() { _drop(*this); }

int NewFileOpen(NewFile& n, const std::string& name, bool evenOpen) {
  n.path = FnFind(name);
  n.place = _behindLinks(n.path);
  if (PathOf(n.place).filename().empty()) return fileCantCreate;
  if (const int refused = _mayReplace(n, evenOpen); refused != 0) return refused;
  const bool old = FileExists(n.place);
  n.inPlace = old && !OS_FileIsPlainOwn(n.place);
  int made = _make(n, n.place + _inTheMaking);
  if (made != fileCantCreate || !old) return made;
  n.inPlace = true;
  std::error_code ec;
  const fs::path temporary = fs::temp_directory_path(ec) / PathOf(n.place).filename();
  return ec ? made : _make(n, TextOf(temporary) + _inTheMaking);
}

bool NewFileAppend(NewFile& n, std::string_view bytes) {
  if (!OS_FileWrite(n.f, n.size, bytes.data(), bytes.size())) return false;
  n.size += static_cast<std::int64_t>(bytes.size());
  return true;
}

int NewFileDone(NewFile& n) {
  const int result = n.inPlace ? _writeOver(n) : _moveThere(n);
  _drop(n);
  return result;
}

int FileWriteText(const std::string& name, std::string_view text) {
  return _writeWhole(name, HostText(text));
}

int FileWriteBytes(const std::string& name, std::string_view bytes) {
  return _writeWhole(name, bytes);
}

std::string HostText(std::string_view text) { return str_replace(text, "\n", g_lineEnd); }

}  // namespace mox
