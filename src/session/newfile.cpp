#include "session/newfile.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <utility>

#include "host/path.h"
#include "session/error.h"
#include "session/files.h"
#include "session/strreplace.h"

namespace mox {

namespace fs = std::filesystem;

namespace {

constexpr char _inTheMaking[] = ".mox~";
constexpr std::int64_t _piece = 1 << 16;

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
int _mayReplace(const NewFile& n) {
  std::error_code ec;
  if (!fs::exists(fs::symlink_status(PathOf(n.place), ec))) return 0;
  const Opened old(OS_FileOpen(n.place, FileMode::change));
  if (old.f == noFile) return fileCantCreate;
  if (n.evenOpen) return 0;
  return FileInUse(n.place) || !OS_FileKeep(old.f, n.place) ? fileInUse : 0;
}

// Makes the empty file, over what a killed program may have left.
int _make(NewFile& n, const std::string& made) {
  n.f = OS_FileOpen(made, FileMode::make);
  if (n.f == noFile) return fileCantCreate;
  if (!OS_FileKeep(n.f, made)) {
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

// Writes the new bytes over the old file: first those that make it longer, for which there may be
// no room, and last the first ones, which in a table tell how many of the others count.
int _writeOver(const NewFile& n, FileHandle old) {
  const std::int64_t before = OS_FileSize(old), after = OS_FileSize(n.f);
  const std::int64_t both = std::min(before, after), head = std::min(both, _piece);
  std::string kept(static_cast<std::size_t>(std::max<std::int64_t>(both, 0)), '\0');
  if (both < 0 || OS_FileRead(old, 0, kept.data(), kept.size()) != kept.size())
    return fileCantWrite;
  if (_copy(n.f, old, both, after) == std::max(both, after)) {
    if (_copy(n.f, old, head, both) == both && _copy(n.f, old, 0, head) == head &&
        (after >= before || OS_FileResize(old, after)))
      return 0;
    OS_FileWrite(old, 0, kept.data(), kept.size());
  }
  if (after > before) OS_FileResize(old, before);
  return fileCantWrite;
}

int _putInPlace(NewFile& n, FileHandle* old) {
  if (old) return _writeOver(n, *old);
  const Opened opened(OS_FileOpen(n.place, FileMode::change));
  return opened.f == noFile ? fileCantWrite : _writeOver(n, opened.f);
}

int _moveThere(NewFile& n, FileHandle* old) {
  std::error_code ec;
  const fs::file_status status = fs::status(PathOf(n.place), ec);
  if (fs::exists(status)) fs::permissions(PathOf(n.made), status.permissions(), ec);
  if (!g_movesOpen) {
    OS_FileClose(std::exchange(n.f, noFile));
    if (old) OS_FileClose(std::exchange(*old, noFile));
  }
  const bool moved = OS_FileMove(n.made, n.place);
  if (moved) n.made.clear();
  if (old && moved && g_movesOpen) OS_FileClose(std::exchange(*old, std::exchange(n.f, noFile)));
  if (old && *old == noFile && (*old = OS_FileOpen(n.place, FileMode::change)) != noFile)
    OS_FileKeep(*old, n.place);
  return moved ? 0 : fileCantWrite;
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

bool FileIsFree(const std::string& path) {
  if (FileInUse(path)) return false;
  const Opened file(OS_FileOpen(path, FileMode::change));
  return file.f == noFile || OS_FileKeep(file.f, path);
}

NewFile::~NewFile() { _drop(*this); }

int NewFileOpen(NewFile& n, const std::string& name, bool evenOpen) {
  n.path = FnFind(name);
  n.place = _behindLinks(n.path);
  n.evenOpen = evenOpen;
  if (PathOf(n.place).filename().empty()) return fileCantCreate;
  if (const int refused = _mayReplace(n); refused != 0) return refused;
  const bool old = FileExists(n.place);
  n.inPlace = old && !OS_FileIsPlainOwn(n.place);
  int made = _make(n, n.place + _inTheMaking);
  if (made != fileCantCreate || !old) return made;
  n.inPlace = true;
  std::error_code ec;
  const fs::path temporary = fs::temp_directory_path(ec) / PathOf(n.place).filename();
  if (ec || (made = _make(n, TextOf(temporary) + _inTheMaking)) != 0) return made;
  fs::permissions(PathOf(n.made), fs::perms::owner_read | fs::perms::owner_write, ec);
  return 0;
}

bool NewFileAppend(NewFile& n, std::string_view bytes) {
  if (!OS_FileWrite(n.f, n.size, bytes.data(), bytes.size())) return false;
  n.size += static_cast<std::int64_t>(bytes.size());
  return true;
}

int NewFileDone(NewFile& n, FileHandle* old) {
  int result = n.evenOpen ? 0 : _mayReplace(n);
  if (result == 0) result = n.inPlace ? _putInPlace(n, old) : _moveThere(n, old);
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
