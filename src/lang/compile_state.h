// What one compile keeps while it lasts. Each compile has its own on its stack, so that compiles
// can stand inside each other.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace mox {

constexpr int maxBlocks = 20;  // control blocks open at once

// What matched at a stretch of tokens (mox_gmr.cpp): one repetition of an item, the tokens
// from..to, and for a rule the node of its row; a matched row, whose matches are consecutive.
struct GrammarRow;
struct GrammarMatch {
  int item;
  int from, to;
  int node;
};
struct GrammarNode {
  const GrammarRow* row;
  int to;
  int firstMatch, matchCount;
};

// The room of a parse, kept from one line to the next for its memory.
struct ParseRoom {
  std::vector<int> known;  // node, none or unknown, by rule and cursor
  std::vector<GrammarNode> nodes;
  std::vector<GrammarMatch> matches;  // of finished rows
  std::vector<GrammarMatch> trying;   // of rows under way, the innermost last
};

struct CompileState {
  std::string_view curline;  // the source line that is being compiled; the caller's text
  int curlineno = 0;         // its index in the source, from 0

  // The block stack (mox_blk.h).
  int lvl = 0;               // open blocks
  int btyp[maxBlocks] = {};  // type of each
  int bnum[maxBlocks] = {};  // number of each
  int bval[maxBlocks] = {};  // IF: 2 behind an ELSE; DO CASE: branches so far
  int bno = 1;               // number of the next block

  // The address table (addrtbl.h): labels and their step numbers.
  std::unordered_map<std::string, int> at;

  ParseRoom parse;
};

// Reports a syntax error: the text (mostly empty), a line feed, and the line with its number.
void fail(const CompileState& state, std::string_view text);

}  // namespace mox
