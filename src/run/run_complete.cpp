// Completion: a reader of the grammar table that follows every way through it, to learn what may
// stand behind the tokens of a line.

#include "run/run_complete.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/host.h"
#include "lang/mox_gmr.h"
#include "lang/mox_lex.h"
#include "run/run.h"
#include "session/options.h"
#include "store/db.h"
#include "vars/vars.h"

namespace mox {

namespace {

unsigned char _unsigned(char c) { return static_cast<unsigned char>(c); }

// --- What may follow.

// An item that may stand behind the last token, and the word item ahead of it in its row, if any.
struct Due {
  const Alternative* row;
  const Item* item;
  std::string_view behind;
};

class Reader {
 public:
  explicit Reader(const Tokens& tokens) : tokens_(tokens) { ends(Rule::line, 0); }
  std::vector<Due> due;

 private:
  using Cursors = std::set<int>;

  const Cursors& ends(Rule rule, int cursor);
  Cursors rowEnds(const Alternative& row, int cursor);
  Cursors once(const Item& item, const Cursors& from);

  const Tokens& tokens_;
  std::map<std::pair<Rule, int>, Cursors> known_;  // where a rule that begins at a cursor may end
};

const Reader::Cursors& Reader::ends(Rule rule, int cursor) {
  const auto [known, fresh] = known_.try_emplace({rule, cursor});
  if (!fresh) return known->second;
  Cursors found;
  for (const Alternative& row : g_grammar)
    if (row.rule == rule) found.merge(rowEnds(row, cursor));
  return known->second = std::move(found);
}

Reader::Cursors Reader::rowEnds(const Alternative& row, int cursor) {
  Cursors here{cursor};
  std::string_view behind;
  for (const Item& item : row.items) {
    Cursors all, front = here;
    for (int times = 0; !front.empty() && times < item.atMost; ++times) {
      if (front.contains(tokens_.count())) due.push_back({&row, &item, behind});
      Cursors next = once(item, front);
      front.clear();
      for (int end : next)
        if (all.insert(end).second) front.insert(end);
    }
    if (item.atLeast == 0) all.merge(here);
    here = std::move(all);
    if (here.empty()) break;
    if (item.kind == Item::kWord) behind = item.word;
  }
  return here;
}

Reader::Cursors Reader::once(const Item& item, const Cursors& from) {
  Cursors found;
  for (int cursor : from) {
    const int kind = tokens_.kinds[cursor];
    if (item.kind == Item::kRule)
      found.insert(ends(item.rule, cursor).begin(), ends(item.rule, cursor).end());
    else if (kind != tokEnd &&
             (item.kind == Item::kToken ? kind == item.token
                                        : Match4(tokens_.texts[cursor], item.word)))
      found.insert(cursor + 1);
  }
  return found;
}

// --- The texts for it.

struct Found {
  std::string_view prefix;
  Lines texts;
};

// The kind of the token that a text is; tokEnd when it is none alone.
int _kindOf(std::string_view text) {
  Tokens tokens;
  prog2tkn(text, 2, tokens);
  return tokens.count() == 1 && tokens.texts[0].size() == text.size() ? tokens.kinds[0] : tokEnd;
}

bool _begins(std::string_view text, std::string_view prefix) {
  return StrICmp(text.substr(0, prefix.size()), prefix) == 0;
}

// Adds a word as the prefix goes on: in small letters if its last letter is one.
void _addWord(Found& found, std::string_view word) {
  if (!_begins(word, found.prefix)) return;
  const bool small = !found.prefix.empty() && std::islower(_unsigned(found.prefix.back()));
  std::string text(found.prefix);
  for (char c : word.substr(text.size())) text += small ? LowerChr(c) : c;
  found.texts.push_back(std::move(text));
}

void _addFields(Found& found) {
  for (int area = 0; area < maxAreas; ++area)
    for (int f = 0; dbOPEN(area) && f < dbCOLS(area); ++f)
      _addWord(found, area == dbSelected() ? dbName(area, f) : af(area, dbName(area, f)));
}

void _addVariables(Found& found) {
  for (int number = 0; number < VarCount(); ++number) _addWord(found, *VarName(number));
}

void _addNames(Found& found) {
  _addFields(found);
  _addVariables(found);
}

void _addOptions(Found& found) {
  for (int slot = 0; slot < optNamed; ++slot) _addWord(found, OptName(slot));
}

void _addAreas(Found& found) {
  for (std::string_view name : {"PRIMARY", "SECONDARY"}) _addWord(found, name);
}

void _addStatements(Found& found) {
  for (const Alternative& row : g_grammar)
    if (row.rule == Rule::statement && row.items[0].kind == Item::kWord)
      _addWord(found, row.items[0].word);
}

// A function is a reserved word with a step.
void _addFunctions(Found& found) {
  for (const StepEntry& step : g_steps)
    if (step.word[0] == '=' && _kindOf(step.word.substr(1)) == tokKeyword)
      _addWord(found, std::string(step.word.substr(1)) + "(");
}

// What an identifier stands for, by its rule and the word ahead of it there, if that matters.
struct Meaning {
  Rule rule;
  std::string_view behind;
  void (*add)(Found& found);
};
constexpr Meaning _meanings[] = {
    {Rule::statement, "HELP", _addStatements},
    {Rule::statement, "ON", _addFields},
    {Rule::statement, "SELECT", _addAreas},
    {Rule::statement, "SET", _addOptions},
    {Rule::statement, "TO", _addVariables},
    {Rule::atget, "GET", _addNames},
    {Rule::factor, "&", _addVariables},
    {Rule::fwv, "", _addFields},
    {Rule::id2, "", _addNames},
    {Rule::ids, "", _addNames},
    {Rule::lval, "", _addNames},
    {Rule::patn, "", _addVariables},
    {Rule::reset2, "", _addOptions},
    {Rule::tovar, "TO", _addVariables},
    {Rule::wait2, "TO", _addVariables},
};

// Where a name of a file is due: by the first word of the statement (in the last three rows the
// second) and its rule. Files of the extension are named without it; others may stand there too.
struct FileKind {
  std::string_view subject;
  std::string_view extension;
  Rule rule;
  bool others = false;
};
constexpr FileKind _fileKinds[] = {
    {"DO", ".cmd", Rule::statement},
    {"USE", ".dbf", Rule::statement},
    {"DELETE", "", Rule::statement, true},
    {"APPEND", ".dbf", Rule::fn, true},
    {"COPY", ".dbf", Rule::fn},
    {"CREATE", ".dbf", Rule::fn},
    {"INDEX", ".ndx", Rule::fn},
    {"JOIN", ".dbf", Rule::fn},
    {"MODIFY", ".cmd", Rule::fn, true},
    {"RESTORE", ".mem", Rule::fn},
    {"SAVE", ".mem", Rule::fn},
    {"SET", ".ndx", Rule::fn},
    {"SORT", ".dbf", Rule::fn},
    {"TOTAL", ".dbf", Rule::fn},
    {"UPDATE", ".dbf", Rule::fn},
    {"USE", ".ndx", Rule::fn},
    {"ALTERNATE", "", Rule::any, true},
    {"FORMAT", ".fmt", Rule::any},
    {"FILES", "", Rule::patn, true},
};

// Adds the files of a kind that can be named in a statement: a name is an identifier there.
void _addFiles(Found& found, const FileKind& kind) {
  for (std::string name : OS_GetFileList("*")) {
    const size_t stem = name.size() - std::min(name.size(), kind.extension.size());
    if (!kind.extension.empty() && StrICmp(name.substr(stem), kind.extension) == 0)
      name.erase(stem);
    else if (!kind.others)
      continue;
    if (_kindOf(name) == tokIdentifier && _begins(name, found.prefix)) found.texts.push_back(name);
  }
}

// The first token of the last statement of a line.
int _statementStart(const Tokens& tokens) {
  int start = tokens.count();
  while (start > 0 && tokens.texts[start - 1] != ":" && !Match4(tokens.texts[start - 1], "THEN"))
    --start;
  return start;
}

void _addIdentifier(Found& found, const Due& due, const Tokens& tokens) {
  const int start = _statementStart(tokens);
  for (const FileKind& kind : _fileKinds) {
    if (kind.rule != due.row->rule) continue;
    const int subject = start + (kind.rule == Rule::any || kind.rule == Rule::patn);
    if (subject < tokens.count() && Match4(tokens.texts[subject], kind.subject))
      _addFiles(found, kind);
  }
  for (const Meaning& meaning : _meanings)
    if (meaning.rule == due.row->rule && (meaning.behind.empty() || meaning.behind == due.behind))
      meaning.add(found);
}

void _add(Found& found, const Due& due, const Tokens& tokens) {
  const Item& item = *due.item;
  if (item.kind == Item::kWord && std::string_view(item.word).size() > 1)
    _addWord(found, item.word);
  else if (item.kind == Item::kToken && item.token == tokIdentifier)
    _addIdentifier(found, due, tokens);
  else if (item.kind == Item::kToken && item.token == tokKeyword && due.row->rule == Rule::factor)
    _addFunctions(found);
}

// In a text of RENAME stands the name of any file.
void _addQuoted(Found& found) {
  const size_t folder = found.prefix.find_last_of('/') + 1;
  for (const std::string& name : OS_GetFileList(std::string(found.prefix.substr(0, folder)) + "*"))
    if (_begins(name, found.prefix.substr(folder)))
      found.texts.push_back(std::string(found.prefix.substr(0, folder)) + name + '"');
}

}  // namespace

Completion CompleteLine(std::string_view line) {
  const auto inWord = [](char c) { return std::isalnum(_unsigned(c)) || c == '_' || c == '.'; };
  const bool quoted = std::count(line.begin(), line.end(), '"') % 2 == 1;
  size_t start = line.size();
  while (start > 0 && (quoted ? line[start - 1] != '"' : inWord(line[start - 1]))) --start;

  Tokens tokens;
  prog2tkn(line.substr(0, start), maxTokens, tokens);
  Found found{line.substr(start), {}};
  if (quoted) {
    if (Match4(tokens.texts[_statementStart(tokens)], "RENAME")) _addQuoted(found);
  } else {
    for (const Due& due : Reader(tokens).due) _add(found, due, tokens);
  }
  std::sort(found.texts.begin(), found.texts.end());
  found.texts.erase(std::unique(found.texts.begin(), found.texts.end()), found.texts.end());
  return {start, std::move(found.texts)};
}

}  // namespace mox
