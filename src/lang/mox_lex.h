// Tokens of the language: the plain tokens, with the reserved words told from the identifiers.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "lang/misc_lex.h"

namespace mox {

// The reserved words, in upper case: the names of functions and the words that end a list.
extern const std::span<const std::string_view> g_keywords;

// As txt2tkn; each identifier that is a reserved word becomes a keyword, in upper case.
int prog2tkn(std::string_view text, int max, Tokens& tokens);

// The rule for all words of the language: the token, in any case, equals the pattern (which is in
// upper case), or has at least four characters and begins it.
bool Match4(std::string_view token, std::string_view pattern);

// The tokens from up to but not including to as one text from which the same tokens can be read
// again. A blank stands exactly where two tokens would otherwise merge.
std::string langSrc(const Tokens& tokens, int from, int to);

}  // namespace mox
