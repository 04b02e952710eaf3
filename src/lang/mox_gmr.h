// The grammar: rules that turn tokens into step text.
//
// The language is one table, a row an alternative (mox_gmr_rules.cpp), read by one small engine
// (mox_gmr.cpp). A rule is the rows of its name, tried in order; the first that matches wins. A
// row has the items that it takes and the text that it makes of them.
//
// Items: a word matches a token by Match4, a token class takes any token of its kind, a rule is
// matched in turn. opt() may be absent, and its default text then stands for it; rep() repeats
// from 0 on, some() from 1 on, their texts joined.
//
// Text: what stands in it is step text, each step closed by a line feed, except for
//   $n            the text of item n, counted from 1; of a word or token, the token itself
//   {src n}       the source of item n, which is parsed but not compiled here
//   {count n}     how often item n was repeated
//   {BL} {LV}     label texts of the top block; {loop} the BL of the nearest open loop
//   {push b} {pop b} {check b} {else} {next}   actions on the block stack (mox_blk.h); b is the
//                 type of a block: if, loop or case
//   {endthen}     "LBL BL1" and a line feed unless the block has an ELSE
// The step ":*" stands where the statement's source belongs; the compile driver replaces it.
//
// A row whose items don't all match leaves no trace. Actions run when the text is made, behind
// those of the items. A rule that comes back to itself before it took a token doesn't match there.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lang/compile_state.h"
#include "lang/mox_lex.h"

namespace mox {

// The rules: statements, clauses, expressions. A macro, so that a rule has its name as text too.
// clang-format off
#define MOX_RULES                                                                                 \
  line, stmnts2, statement, print2, go2, next, display2, apnd2, fwv, fwvs, copy2, sort2, upd2a,   \
  upd2b, reset2, at2, atsay, atget, picture, wait2, clr2, help2, opt2,                            \
                                                                                                  \
  fn, fn2, filelist, ids, id2, fieldlst, tovar, tovars, scope, scopeA, forexprX, elst, elst2,     \
  elstX, elstX2, exprX, patn, memPatn, mem, memlst, cmem, sdf, delimited,                         \
                                                                                                  \
  expr, expr2, cmp, cmp2, addsub, addsub2, muldiv, muldiv2, power, unary, factor, fun2, lval, any
// clang-format on
enum class Rule { MOX_RULES, ruleCount };

struct Item {
  enum Kind { kWord, kToken, kRule } kind;
  const char* word = nullptr;   // kWord: the pattern
  TokenKind token = tokEnd;     // kToken
  Rule rule = Rule::ruleCount;  // kRule
  int atLeast = 1;              // repetitions: 1 and 1, or as opt, rep, some say
  int atMost = 1;
  const char* absent = "";            // text of an optional item that isn't there
  std::vector<const char*> endWords;  // reserved words before which an optional item isn't tried

  Item(const char* pattern) : kind(kWord), word(pattern) {}
  Item(TokenKind k) : kind(kToken), token(k) {}
  Item(Rule r) : kind(kRule), rule(r) {}
};

struct Alternative {
  Rule rule;
  std::vector<Item> items;
  const char* text;
};

// The table. The rows of a rule stand together.
extern const std::vector<Alternative> g_grammar;

// The first fault of a table, told with the rule and the items of its row, or nothing. isStep says
// whether the machine has a step: its word and, where nothing of the row fills it, its operand.
std::string GrammarFault(const std::vector<Alternative>& table,
                         bool (*isStep)(std::string_view step));

// The entries: compile a statement line, or an expression, from the cursor on. On success the
// cursor stands behind what was taken, text holds the steps, and the result is 1; otherwise
// nothing changes and the result is 0.
int lrline(CompileState& state, int& cursor, const Tokens& tokens, std::string& text);
int lrexpr(CompileState& state, int& cursor, const Tokens& tokens, std::string& text);

}  // namespace mox
