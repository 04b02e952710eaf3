// The grammar table as the engine reads it: rows by rule, their texts cut into pieces.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "lang/compile_state.h"
#include "lang/mox_blk.h"
#include "lang/mox_gmr.h"

namespace mox {

constexpr int ruleCount = static_cast<int>(Rule::ruleCount);

// What the check of the table sees in the place of what fills a text.
constexpr char anySteps = '\1';
constexpr char anyWord = '\2';
constexpr char anyKeyword = '\3';
constexpr char nothing = '\0';

constexpr int anyKind = -2;  // of a token

// A name in braces that has to do with the block stack.
struct BlockCommand {
  std::string_view name;
  bool hasType;  // the type of a block stands behind the name
  char leaves;   // nothing, anyWord or anySteps
  void (*run)(CompileState& state, BlockType type, std::string& text);
};

struct TextPiece {
  enum Kind { literal, item, source, count, block } kind;
  std::string_view text;                  // of a literal
  int number = 0;                         // of an item, from 0: item, source, count
  const BlockCommand* command = nullptr;  // block
  BlockType type = {};                    // block, when the command has one
};

struct GrammarRow {
  const Alternative* alternative;
  std::vector<TextPiece> pieces;
  bool usesBlocks = false;
  // What the first token must begin with, when the row begins with a word; and its kind, when it
  // begins with a token class.
  char first = 0;
  int kind = anyKind;
};

struct Grammar {
  explicit Grammar(const std::vector<Alternative>& table);

  std::vector<GrammarRow> rows[ruleCount];
  // The first row with a piece that means nothing. Such rows are left out.
  const Alternative* wrongRow = nullptr;
  std::string_view wrongPiece;
};

}  // namespace mox
