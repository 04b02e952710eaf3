// The plain tokeniser: cuts a source text into tokens.
//
//   kind  class       text
//   -1    end         empty
//   0     operator    ".AND.", ".OR.", ".NOT." as typed, or any other single character
//   1     string      from the opening double quote through the closing one, doubled quotes kept
//   2     number      digits, one dot, digits, an exponent; no sign, and never a dot first
//   3     identifier  a letter or underscore, then letters, digits, underscores, dots and colons
//   9     line feed   the line feed
//
// Spaces, tabs and carriage returns separate tokens. An identifier is tried before the operator
// words, and a dot continues an identifier, so A.AND.B is one token. Bytes of 128 and above stand
// only inside strings; elsewhere each is an operator of its own. A string without its closing
// quote is no string: its quote is an operator. Neither is one that a line feed runs through,
// since tokens end up in steps, which are lines.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mox {

constexpr int maxTokens = 100;  // in one statement, over all its lines

enum TokenKind {
  tokEnd = -1,
  tokOperator = 0,
  tokString = 1,
  tokNumber = 2,
  tokIdentifier = 3,
  tokKeyword = 4,
  tokLineFeed = 9,
};

// The tokens of a statement in two parallel arrays. Behind the last one stands the end.
struct Tokens {
  std::vector<int> kinds{tokEnd};
  std::vector<std::string> texts{std::string()};

  int count() const { return static_cast<int>(kinds.size()) - 1; }
  void add(int kind, std::string_view text);
  void drop();   // takes the last token away
  void clear();  // takes all away
};

// Adds the tokens of the text behind those that are there, until there are max in all; tokens
// beyond that are dropped. Returns how many were added.
int txt2tkn(std::string_view text, int max, Tokens& tokens);

}  // namespace mox
