#include "session/files.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <vector>

#include "host/file.h"
#include "host/host.h"
#include "host/path.h"
#include "session/session.h"

namespace mox {

namespace fs = std::filesystem;

namespace {

constexpr int _fpSlots = 10;
constexpr int _fpFirst = 2;  // the first slot for files
struct FpSlot {
  std::FILE* stream = nullptr;
  bool ended = false;  // a read found the end of the text
  TextReader reader{stream};
};
FpSlot k7_fp[_fpSlots];

bool _isOpen(int slot) { return slot >= 0 && slot < _fpSlots && k7_fp[slot].stream; }

std::vector<const FileUse*> _uses;

// Other programs mark a text in UTF-8 with these bytes in front, which are no part of it.
void _skipByteOrderMark(std::FILE* f) {
  constexpr std::string_view mark = "\xEF\xBB\xBF";
  for (const char c : mark) {
    if (std::getc(f) == static_cast<unsigned char>(c)) continue;
    std::rewind(f);
    return;
  }
}

}  // namespace

File FileOpen(const std::string& path, const char* mode) {
  const fs::path named = PathOf(path);
  std::error_code ec;
  const fs::file_status status = fs::status(named, ec);
  if (named.empty() || (fs::exists(status) && !fs::is_regular_file(status) &&
                        (*mode == 'r' || !fs::is_character_file(status))))
    return nullptr;
  return File(OS_StreamOpen(path, mode));
}

std::string FnFind(const std::string& path) {
  const fs::path asked = PathOf(path);
  std::error_code ec;
  const fs::file_status status = fs::status(asked, ec);
  if (fs::exists(status) && !fs::is_directory(status)) return path;

  const std::string name = NameOf(asked);
  if (name.empty()) return path;
  const fs::path dir = asked.has_parent_path() ? asked.parent_path() : fs::path(".");
  std::string found;
  for (fs::directory_iterator i(dir, ec), end; !ec && i != end; i.increment(ec)) {
    std::string other = NameOf(i->path());
    std::error_code unknown;
    if (StrICmp(other, name) != 0 || !i->is_regular_file(unknown)) continue;
    if (!found.empty()) return path;
    found = std::move(other);
  }
  if (ec || found.empty()) return path;
  return path.substr(0, path.size() - name.size()) + found;
}

bool SameFile(const std::string& a, const std::string& b) {
  std::error_code ec;
  return fs::equivalent(PathOf(a), PathOf(b), ec) && !ec;
}

bool FileExists(const std::string& path) {
  std::error_code ec;
  return fs::exists(fs::symlink_status(PathOf(path), ec));
}

bool FileDelete(const std::string& path) {
  const fs::path file = PathOf(path);
  std::error_code ec;
  const fs::file_status status = fs::symlink_status(file, ec);
  return (fs::is_regular_file(status) || fs::is_symlink(status)) && OS_MayUseFile(FileOp::remove) &&
         fs::remove(file, ec);
}

bool FileRename(const std::string& from, const std::string& to) {
  const fs::path before = PathOf(from), after = PathOf(to);
  std::error_code ec;
  if (!fs::is_regular_file(before, ec)) return false;
  if (fs::exists(fs::symlink_status(after, ec)) && !SameFile(from, to)) return false;
  fs::rename(before, after, ec);
  return !ec;
}

FileUse::FileUse(std::string p) : path(std::move(p)) { _uses.push_back(this); }
FileUse::~FileUse() { std::erase(_uses, this); }

bool FileInUse(const std::string& path) {
  return std::any_of(_uses.begin(), _uses.end(),
                     [&](const FileUse* use) { return SameFile(use->path, path); });
}

bool ReadEnded(std::FILE* f, const std::string& path) {
  if (!std::ferror(f)) return true;
  ReadFailed(path);
  return false;
}

bool TextReader::fill() {
  constexpr size_t few = 1 << 12, many = 1 << 16;
  const size_t most = block_.size() < few ? few : many;  // mostly a file is small
  block_.resize(most);
  block_.resize(std::fread(block_.data(), 1, most, f_));
  at_ = 0;
  ended_ |= block_.empty();
  return !block_.empty();
}

bool TextReader::read(size_t max, std::string& line) {
  const auto isPlain = [](char c) { return static_cast<unsigned char>(c) > endMark; };
  line.clear();
  bool content = true;
  for (size_t n = 0; n < max;) {
    if (at_ == block_.size() && !fill()) return n > 0;
    const char* const p = block_.data() + at_;
    const size_t most = std::min(max - n, block_.size() - at_);
    size_t plain = 0;
    while (plain < most && isPlain(p[plain])) ++plain;
    if (content) line.append(p, plain);
    at_ += plain;
    n += plain;
    if (plain == most) continue;
    char c = block_[at_];
    if (c == endMark) return n > 0;  // the next read meets it again
    ++at_, ++n;
    if (c == '\r' && (at_ < block_.size() || fill()) && block_[at_] == '\n') c = block_[at_++];
    if (c == 0) content = false;
    if (content || c == '\n') line += c;
    if (c == '\n') return true;
  }
  return max > 0;
}

std::optional<Lines> ReadLines(const std::string& path) {
  const File f = FileOpen(FnFind(path), "rb");
  if (!f) return std::nullopt;
  _skipByteOrderMark(f.get());
  Lines lines;
  TextReader text(f.get());
  for (std::string line; text.read(maxLine, line);) lines.push_back(rm_nl(line));
  if (ReadEnded(f.get(), path)) return lines;
  return std::nullopt;
}

void K7Init() { FpCloseAll(); }

void FpCloseAll() {
  for (int slot = _fpFirst; slot < _fpSlots; ++slot) FpClose(slot);
  k7_fp[0] = {stdout};
  k7_fp[1] = {stdin};
}

int FpFreeFile() {
  for (int slot = 0; slot < _fpSlots; ++slot)
    if (!k7_fp[slot].stream) return slot;
  return -1;
}

int FpOpen(int slot, const std::string& path, const char* mode) {
  if (slot < _fpFirst || slot >= _fpSlots) return -1;
  if (_isOpen(slot)) return -2;
  k7_fp[slot] = {FileOpen(path, mode).release()};
  return _isOpen(slot) ? 0 : -3;
}

int FpClose(int slot) {
  if (slot < _fpFirst || slot >= _fpSlots) return -1;
  if (!_isOpen(slot)) return -2;
  std::fclose(k7_fp[slot].stream);
  k7_fp[slot] = {};
  return 0;
}

std::optional<std::string> FpLineInput(int slot) {
  if (!_isOpen(slot)) return std::nullopt;
  FpSlot& fp = k7_fp[slot];
  std::string line;
  // The standard input has one buffer, which keys and lines share.
  const bool got = fp.stream == stdin ? OS_ReadLine(maxLine, line) : fp.reader.read(maxLine, line);
  fp.ended = !got;
  if (!got) return std::nullopt;
  return std::move(rm_nl(line));
}

bool FpEOF(int slot) { return !_isOpen(slot) || k7_fp[slot].ended || k7_fp[slot].reader.ended(); }

int FpPrintTxt(int slot, std::string_view text) {
  if (slot < 0 || slot >= _fpSlots) return -1;
  if (!_isOpen(slot)) return -2;
  std::fwrite(text.data(), 1, text.size(), k7_fp[slot].stream);
  return 0;
}

}  // namespace mox
