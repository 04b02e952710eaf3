#include "lang/misc_lex.h"

#include "session/misc.h"

namespace mox {

namespace {

bool _isDigit(char c) { return c >= '0' && c <= '9'; }
bool _isLetter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }

size_t _skipDigits(std::string_view text, size_t i) {
  while (i < text.size() && _isDigit(text[i])) ++i;
  return i;
}

// Length of the token of one class that begins the text, 0 if none does.
size_t txtIsSTR(std::string_view text) {
  if (text.empty() || text[0] != '"') return 0;
  for (size_t i = 1; i < text.size(); ++i) {
    if (text[i] == '\n') return 0;
    if (text[i] != '"') continue;
    if (i + 1 == text.size() || text[i + 1] != '"') return i + 1;
    ++i;
  }
  return 0;
}

size_t txtIsNUM(std::string_view text) {
  size_t i = _skipDigits(text, 0);
  if (i == 0) return 0;
  if (i < text.size() && text[i] == '.') i = _skipDigits(text, i + 1);
  if (i < text.size() && (text[i] == 'E' || text[i] == 'e')) {
    ++i;
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
    i = _skipDigits(text, i);
  }
  return i;
}

size_t txtIsID(std::string_view text) {
  if (text.empty() || !(_isLetter(text[0]) || text[0] == '_')) return 0;
  size_t i = 1;
  while (i < text.size() && (_isLetter(text[i]) || _isDigit(text[i]) || text[i] == '_' ||
                             text[i] == '.' || text[i] == ':'))
    ++i;
  return i;
}

size_t txtIsOP(std::string_view text) {
  for (std::string_view word : {".AND.", ".OR.", ".NOT."})
    if (StrICmp(text.substr(0, word.size()), word) == 0) return word.size();
  return 0;
}

// In the order in which they are tried.
constexpr struct {
  int kind;
  size_t (*length)(std::string_view);
} classes[] = {
    {tokString, txtIsSTR}, {tokNumber, txtIsNUM}, {tokIdentifier, txtIsID}, {tokOperator, txtIsOP}};

}  // namespace

void Tokens::add(int kind, std::string_view text) {
  kinds.back() = kind;
  texts.back() = text;
  kinds.push_back(tokEnd);
  texts.emplace_back();
}

void Tokens::drop() {
  kinds.pop_back();
  texts.pop_back();
  kinds.back() = tokEnd;
  texts.back().clear();
}

void Tokens::clear() {
  kinds.assign(1, tokEnd);
  texts.resize(1);
  texts[0].clear();
}

int txt2tkn(std::string_view text, int max, Tokens& tokens) {
  const int before = tokens.count();
  while (tokens.count() < max) {
    size_t blanks = text.find_first_not_of(" \t\r");
    if (blanks == std::string_view::npos) break;
    text.remove_prefix(blanks);
    int kind = text[0] == '\n' ? tokLineFeed : tokOperator;
    size_t length = 0;
    for (const auto& c : classes) {
      length = c.length(text);
      if (length == 0) continue;
      kind = c.kind;
      break;
    }
    if (length == 0) length = 1;
    tokens.add(kind, text.substr(0, length));
    text.remove_prefix(length);
  }
  return tokens.count() - before;
}

}  // namespace mox
