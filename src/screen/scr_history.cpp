#include "screen/scr_history.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <thread>

#include "host/file.h"
#include "host/host.h"
#include "host/path.h"
#include "session/files.h"
#include "session/misc.h"
#include "session/newfile.h"

namespace mox {

namespace fs = std::filesystem;

namespace {

constexpr size_t keptLines = 1000;
constexpr size_t mostLines = 2000;  // in the file, before it is cut
constexpr size_t longestLine = 4096;
constexpr int turnTries = 50;
constexpr auto turnEvery = std::chrono::milliseconds(10);
constexpr fs::perms userOnly = fs::perms::owner_read | fs::perms::owner_write;

struct History {
  std::string path;  // empty: no file
  Lines lines;
  History();
};

History& _history() {
  static History history;
  return history;
}

// Makes a folder, and those above it, for the user alone.
void _makeFolder(const fs::path& folder) {
  std::error_code ec;
  if (folder.empty() || fs::exists(folder, ec)) return;
  _makeFolder(folder.parent_path());
  if (fs::create_directory(folder, ec)) fs::permissions(folder, fs::perms::owner_all, ec);
}

std::string _findPath() {
  if (const auto named = OS_Variable("MOX_HISTORY")) {
    std::error_code ec;
    const bool other = fs::exists(PathOf(*named), ec) && !fs::is_regular_file(PathOf(*named), ec);
    return other || StrICmp(*named, "off") == 0 ? "" : *named;
  }
  const std::string state = OS_StateDir();
  if (state.empty()) return {};
  const std::string folder = state + "/mox";
  _makeFolder(PathOf(folder));
  return folder + "/history";
}

// The turn of one session to write the file. It waits for another's, but not for long, and where
// the file system has no locks each has its own at once.
struct Turn {
  explicit Turn(const std::string& path) : lock(OS_FileOpen(path + ".lock", FileMode::make)) {
    for (int i = 0; i < turnTries && lock != noFile && !ours; ++i) {
      ours = OS_FileKeep(lock, path + ".lock");
      if (!ours) std::this_thread::sleep_for(turnEvery);
    }
  }
  ~Turn() { OS_FileClose(lock); }
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

  const FileHandle lock;
  bool ours = false;
};

// A line that the prompt can't have taken, as in a damaged file, would be no help.
bool _isSound(const std::string& line) {
  const auto control = [](unsigned char c) { return c < ' ' || c == 127; };
  return !isBlank(line) && line.size() <= maxLine &&
         std::none_of(line.begin(), line.end(), control);
}

// All lines of the file; nothing of the sort when it can't be read.
Lines _readFile(const std::string& path) {
  Lines lines;
  const File f = FileOpen(path, "rb");
  TextReader text(f.get());
  for (std::string line; f && text.read(longestLine, line);)
    if (_isSound(rm_nl(line))) lines.push_back(line);
  return lines;
}

void _keepNewest(Lines& lines) {
  if (lines.size() > keptLines) lines.erase(lines.begin(), lines.end() - keptLines);
}

// Cuts the file to its newest lines, unless another session has just done so.
void _cutFile(const std::string& path) {
  const Turn turn(path);
  Lines lines = _readFile(path);
  NewFile n;
  if (!turn.ours || lines.size() <= mostLines || NewFileOpen(n, path) != 0) return;
  _keepNewest(lines);
  std::string bytes;
  for (const std::string& line : lines) bytes += line + '\n';
  std::error_code ec;
  fs::permissions(PathOf(n.made), userOnly, ec);
  if (NewFileAppend(n, bytes)) NewFileDone(n);
}

History::History() : path(_findPath()) {
  if (path.empty()) return;
  lines = _readFile(path);
  if (lines.size() > mostLines) _cutFile(path);
  _keepNewest(lines);
}

bool _append(const std::string& path, const std::string& line) {
  const Turn turn(path);
  const bool fresh = !FileExists(path);
  const File f = FileOpen(path, "ab");
  std::error_code ec;
  if (f && fresh) fs::permissions(PathOf(path), userOnly, ec);
  return f && std::fprintf(f.get(), "%s\n", line.c_str()) > 0 && std::fflush(f.get()) == 0;
}

}  // namespace

size_t HistCount() { return _history().lines.size(); }

const std::string& HistLine(size_t i) { return _history().lines[i]; }

void HistAdd(const std::string& line) {
  History& history = _history();
  if (isBlank(line) || (!history.lines.empty() && history.lines.back() == line)) return;
  history.lines.push_back(line);
  _keepNewest(history.lines);
  if (!history.path.empty() && !_append(history.path, line)) history.path.clear();
}

}  // namespace mox
