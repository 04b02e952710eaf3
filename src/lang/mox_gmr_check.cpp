// The check of the grammar table: what would fail only when a statement is compiled or run.
//
// A rule makes steps or words. Of a row that makes steps the check reads an outline, its text with
// a mark for each thing that fills it, as the machine would: steps that the row names must exist,
// and each thing must stand where it can.

#include <algorithm>

#include "lang/mox_gmr_table.h"
#include "lang/step.h"
#include "session/misc.h"

namespace mox {

namespace {

// --- Telling of a row, as it stands in the table.

#define MOX_TEXT(...) #__VA_ARGS__
#define MOX_TEXT_OF(...) MOX_TEXT(__VA_ARGS__)

std::string _tell(Rule rule) {
  static const Lines names = split(MOX_TEXT_OF(MOX_RULES), ", ");
  return names[static_cast<int>(rule)];
}

std::string _tell(TokenKind token) {
  constexpr const char* names[] = {"STR", "NUM", "ID", "KW"};
  return token >= tokString && token <= tokKeyword ? names[token - tokString] : "a token";
}

std::string _tell(const Item& item) {
  const std::string name = item.kind == Item::kWord   ? s2qs(item.word)
                           : item.kind == Item::kRule ? _tell(item.rule)
                                                      : _tell(item.token);
  if (item.atMost > 1) return (item.atLeast > 0 ? "some(" : "rep(") + name + ")";
  return item.atLeast > 0 ? name : "opt(" + name + ")";
}

std::string _tell(const Alternative& a) {
  std::string items;
  for (const Item& item : a.items) items += (items.empty() ? "" : ", ") + _tell(item);
  return StrFmt("{%s, {%s}}: ", _tell(a.rule).c_str(), items.c_str());
}

// --- The steps.

bool _isMark(char c) { return c > nothing && c <= anyKeyword; }

// Whether a word can match: it is one token, in upper case.
bool _isToken(std::string_view word) {
  Tokens tokens;
  txt2tkn(word, 2, tokens);
  return tokens.count() == 1 && tokens.texts[0] == strUpper(std::string(word));
}

class Check {
 public:
  Check(const Grammar& grammar, bool (*isStep)(std::string_view step));
  // What is wrong with a row, or nothing.
  std::string row(const GrammarRow& row) const;

 private:
  char mark(const GrammarRow& row, const TextPiece& piece) const;
  std::string outline(const GrammarRow& row) const;
  bool step(const std::string& outline) const;
  std::string steps(const std::string& outline) const;

  const Grammar& grammar_;
  bool (*const isStep_)(std::string_view step);
  bool makesSteps_[ruleCount] = {};
};

// A rule makes steps when a row of it has a line feed, or an item that makes steps.
Check::Check(const Grammar& grammar, bool (*isStep)(std::string_view step))
    : grammar_(grammar), isStep_(isStep) {
  const auto hasSteps = [this](const GrammarRow& row) {
    return outline(row).find_first_of({'\n', anySteps}) != std::string::npos;
  };
  for (bool found = true; found;) {
    found = false;
    for (int rule = 0; rule < ruleCount; ++rule)
      if (!makesSteps_[rule] && std::ranges::any_of(grammar_.rows[rule], hasSteps))
        makesSteps_[rule] = found = true;
  }
}

char Check::mark(const GrammarRow& row, const TextPiece& piece) const {
  if (piece.kind == TextPiece::block) return piece.command->leaves;
  if (piece.kind != TextPiece::item) return anyWord;
  const Item& item = row.alternative->items[piece.number];
  if (item.kind == Item::kRule && makesSteps_[static_cast<int>(item.rule)]) return anySteps;
  return item.token == tokKeyword ? anyKeyword : anyWord;
}

std::string Check::outline(const GrammarRow& row) const {
  std::string text;
  for (const TextPiece& piece : row.pieces) {
    if (piece.kind == TextPiece::literal)
      text += piece.text;
    else if (const char filling = mark(row, piece))
      text += filling;
  }
  return text;
}

bool Check::step(const std::string& outline) const {
  if (outline == sourceMarker || outline == std::string{'=', anyKeyword}) return true;
  const std::string word = outline.substr(0, outline.find(' '));
  if (std::ranges::any_of(word, _isMark) || outline.find(anySteps) != outline.npos) return false;
  if (word == "PUSHA" || word == "SETP") return true;  // gone before a list runs
  std::string known = outline;
  std::erase_if(known, _isMark);
  return isStep_(known);
}

std::string Check::steps(const std::string& outline) const {
  const Lines lines = split(outline, "\n");
  for (const std::string& line : lines) {
    const bool last = &line == &lines.back();
    std::string text = line.substr(std::min(line.find_first_not_of(anySteps), line.size()));
    if (last ? text.empty() : step(text)) continue;
    std::ranges::replace_if(text, _isMark, '$');
    return text + (last ? " has no line feed behind it" : " is no step");
  }
  return "";
}

std::string Check::row(const GrammarRow& row) const {
  for (const Item& item : row.alternative->items) {
    if (item.kind == Item::kWord && !_isToken(item.word)) return _tell(item) + " is no token";
    if (item.kind != Item::kRule) continue;
    const int rule = static_cast<int>(item.rule);
    if (&item == row.alternative->items.data() && item.rule == row.alternative->rule)
      return "begins with itself";
    if (grammar_.rows[rule].empty()) return _tell(item.rule) + " has no row";
    if (!makesSteps_[rule]) continue;
    if (std::string fault = steps(item.absent); !fault.empty()) return fault;
  }
  if (!makesSteps_[static_cast<int>(row.alternative->rule)]) return "";
  return steps(outline(row));
}

}  // namespace

std::string GrammarFault(const std::vector<Alternative>& table,
                         bool (*isStep)(std::string_view step)) {
  const Grammar grammar(table);
  if (grammar.wrongRow)
    return _tell(*grammar.wrongRow) + std::string(grammar.wrongPiece) + " means nothing";
  const Check check(grammar, isStep);
  for (const std::vector<GrammarRow>& rows : grammar.rows)
    for (const GrammarRow& row : rows) {
      const std::string fault = check.row(row);
      if (!fault.empty()) return _tell(*row.alternative) + fault;
    }
  return "";
}

}  // namespace mox
