#include "session/misc.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <ctime>

namespace mox {

namespace {

bool _isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string _addExt(std::string_view name, size_t lastPart, std::string_view ext) {
  std::string result(name);
  if (name.find('.', lastPart) == name.npos) result += ext;
  return result;
}

// Index of the first byte at or behind at that isn't one of 1 to 32.
size_t _skipLow(std::string_view text, size_t at) {
  while (at < text.size() && text[at] >= 1 && text[at] <= 32) ++at;
  return at;
}

}  // namespace

std::string StrFmt(const char* format, ...) {
  char small[256];
  va_list args, again;
  va_start(args, format);
  va_copy(again, args);
  const int n = std::vsnprintf(small, sizeof small, format, args);
  std::string text;
  if (n >= 0 && n < static_cast<int>(sizeof small)) {
    text.assign(small, static_cast<size_t>(n));
  } else if (n >= 0) {
    text.resize(static_cast<size_t>(n));
    std::vsnprintf(text.data(), text.size() + 1, format, again);
  }
  va_end(again);
  va_end(args);
  return text;
}

std::string& rm_nl(std::string& text) { return text.erase(text.find_last_not_of("\r\n") + 1); }

std::string& trim(std::string& text) {
  text.resize(dtb(text).size());
  return text;
}

std::string_view dlb(std::string_view text) {
  while (!text.empty() && _isBlank(text.front())) text.remove_prefix(1);
  return text;
}

std::string_view dtb(std::string_view text) {
  while (!text.empty() && _isBlank(text.back())) text.remove_suffix(1);
  return text;
}

bool isBlank(std::string_view text) { return dlb(text).empty(); }

char UpperChr(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; }
char LowerChr(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

std::string strUpper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) c = UpperChr(c);
  return upper;
}

int StrICmp(std::string_view a, std::string_view b) {
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    if (a[i] == b[i]) continue;
    const auto x = static_cast<unsigned char>(LowerChr(a[i]));
    const auto y = static_cast<unsigned char>(LowerChr(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  return (a.size() > b.size()) - (a.size() < b.size());
}

Lines split(std::string_view text, std::string_view separator) {
  Lines pieces;
  for (size_t hit; (hit = text.find(separator)) != text.npos;) {
    pieces.emplace_back(text.substr(0, hit));
    text.remove_prefix(hit + separator.size());
  }
  pieces.emplace_back(text);
  return pieces;
}

std::string qs2s(std::string_view quoted) {
  if (!quoted.empty() && quoted[0] == '"') quoted.remove_prefix(1);
  std::string text;
  for (;;) {
    const size_t quote = std::min(quoted.find('"'), quoted.size());
    text += quoted.substr(0, quote);
    if (quote + 1 >= quoted.size() || quoted[quote + 1] != '"') return text;
    text += '"';
    quoted.remove_prefix(quote + 2);
  }
}

std::string_view qs2s(std::string_view quoted, std::string& room) {
  const std::string_view text = quoted.substr(quoted.starts_with('"'));
  const size_t quote = std::min(text.find('"'), text.size());
  const bool doubled = text.substr(quote).starts_with("\"\"");
  return doubled ? std::string_view(room = qs2s(quoted)) : text.substr(0, quote);
}

std::string s2qs(std::string_view text) {
  std::string quoted;
  quoted.reserve(text.size() + 2);
  quoted += '"';
  for (size_t quote; (quote = text.find('"')) != text.npos; text.remove_prefix(quote + 1)) {
    quoted += text.substr(0, quote);
    quoted += "\"\"";
  }
  quoted += text;
  return quoted += '"';
}

size_t GetWord(std::string_view text, size_t max, std::string& word) {
  const size_t start = std::min(text.find_first_not_of(" \t"), text.size());
  size_t at = start;
  while (at < text.size() && at - start < max && static_cast<signed char>(text[at]) >= '0' &&
         text[at] != 127)
    ++at;
  word = text.substr(start, at - start);
  return at;
}

size_t GetWordX(std::string_view text, size_t max, std::string& word) {
  const size_t start = _skipLow(text, 0);
  size_t at = start;
  while (at < text.size() && at - start<max&& static_cast<signed char>(text[at])> 32 &&
         text[at] != 127 && text[at] != ',')
    ++at;
  word = text.substr(start, at - start);
  at = _skipLow(text, at);
  return at < text.size() && text[at] == ',' ? at + 1 : at;
}

Lines GetWords(std::string_view text, size_t slots) {
  Lines words;
  std::string word;
  while (words.size() + 1 < slots) {
    const size_t used = GetWord(text, 80, word);
    if (used == 0) break;
    words.push_back(word);
    text.remove_prefix(used);
  }
  return words;
}

int findndx(std::string_view key, std::span<const std::string_view> names) {
  const auto less = [](std::string_view a, std::string_view b) { return StrICmp(a, b) < 0; };
  const auto at = std::lower_bound(names.begin(), names.end(), key, less);
  return at != names.end() && StrICmp(*at, key) == 0 ? static_cast<int>(at - names.begin()) : -1;
}

std::string FnExtDflt(std::string_view name, std::string_view ext) {
  size_t slash = name.rfind('/');
  if (slash == name.npos) slash = name.rfind('\\');
  return _addExt(name, slash == name.npos ? 0 : slash, ext);
}

std::string FnExt(std::string_view name, std::string_view ext) { return _addExt(name, 0, ext); }

int ArgGet(Lines& arguments, std::string_view name) {
  const auto hit = std::find_if(arguments.begin(), arguments.end(),
                                [&](const std::string& arg) { return StrICmp(arg, name) == 0; });
  if (hit == arguments.end()) return 0;
  arguments.erase(hit);
  return 1;
}

Date DateToday() {
  const std::time_t now = std::time(nullptr);
  const std::tm* local = std::localtime(&now);
  if (!local) return {1, 1, 0};
  return {local->tm_mday, local->tm_mon + 1, local->tm_year % 100};
}

std::string DateNow() {
  const Date today = DateToday();
  return StrFmt("%02d/%02d/%02d", today.day, today.month, today.year);
}

}  // namespace mox
