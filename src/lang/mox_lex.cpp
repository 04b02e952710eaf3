#include "lang/mox_lex.h"

#include <algorithm>
#include <iterator>

#include "lang/step.h"
#include "session/misc.h"

namespace mox {

namespace {

constexpr std::string_view keywords[] = {
    "ABS",  "ALL",      "ASC",    "CHR",   "COLOR", "DATE",  "DELETED", "DIR", "EOF",
    "FOR",  "FREEFILE", "INKEY",  "INSTR", "INT",   "LCASE", "LEFT",    "LEN", "MID",
    "NEXT", "RECNO",    "RECORD", "RIGHT", "RND",   "RUN",   "SDIR",    "SGN", "SIN",
    "SQR",  "STR",      "TEST",   "TO",    "TRIM",  "TYPE3", "UCASE",   "VAL",
};

static_assert(std::is_sorted(std::begin(keywords), std::end(keywords)),
              "a keyword is looked up by binary search");
static_assert(std::all_of(std::begin(keywords), std::end(keywords),
                          [](std::string_view word) { return word.size() < maxWord; }),
              "the step word of a function is = and its name, and it must not be cut");

// Whether the text is one of them, ignoring case.
bool is_kw(std::string_view text) { return findndx(text, keywords) >= 0; }

// True when the texts of two tokens, joined, are read as the same two tokens.
bool _staysApart(const Tokens& tokens, int first) {
  Tokens again;
  txt2tkn(tokens.texts[first] + tokens.texts[first + 1], 3, again);
  return again.count() == 2 && again.texts[0] == tokens.texts[first];
}

}  // namespace

const std::span<const std::string_view> g_keywords = keywords;

int prog2tkn(std::string_view text, int max, Tokens& tokens) {
  const int added = txt2tkn(text, max, tokens);
  for (int i = tokens.count() - added; i < tokens.count(); ++i) {
    if (tokens.kinds[i] != tokIdentifier || !is_kw(tokens.texts[i])) continue;
    tokens.kinds[i] = tokKeyword;
    tokens.texts[i] = strUpper(tokens.texts[i]);
  }
  return added;
}

bool Match4(std::string_view token, std::string_view pattern) {
  if (token.size() > pattern.size()) return false;
  for (size_t i = 0; i < token.size(); ++i)
    if (UpperChr(token[i]) != pattern[i]) return false;
  return token.size() >= 4 || token.size() == pattern.size();
}

std::string langSrc(const Tokens& tokens, int from, int to) {
  std::string source;
  for (int i = from; i < to; ++i) {
    source += tokens.texts[i];
    if (i + 1 < to && !_staysApart(tokens, i)) source += ' ';
  }
  return source;
}

}  // namespace mox
