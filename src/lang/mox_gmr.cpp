// The engine that reads the grammar table.
//
// Matching and making text are two steps. Matching notes, for each rule and cursor, the row that
// matched or that none did, so that no stretch of tokens is parsed twice by one rule however the
// rows share their heads. Making text walks the matched rows and runs their actions.

#include "lang/mox_gmr.h"

#include <algorithm>

#include "lang/mox_gmr_table.h"
#include "session/misc.h"

namespace mox {

namespace {

const Grammar& _grammar() {
  static const Grammar grammar(g_grammar);
  return grammar;
}

// --- Matching.

using Match = GrammarMatch;
using Node = GrammarNode;

class Parse {
 public:
  Parse(CompileState& state, const Tokens& tokens) : state_(state), tokens_(tokens) {
    known_.assign(static_cast<size_t>(ruleCount * (tokens.count() + 1)), unknown);
    nodes_.clear();
    matches_.clear();
    trying_.clear();
  }

  // Node of the rule's first row that matches at the cursor, or -1.
  int rule(Rule r, int cursor);
  int end(int node) const { return nodes_[node].to; }
  // Appends the text of a node.
  void render(int node, std::string& text) const;

 private:
  static constexpr int unknown = -2;
  static constexpr int none = -1;

  bool row(const GrammarRow& row, int cursor, Node& node);
  bool once(const Item& item, int& cursor, Match& match);
  bool endWord(const Item& item, int cursor) const;
  void renderItem(const Node& node, int item, std::string& text) const;
  void source(const Node& node, int item, std::string& text) const;
  int count(const Node& node, int item) const;

  CompileState& state_;
  const Tokens& tokens_;
  std::vector<int>& known_ = state_.parse.known;
  std::vector<Node>& nodes_ = state_.parse.nodes;
  std::vector<Match>& matches_ = state_.parse.matches;
  std::vector<Match>& trying_ = state_.parse.trying;
};

int Parse::rule(Rule r, int cursor) {
  const size_t key = static_cast<size_t>(r) * (tokens_.count() + 1) + static_cast<size_t>(cursor);
  if (known_[key] != unknown) return known_[key];
  int result = known_[key] = none;  // until one matches: a rule can't begin with itself
  const std::string& token = tokens_.texts[static_cast<size_t>(cursor)];
  const char first = token.empty() ? '\0' : UpperChr(token[0]);
  const int kind = tokens_.kinds[static_cast<size_t>(cursor)];
  for (const GrammarRow& candidate : _grammar().rows[static_cast<int>(r)]) {
    Node node{};
    if ((candidate.first && candidate.first != first) ||
        (candidate.kind != anyKind && candidate.kind != kind) || !row(candidate, cursor, node))
      continue;
    result = static_cast<int>(nodes_.size());
    nodes_.push_back(node);
    break;
  }
  known_[key] = result;
  return result;
}

bool Parse::row(const GrammarRow& row, int cursor, Node& node) {
  const size_t base = trying_.size();
  int i = 0;
  for (const Item& item : row.alternative->items) {
    int times = 0;
    Match match{i++, cursor, cursor, none};
    if (!endWord(item, cursor)) {
      while (times < item.atMost && once(item, cursor, match)) {
        trying_.push_back(match);
        ++times;
      }
    }
    if (times < item.atLeast) {
      trying_.resize(base);
      return false;
    }
  }
  node = {&row, cursor, static_cast<int>(matches_.size()), static_cast<int>(trying_.size() - base)};
  matches_.insert(matches_.end(), trying_.begin() + static_cast<long>(base), trying_.end());
  trying_.resize(base);
  return true;
}

bool Parse::once(const Item& item, int& cursor, Match& match) {
  match.from = cursor;
  match.node = none;
  switch (item.kind) {
    case Item::kWord:
      if (tokens_.kinds[cursor] == tokEnd || !Match4(tokens_.texts[cursor], item.word))
        return false;
      ++cursor;
      break;
    case Item::kToken:
      if (tokens_.kinds[cursor] != item.token) return false;
      ++cursor;
      break;
    case Item::kRule: {
      match.node = rule(item.rule, cursor);
      // A repeated rule that takes nothing would repeat for ever.
      if (match.node == none || (item.atMost > 1 && end(match.node) == cursor)) return false;
      cursor = end(match.node);
      break;
    }
  }
  match.to = cursor;
  return true;
}

bool Parse::endWord(const Item& item, int cursor) const {
  if (tokens_.kinds[cursor] != tokKeyword) return false;
  return std::any_of(item.endWords.begin(), item.endWords.end(),
                     [&](const char* word) { return tokens_.texts[cursor] == word; });
}

// --- Making text.

int Parse::count(const Node& node, int item) const {
  int n = 0;
  for (int m = node.firstMatch; m < node.firstMatch + node.matchCount; ++m)
    n += matches_[m].item == item;
  return n;
}

void Parse::renderItem(const Node& node, int item, std::string& text) const {
  bool present = false;
  for (int m = node.firstMatch; m < node.firstMatch + node.matchCount; ++m) {
    const Match& match = matches_[m];
    if (match.item != item) continue;
    present = true;
    if (match.node == none)
      text += tokens_.texts[match.from];
    else
      render(match.node, text);
  }
  if (!present) text += node.row->alternative->items[item].absent;
}

void Parse::source(const Node& node, int item, std::string& text) const {
  for (int m = node.firstMatch; m < node.firstMatch + node.matchCount; ++m)
    if (matches_[m].item == item) text += langSrc(tokens_, matches_[m].from, matches_[m].to);
}

void Parse::render(int number, std::string& text) const {
  const Node& node = nodes_[number];
  // Where the row has to do with the block stack, the actions of its items come first.
  std::vector<std::string> made;
  if (node.row->usesBlocks) {
    made.resize(node.row->alternative->items.size());
    for (size_t i = 0; i < made.size(); ++i) renderItem(node, static_cast<int>(i), made[i]);
  }
  for (const TextPiece& p : node.row->pieces) {
    switch (p.kind) {
      case TextPiece::literal: text += p.text; break;
      case TextPiece::item:
        if (made.empty())
          renderItem(node, p.number, text);
        else
          text += made[p.number];
        break;
      case TextPiece::source: source(node, p.number, text); break;
      case TextPiece::count: text += std::to_string(count(node, p.number)); break;
      case TextPiece::block: p.command->run(state_, p.type, text); break;
    }
  }
}

int _compile(Rule rule, CompileState& state, int& cursor, const Tokens& tokens, std::string& text) {
  Parse parse(state, tokens);
  const int node = parse.rule(rule, cursor);
  if (node < 0) return 0;
  text.clear();
  parse.render(node, text);
  cursor = parse.end(node);
  return 1;
}

}  // namespace

int lrline(CompileState& state, int& cursor, const Tokens& tokens, std::string& text) {
  return _compile(Rule::line, state, cursor, tokens, text);
}

int lrexpr(CompileState& state, int& cursor, const Tokens& tokens, std::string& text) {
  return _compile(Rule::expr, state, cursor, tokens, text);
}

}  // namespace mox
