#include "screen/scr_line.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "host/host.h"
#include "screen/scr_history.h"
#include "screen/scr_shown.h"
#include "screen/scr_text.h"
#include "session/files.h"
#include "session/options.h"

namespace mox {

namespace {

// Codes of keys. A control key has its letter's place in the alphabet.
constexpr int control(char letter) { return letter & 31; }
constexpr int extended(int scanCode) { return 256 + scanCode; }
constexpr int ctrlC = control('C'), ctrlD = control('D'), ctrlG = control('G');
constexpr int backspace = control('H'), tab = control('I'), enter = control('M');
constexpr int ctrlR = control('R');
constexpr int noKey = extended(0);

constexpr size_t maxListed = 200;  // texts that Tab lists

struct Line {
  std::string prompt;            // what stands ahead of the line
  Completer complete = nullptr;  // none for an answer, which isn't remembered either
  Shown shown;
  std::string lead;  // what is shown ahead of the text during a search
  std::string text;
  size_t at = 0;         // the cursor, between letters
  size_t recalled = 0;   // the line of the history that is shown; their number: none
  std::string typed;     // the line that was typed ahead of that
  bool offered = false;  // the line is the first of those that are offered
  bool tabbed = false;   // the last key was Tab, and there was more than one way to go on
};

// For another try of the last block: its lines, those typed since the last '.', and those of the
// block that are offered one by one.
Lines _lastBlock, _typed, _offered;

void _draw(Line& l) { Show(l.shown, l.lead + l.text, l.lead.size() + l.at); }

void _drawAnew(Line& l) {
  std::printf("%s", l.prompt.c_str());
  ShowBegin(l.shown, l.prompt);
  _draw(l);
}

void _bell() {
  if (g_opt[optBELL]) std::putchar('\a');
}

// --- What the keys do.

void _set(Line& l, std::string text) {
  l.text = std::move(text);
  l.at = l.text.size();
}

// Replaces the bytes from a place up to the cursor, unless the line would grow too long.
void _replace(Line& l, size_t from, std::string_view by) {
  if (l.text.size() - (l.at - from) + by.size() > maxLine) return _bell();
  l.text.erase(from, l.at - from).insert(from, by);
  l.at = from + by.size();
}

void _left(Line& l) {
  if (l.at > 0) l.at = LetterStart(l.text, l.at);
}
void _right(Line& l) {
  if (l.at < l.text.size()) l.at = LetterEnd(l.text, l.at);
}
void _toStart(Line& l) { l.at = 0; }
void _toEnd(Line& l) { l.at = l.text.size(); }

void _eraseBack(Line& l) {
  if (l.at > 0) _replace(l, LetterStart(l.text, l.at), "");
}
void _erase(Line& l) {
  if (l.at < l.text.size()) l.text.erase(l.at, LetterEnd(l.text, l.at) - l.at);
}
void _eraseRest(Line& l) { l.text.erase(l.at); }
void _eraseFront(Line& l) { _replace(l, 0, ""); }
void _eraseWord(Line& l) {
  size_t from = l.at;
  while (from > 0 && l.text[from - 1] == ' ') --from;
  while (from > 0 && l.text[from - 1] != ' ') --from;
  _replace(l, from, "");
}

void _recall(Line& l, size_t i) {
  if (l.recalled == HistCount()) l.typed = l.text;
  l.recalled = i;
  _set(l, i == HistCount() ? l.typed : HistLine(i));
}
void _up(Line& l) {
  if (l.complete && l.recalled > 0) _recall(l, l.recalled - 1);
}
void _down(Line& l) {
  if (l.complete && l.recalled < HistCount()) _recall(l, l.recalled + 1);
}

// Brings the first line of the last block; the others are offered at the prompts that follow. A
// line that is offered is put off to the next prompt, to make room for one ahead of it.
void _retry(Line& l) {
  if (!l.complete || (_lastBlock.empty() && !l.offered)) return _bell();
  if (!l.offered) _offered = _lastBlock;
  l.offered = !l.offered;
  _set(l, l.offered ? _offered[0] : "");
}

void _clear(Line& l) {
  std::printf("\033[H\033[2J");
  _drawAnew(l);
}

// Lists texts in columns below the line.
void _list(Line& l, const Lines& texts) {
  size_t widest = 1;
  for (const std::string& text : texts) widest = std::max(widest, text.size() + 2);
  const size_t inRow = std::max<size_t>(static_cast<size_t>(l.shown.columns) / widest, 1);
  const size_t count = std::min(texts.size(), maxListed);
  Show(l.shown, l.text, l.text.size());
  for (size_t i = 0; i < count; ++i) {
    std::printf("%s%s", i % inRow == 0 ? "\n" : "", texts[i].c_str());
    if ((i + 1) % inRow != 0) std::printf("%*s", static_cast<int>(widest - texts[i].size()), "");
  }
  std::printf(count < texts.size() ? "\n...\n" : "\n");
  _drawAnew(l);
}

// The front that all texts share.
std::string _common(const Lines& texts) {
  std::string common = texts[0];
  for (const std::string& text : texts)
    common.erase(std::mismatch(common.begin(), common.end(), text.begin(), text.end()).first,
                 common.end());
  return common;
}

void _complete(Line& l) {
  if (!l.complete) return _replace(l, l.at, " ");
  const Completion found = l.complete(std::string_view(l.text).substr(0, l.at));
  if (found.texts.empty()) return _bell();
  std::string common = _common(found.texts);
  const bool whole = found.texts.size() == 1;
  if (whole && common.back() != '(' && common.back() != '/' && l.text.compare(l.at, 1, " ") != 0)
    common += ' ';
  if (whole || common.size() > l.at - found.start) return _replace(l, found.start, common);
  if (l.tabbed) return _list(l, found.texts);
  _bell();
  l.tabbed = true;
}

struct Command {
  int key;
  void (*run)(Line& l);
};
constexpr Command _commands[] = {
    {control('A'), _toStart},
    {control('B'), _left},
    {ctrlD, _erase},
    {control('E'), _toEnd},
    {control('F'), _right},
    {backspace, _eraseBack},
    {tab, _complete},
    {control('K'), _eraseRest},
    {control('L'), _clear},
    {control('N'), _down},
    {control('O'), _retry},
    {control('P'), _up},
    {control('U'), _eraseFront},
    {control('W'), _eraseWord},
    {extended(71), _toStart},
    {extended(72), _up},
    {extended(75), _left},
    {extended(77), _right},
    {extended(79), _toEnd},
    {extended(80), _down},
    {extended(83), _erase},
};

// --- The keys.

// Shows the line and waits for a key, 0 for a letter.
int _readKey(Line& l, std::string& letter) {
  for (;;) {
    _draw(l);
    const int key = OS_EditKey(letter);
    if (key == keyResized)
      ShowResized(l.shown, l.prompt, l.lead + l.text, l.lead.size() + l.at);
    else if (key == keyContinued)
      _drawAnew(l);
    // U+0080 to U+009F are control characters too.
    else if (key != 0 || letter.size() != 2 || letter[0] != '\xC2' || letter[1] >= '\xA0')
      return key;
  }
}

// Where a text has another, whatever the case; npos when it doesn't.
size_t _find(std::string_view text, std::string_view part) {
  for (size_t at = 0; at + part.size() <= text.size(); ++at)
    if (StrICmp(text.substr(at, part.size()), part) == 0) return at;
  return text.npos;
}

// Shows the newest line of the first n of the history that has the pattern, and with other isn't
// the one that is shown; without one, the bell.
void _findBack(Line& l, std::string_view pattern, size_t n, bool other) {
  while (n-- > 0) {
    const size_t at = _find(HistLine(n), pattern);
    if (at == std::string_view::npos || (other && HistLine(n) == l.text)) continue;
    _recall(l, n);
    l.at = at;
    return;
  }
  _bell();
}

// Searches the history, key by key; the key that ends it is done by the caller.
int _search(Line& l) {
  const Line before = l;
  std::string pattern, letter;
  for (;;) {
    l.lead = StrFmt("search \"%s\": ", pattern.c_str());
    const int key = _readKey(l, letter);
    if (key == ctrlR) {
      _findBack(l, pattern, l.recalled, true);
    } else if (key == 0 || (key == backspace && !pattern.empty())) {
      if (key == 0)
        pattern += letter;
      else
        pattern.erase(LetterStart(pattern, pattern.size()));
      _findBack(l, pattern, key == 0 ? std::min(l.recalled + 1, HistCount()) : HistCount(), false);
    } else {
      l.lead.clear();
      if (key != ctrlG) return key;
      l.text = before.text, l.at = before.at, l.recalled = before.recalled;
      return noKey;
    }
  }
}

// Reads keys up to the one that ends the line: false when it isn't Enter.
bool _edit(Line& l) {
  std::string letter;
  for (;;) {
    int key = _readKey(l, letter);
    if (key == ctrlR && l.complete) key = _search(l);
    const bool more = std::exchange(l.tabbed, false);
    if (key == tab) l.tabbed = more;
    if (key == keyEnd || (key == ctrlD && l.text.empty())) return false;
    if (key == enter) return true;
    if (key == 0) _replace(l, l.at, letter);
    for (const Command& command : _commands)
      if (command.key == key) command.run(l);
  }
}

bool _readLine(Line& l) {
  OS_EditLine(true);
  ShowBegin(l.shown, l.prompt);
  const bool typed = _edit(l);
  Show(l.shown, l.text, l.text.size());
  if (typed) std::printf("\n");
  OS_EditLine(false);
  if (!typed && OS_Interrupted()) std::printf("^C");
  return typed;
}

bool _plain() { return !g_opt[optSCREEN] || !OS_CanEdit(); }

}  // namespace

bool ScrReadCommand(char prompt, Completer complete, std::string& line) {
  if (_plain()) return OS_ReadLine(maxLine, line);
  if (prompt == '.') {
    if (_typed.size() > 1) {
      _lastBlock = std::exchange(_typed, {});
      _lastBlock.insert(_lastBlock.end(), _offered.begin(), _offered.end());
    }
    _typed.clear();
    _offered.clear();
  }
  Line l;
  l.prompt = {prompt, ' '};
  l.complete = complete;
  l.recalled = HistCount();
  l.offered = !_offered.empty();
  if (l.offered) _set(l, _offered[0]);
  if (!_readLine(l)) return false;
  if (l.offered) _offered.erase(_offered.begin());
  _typed.push_back(l.text);
  HistAdd(l.text);
  line = std::move(l.text);
  return true;
}

bool ScrReadAnswer(std::string_view question, std::string& line) {
  if (_plain()) return OS_ReadLine(maxLine, line);
  Line l;
  l.prompt = question;
  if (!_readLine(l)) return false;
  line = std::move(l.text);
  return true;
}

}  // namespace mox
