#include "screen/moxbrowse.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "screen/moxedit.h"
#include "screen/scr.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/options.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int headRow = 1;
constexpr int firstRow = 2;
constexpr int shownRows = 19;
constexpr int headCols = 78;
constexpr int rowCols = 79;
constexpr int stepUp = 5;  // records by which the window moves up
constexpr int deletedCol = 32;
constexpr int lastPan = 31;
constexpr std::string_view hint =
    "Ctrl-W saves, Ctrl-Q leaves, Up, Down rows, Tab, Ctrl-A columns, Ctrl-U deletes";

struct View {
  int start = 0;  // record in the first row
  int off = 0;    // first field shown
  int row = 0;    // of the current record in the window
  bool repaint = true;
  bool refresh = true;  // load the current row again
  Lines texts, saved;   // the current row from off on: as edited, and as loaded
};

int getIndent(int field) {
  int col = 0;
  for (int f = 0; f < field; ++f) col += dbLen(selectedArea, f) + 1;
  return col;
}

void SayHeadline() {
  ScrSay(0, 0, StrFmt("RECORD # :%05d", dbRECNO(selectedArea)));
  ScrSayInsert(g_opt[optINSERT]);
  ScrSay(0, deletedCol, dbDELETED(selectedArea) ? "DELETED" : "       ");
}

void SayFieldline(int off) {
  std::string line;
  for (int f = off; f < dbCOLS(selectedArea); ++f) {
    const size_t length = static_cast<size_t>(dbLen(selectedArea, f));
    if (line.size() + length > headCols) break;
    std::string name = dbName(selectedArea, f);
    name.resize(length > name.size() ? name.size() : length);
    line += ScrPlain(name) + std::string(length - name.size(), '-') + ' ';
  }
  if (!line.empty()) line.pop_back();
  ScrSay(headRow, 0, line);
}

int GetRow(int off, Lines& texts) {
  texts.clear();
  for (int f = off; f < dbCOLS(selectedArea); ++f) {
    texts.emplace_back(dbVal(selectedArea, f));
    texts.back().resize(static_cast<size_t>(dbLen(selectedArea, f)), ' ');
  }
  return static_cast<int>(texts.size());
}

int SayRow(int off, int row, bool reverse, const Lines& texts) {
  int n = 0;
  for (; n < static_cast<int>(texts.size()); ++n) {
    const int col = getIndent(off + n) - getIndent(off);
    if (col + dbLen(selectedArea, off + n) > rowCols) break;
    if (reverse)
      ScrSayRev(row, col, texts[n]);
    else
      ScrSay(row, col, ScrDrawn(texts[n]));
  }
  return n;
}

void WriteRow(const View& v) {
  dbRepl0(selectedArea);
  for (size_t i = 0; i < v.texts.size(); ++i) {
    const int field = v.off + static_cast<int>(i);
    if (!StaysStored(field, v.texts[i], v.saved[i]))
      dbSetVal(selectedArea, field, s2qs(v.texts[i]));
  }
  dbReplace(selectedArea);
}

bool doSkip(int count) {
  const int before = dbRECNO(selectedArea);
  dbSkip(selectedArea, count);
  return dbRECNO(selectedArea) != before;
}

// Brings a number into the field's form, without the sign column when it has no room for it. A
// number that doesn't fit stays as it was before.
void ReformatVal(int field, std::string& text, const std::string& before) {
  if (dbTyp(selectedArea, field) != 'N') return;
  const double x = TxtToDbl(text);
  const int length = dbLen(selectedArea, field), decimals = dbDec(selectedArea, field);
  std::string form = FmtFixSigned(x, length, decimals);
  if (form.size() > text.size()) form = FmtFix(x, length, decimals);
  text = form.size() > text.size() ? before : form;
}

// Goes to the current row, or to the last one that there is.
void _goToRow(View& v) {
  dbSkipTo(selectedArea, v.start);
  for (int i = 0; i < v.row; ++i) {
    if (doSkip(1)) continue;
    v.row = i;
    dbSkipTo(selectedArea, v.start);
    dbSkip(selectedArea, v.row);
  }
}

void _paint(View& v) {
  ScrClear();
  SayHeadline();
  SayFieldline(v.off);
  dbSkipTo(selectedArea, v.start);
  for (int i = 0; i < shownRows && !dbEOF(selectedArea); ++i) {
    Lines texts;
    GetRow(v.off, texts);
    SayRow(v.off, firstRow + i, false, texts);
    dbSkip(selectedArea, 1);
  }
  v.repaint = false;
  v.refresh = true;
}

void _load(View& v) {
  _goToRow(v);
  GetRow(v.off, v.texts);
  v.saved = v.texts;
  SayHeadline();
  SayRow(v.off, firstRow + v.row, true, v.texts);
  v.refresh = false;
}

// A record that was changed may stand elsewhere in the order.
void _writeIfChanged(View& v) {
  if (v.texts == v.saved) return;
  WriteRow(v);
  v.repaint = true;
}

void _leaveRow(View& v) {
  SayRow(v.off, firstRow + v.row, false, v.texts);
  v.refresh = true;
  _writeIfChanged(v);
}

void _rowUp(View& v) {
  _leaveRow(v);
  if (--v.row >= 0) return;
  v.repaint = true;
  dbSkipTo(selectedArea, v.start);
  if (doSkip(-stepUp)) {
    v.row = stepUp - 1;
  } else {
    dbSkipTo(selectedArea, v.start);  // running off the front lost the place in the index
    doSkip(-1);
    v.row = 0;
  }
  v.start = dbRECNO(selectedArea);
}

void _rowDown(View& v) {
  _leaveRow(v);
  dbSkipTo(selectedArea, v.start);
  if (v.row + 1 < shownRows) {
    if (doSkip(v.row + 1)) ++v.row;
  } else if (doSkip(shownRows)) {
    v.start = dbRECNO(selectedArea);
    v.row = 0;
    v.repaint = true;
  }
}

void _pan(View& v, int off) {
  v.off = off;
  v.repaint = true;
}

// Edits the first field shown of the current row; returns the key.
int _editField(View& v) {
  std::string none;
  std::string& text = v.texts.empty() ? none : v.texts[0];
  const std::string before = text;
  const int row = firstRow + v.row;
  const int key = ScrGet(row, 0, text, dbTyp(selectedArea, v.off), "");
  if (v.texts.empty() || !StaysStored(v.off, text, v.saved[0])) ReformatVal(v.off, text, before);
  ScrSayRev(row, 0, text);
  return key;
}

void _actOnKey(View& v, int key) {
  const int last = dbCOLS(selectedArea) - 1;
  // A text that ran into the rows below leaves them to be drawn again.
  const bool wide = !v.texts.empty() && static_cast<int>(v.texts[0].size()) > ScrColumns();
  switch (key) {
    case keyCtrlA:
      if (v.off > 0) _pan(v, v.off - 1);
      break;
    case keyCtrlZ: _pan(v, std::max(v.off - 1, 0)); break;
    case keyCtrlB: _pan(v, v.off < last ? v.off + 1 : v.off); break;
    case keyCtrlF:
    case keyTab:
      if (v.off <= lastPan && v.off < last) _pan(v, v.off + 1);
      break;
    case keyUp:
      _rowUp(v);
      v.repaint |= wide;
      break;
    case keyDown:
      _rowDown(v);
      v.repaint |= wide;
      break;
    case keyMark:
      if (dbDELETED(selectedArea))
        dbRecall(selectedArea);
      else
        dbDelete(selectedArea);
      SayHeadline();
      break;
    case keySave: _writeIfChanged(v); break;
  }
}

}  // namespace

int MoxBrowse() {
  if (!DbChk()) return 0;
  const ScrKeys keys(hint);
  const int colon = g_opt[optCOLON];
  g_opt[optCOLON] = 0;  // fields stand at their exact columns
  g_opt[optINSERT] = 0;
  View v;
  v.start = dbRECNO(selectedArea);
  ScrNewPage();
  for (int key = 0; key != keyAbandon && key != keySave;) {
    if (v.repaint) _paint(v);
    if (v.refresh) _load(v);
    key = _editField(v);
    _actOnKey(v, key);
  }
  g_opt[optCOLON] = colon;
  ScrLeave();
  return 0;
}

}  // namespace mox
