#include "screen/moxed.h"

#include <algorithm>
#include <string_view>

#include "host/host.h"
#include "screen/scr.h"
#include "session/error.h"
#include "session/files.h"
#include "session/newfile.h"
#include "session/session.h"

namespace mox {

namespace {

constexpr int firstRow = 1;
constexpr int shownRows = scrRows - firstRow;
constexpr int windowStep = 8;
constexpr int lastCol = scrCols - 1;
constexpr size_t maxLineBytes = 160;
constexpr size_t extension = 24;  // lines that Down adds at the end of the text
constexpr int noLine = -1;
constexpr size_t maxLetter = 4;  // bytes of a letter
constexpr std::string_view hint =
    "Ctrl-W saves, Ctrl-Q leaves, Ctrl-G deletes, Ctrl-V inserts or types over";

// The cursor stands in the window at row and col, always on a line of the text.
struct TextEditor {
  Lines& lines;
  int row = 0, col = 0;
  int top = 0;  // the line in the first row
  bool ins = true;
  std::string buffer = std::string(maxLineBytes, ' ');  // the line being changed, filled up
  int bufline = noLine;                                 // its place in the text
  bool repaint = true;

  int at() const { return top + row; }
  bool onLast() const { return at() + 1 >= static_cast<int>(lines.size()); }
  std::string& line() { return lines[at()]; }
};

void _sayLine(int row, const std::string& line) { ScrSayLine(firstRow + row, line); }

void _paint(TextEditor& e) {
  ScrClear();
  ScrSayInsert(e.ins);
  const int n = std::min(static_cast<int>(e.lines.size()) - e.top, shownRows);
  for (int i = 0; i < n; ++i) _sayLine(i, e.lines[e.top + i]);
  e.repaint = false;
}

void _up(TextEditor& e) {
  if (e.row > 0) {
    --e.row;
  } else if (e.top >= windowStep) {
    e.top -= windowStep;
    e.row = windowStep - 1;
    e.repaint = true;
  }
}

void _down(TextEditor& e) {
  if (e.onLast()) {
    e.lines.resize(e.lines.size() + extension);
    e.repaint = true;
  }
  ++e.row;
}

// Splits the line at top + row behind its first col bytes.
void _EdInsLn(int top, int row, int col, Lines& lines) {
  std::string& line = lines[top + row];
  const size_t at = std::min(static_cast<size_t>(col), line.size());
  std::string rest = line.substr(at);
  line.erase(at);
  trim(line);
  lines.insert(lines.begin() + top + row + 1, std::move(rest));
}

void _splitLine(TextEditor& e) {
  _EdInsLn(e.top, e.row, e.col, e.lines);
  ++e.row;
  e.col = 0;
  e.repaint = true;
  e.bufline = noLine;
}

void _loadBuffer(TextEditor& e) {
  if (e.bufline == e.at()) return;
  e.buffer = e.line();
  e.buffer.resize(maxLineBytes, ' ');
  e.bufline = e.at();
}

void _storeBuffer(TextEditor& e) {
  e.line() = e.buffer;
  trim(e.line());
}

void _enter(TextEditor& e, int key) {
  _loadBuffer(e);
  const size_t col = static_cast<size_t>(e.col);
  if (e.ins) {
    e.buffer.insert(col, 1, ' ');
    e.buffer.pop_back();
  }
  e.buffer[col] = static_cast<char>(key);
  if (e.col < lastCol) ++e.col;
  _storeBuffer(e);
  _sayLine(e.row, e.line());
}

// Takes the next line in behind this one, unless the two are too long for one line.
void _join(TextEditor& e) {
  std::string& next = e.lines[e.at() + 1];
  trim(e.line());
  if (e.line().size() + next.size() > maxLineBytes) return;
  e.col = static_cast<int>(e.line().size());
  e.line() += next;
  e.lines.erase(e.lines.begin() + e.at() + 1);
  e.repaint = true;
  e.bufline = noLine;
}

void _delete(TextEditor& e) {
  _loadBuffer(e);
  const size_t col = static_cast<size_t>(e.col);
  if (!isBlank(std::string_view(e.buffer).substr(col))) {
    e.buffer.erase(col, 1);
    e.buffer += ' ';
    _storeBuffer(e);
    ScrClrEol(firstRow + e.row, 0);
    _sayLine(e.row, e.line() + std::string(e.line().size() < scrCols ? 0 : maxLetter, ' '));
  } else if (!e.onLast()) {
    _join(e);
  }
}

void _actOnKey(TextEditor& e, int key) {
  switch (key) {
    case keyRight: e.col = std::min(e.col + 1, lastCol); break;
    case keyBackspace:
    case keyLeft: e.col = std::max(e.col - 1, 0); break;
    case keyUp: _up(e); break;
    case keyDown: _down(e); break;
    case keyLineFeed:
    case keyEnter: _splitLine(e); break;
    case keyInsert:
      e.ins = !e.ins;
      ScrSayInsert(e.ins);
      break;
    case keyDelete: _delete(e); break;
    default:
      if (IsPrintable(key)) _enter(e, key);
  }
  if (e.row >= shownRows) {
    e.top += windowStep;
    e.row -= windowStep;
    e.repaint = true;
  }
}

// What is saved: blank lines at the end, and blanks at the ends of lines, are not.
std::string _textOf(Lines lines) {
  while (!lines.empty() && isBlank(lines.back())) lines.pop_back();
  std::string text;
  for (std::string& line : lines) text += trim(line) + '\n';
  return text;
}

// The name, or the first numbered one that no file has.
std::string _free(const std::string& name) {
  std::string numbered = name;
  for (int n = 2; FileExists(numbered); ++n) numbered = name + std::to_string(n);
  return numbered;
}

// Edits at least one line; returns keySave, keyAbandon, or keyEnd at the end of the input.
int _EdLines(Lines& lines) {
  const ScrKeys keys(hint);
  TextEditor e{lines};
  for (;;) {
    if (e.repaint) _paint(e);
    ScrTo(firstRow + e.row, ScrColumnOf(e.line(), static_cast<size_t>(e.col)));
    const int key = ScrGetKeyOrEnd();
    if (key == keyAbandon || key == keySave || key == keyEnd) return key;
    _actOnKey(e, key);
  }
}

}  // namespace

int MoxEd(const std::string& path) {
  const std::string found = FnFind(path);
  const bool free = FileIsFree(found);
  if (!free || (FileExists(found) && !FileOpen(found, "rb"))) {
    FileErr(free ? fileCantCreate : fileInUse, found);
    return -1;
  }
  const std::string rescue = found + ".rescue";
  if (FileExists(rescue)) ScrNotice("UNSAVED LINES OF " + found + " ARE IN " + rescue);
  Lines lines = ReadLines(path).value_or(Lines());
  if (ReadHasFailed()) return -1;
  if (lines.empty()) lines.emplace_back();
  const std::string before = _textOf(lines);
  OS_HoldEnd(true);
  int key = keySave;
  std::string text;
  bool saved = false;
  for (bool first = true; key == keySave && !saved && (first || OS_KeysAreTyped()); first = false) {
    if (!first) {  // the person may make room, or leave
      ScrLeave();
      ScrNotice("CANT SAVE FILE");
    }
    key = _EdLines(lines);
    text = _textOf(lines);
    saved = key != keySave || FileWriteText(path, text) == 0;
  }
  if (key == keyEnd && OS_KeysAreTyped() && text != before) FileWriteText(_free(rescue), text);
  OS_HoldEnd(false);
  ScrLeave();
  if (!saved) SetErr("CANT SAVE FILE", "");
  return saved ? 0 : -1;
}

}  // namespace mox
