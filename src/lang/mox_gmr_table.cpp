#include "lang/mox_gmr_table.h"

#include <algorithm>
#include <charconv>

#include "session/misc.h"

namespace mox {

namespace {

using State = CompileState;
using Text = std::string;

// clang-format off
constexpr BlockCommand blockCommands[] = {
    {"BL",      false, anyWord,  [](State& s, BlockType, Text& t) { t += BlkBL(s); }},
    {"LV",      false, anyWord,  [](State& s, BlockType, Text& t) { t += BlkLV(s); }},
    {"loop",    false, anyWord,  [](State& s, BlockType, Text& t) { t += BlkBL(BlkLoop(s)); }},
    {"push",    true,  nothing,  [](State& s, BlockType type, Text&) { BlkPush(s, type); }},
    {"pop",     true,  nothing,  [](State& s, BlockType type, Text&) { BlkPop(s, type); }},
    {"check",   true,  nothing,  [](State& s, BlockType type, Text&) { BlkCheck(s, type); }},
    {"else",    false, nothing,  [](State& s, BlockType, Text&) { BlkElse(s); }},
    {"next",    false, nothing,  [](State& s, BlockType, Text&) { BlkNext(s); }},
    {"endthen", false, anySteps, [](State& s, BlockType, Text& t) {
       if (!BlkHasElse(s)) t += "LBL " + BlkBL(s) + "1\n";
     }},
};
// clang-format on

bool _itemPiece(TextPiece::Kind kind, std::string_view digits, size_t items, TextPiece& piece) {
  const char* const end = digits.data() + digits.size();
  unsigned n = 0;
  if (digits.empty() || std::from_chars(digits.data(), end, n).ptr != end) return false;
  piece = {kind, {}, static_cast<int>(n) - 1};
  return n >= 1 && n <= items;
}

bool _blockPiece(std::string_view name, std::string_view operand, TextPiece& piece) {
  constexpr std::pair<std::string_view, BlockType> types[] = {
      {"if", blkIf}, {"loop", blkLoop}, {"case", blkCase}};
  for (const BlockCommand& c : blockCommands) {
    if (c.name != name) continue;
    piece = {TextPiece::block, {}, 0, &c};
    if (!c.hasType) return operand.empty();
    for (const auto& [typeName, type] : types) {
      piece.type = type;
      if (typeName == operand) return true;
    }
  }
  return false;
}

// The piece of what stands between braces.
bool _bracePiece(std::string_view inside, size_t items, TextPiece& piece) {
  const size_t blank = std::min(inside.find(' '), inside.size());
  const std::string_view name = inside.substr(0, blank);
  const std::string_view operand = dlb(inside.substr(blank));
  if (name == "src") return _itemPiece(TextPiece::source, operand, items, piece);
  if (name == "count") return _itemPiece(TextPiece::count, operand, items, piece);
  return _blockPiece(name, operand, piece);
}

// Cuts the text of the row: nothing, or the part of it that means nothing.
std::string_view _cutText(GrammarRow& row) {
  const size_t items = row.alternative->items.size();
  for (std::string_view text = row.alternative->text; !text.empty();) {
    size_t length = std::min(text.find_first_of("${"), text.size());
    TextPiece piece{TextPiece::literal, text.substr(0, length)};
    bool known = true;
    if (text[0] == '$') {
      length = std::min(text.find_first_not_of("0123456789", 1), text.size());
      known = _itemPiece(TextPiece::item, text.substr(1, length - 1), items, piece);
    } else if (text[0] == '{') {
      length = std::min(text.find('}'), text.size() - 1) + 1;
      known = text[length - 1] == '}' && _bracePiece(text.substr(1, length - 2), items, piece);
    }
    if (!known) return text.substr(0, length);
    row.usesBlocks |= piece.kind == TextPiece::block;
    row.pieces.push_back(piece);
    text.remove_prefix(length);
  }
  return {};
}

}  // namespace

Grammar::Grammar(const std::vector<Alternative>& table) {
  for (const Alternative& a : table) {
    GrammarRow row{&a, {}};
    if (!a.items.empty() && a.items[0].atLeast > 0) {
      if (a.items[0].kind == Item::kWord) row.first = a.items[0].word[0];
      if (a.items[0].kind == Item::kToken) row.kind = a.items[0].token;
    }
    const std::string_view wrong = _cutText(row);
    if (wrong.empty()) {
      rows[static_cast<int>(a.rule)].push_back(std::move(row));
    } else if (!wrongRow) {
      wrongRow = &a;
      wrongPiece = wrong;
    }
  }
}

}  // namespace mox
