// Directory listings, the same on every host that has the standard file system library.
#include <filesystem>
#include <string_view>
#include <system_error>

#include "host/host.h"
#include "host/path.h"

namespace mox {

namespace fs = std::filesystem;

namespace {

char _upper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }

// True when the whole name fits the pattern. On a misfit the last star takes one byte more.
bool _fits(std::string_view name, std::string_view pattern) {
  size_t n = 0, p = 0, star = pattern.npos, starName = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      starName = n;
    } else if (p < pattern.size() && (pattern[p] == '?' || _upper(pattern[p]) == _upper(name[n]))) {
      ++n;
      ++p;
    } else if (star != pattern.npos) {
      p = star + 1;
      n = ++starName;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', p) == pattern.npos;
}

std::vector<std::string> _GetDirFileList(const std::string& pattern, bool dirs) {
  const fs::path path = PathOf(pattern);
  const std::string last = NameOf(path);
  const fs::path dir = path.has_parent_path() ? path.parent_path() : fs::path(".");
  std::vector<std::string> names;
  std::error_code ec;
  for (fs::directory_iterator i(dir, ec), end; !ec && i != end; i.increment(ec)) {
    std::error_code unknown;  // of a link that leads nowhere: listed as a file
    std::string name = NameOf(i->path());
    if (!name.empty() && _fits(name, last) && i->is_directory(unknown) == dirs)
      names.push_back(std::move(name));
  }
  return names;
}

}  // namespace

std::vector<std::string> OS_GetFileList(const std::string& pattern) {
  return _GetDirFileList(pattern, false);
}

std::vector<std::string> OS_GetDirList(const std::string& pattern) {
  return _GetDirFileList(pattern, true);
}

}  // namespace mox
