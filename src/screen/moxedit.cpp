#include "screen/moxedit.h"

#include <algorithm>
#include <cmath>
#include <string_view>

#include "screen/scr.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/options.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int firstRow = 1;
constexpr int shownRows = scrRows - firstRow;
constexpr int textCol = 10;
constexpr int deletedCol = 32;
constexpr std::string_view hint =
    "Ctrl-W saves, Ctrl-Q leaves, Enter next field, Up field before, Ctrl-U deletes";

struct RecordEditor {
  Lines texts, stored;  // as wide as their fields: as edited, and as the table has them
  int i = 0;            // the current field
  int top = 0;          // the field in the first row
  bool repaint = true;
  int key = 0;
};

int _row(const RecordEditor& e, int field) { return firstRow + field - e.top; }

void _sayDeleted() { ScrSay(0, deletedCol, dbDELETED(selectedArea) ? "DELETED" : "       "); }

void _paint(const RecordEditor& e) {
  ScrClear();
  ScrSay(0, 0, StrFmt("RECORD # %05d", dbRECNO(selectedArea)));
  ScrSayInsert(g_opt[optINSERT]);
  _sayDeleted();
  const int end = std::min(static_cast<int>(e.texts.size()), e.top + shownRows);
  for (int field = e.top; field < end; ++field) {
    ScrSay(_row(e, field), 0, ScrPlain(dbName(selectedArea, field)));
    ScrSayRev(_row(e, field), textCol, e.texts[field]);
  }
}

// True when a number has at most so many digits before the point, one less for a negative one.
bool inRange(int digits, double x) {
  if (x < 0) --digits;
  return std::fabs(x) < std::pow(10.0, digits);
}

// The number of a text in the field's form; empty when it has no room there.
std::string _inForm(const std::string& text, int field, int digits) {
  const int length = dbLen(selectedArea, field);
  const double x = TxtToDbl(text);
  std::string form;
  if (inRange(digits, x)) form = FmtFix(x, length, dbDec(selectedArea, field));
  return form.size() == static_cast<size_t>(length) ? form : "";  // rounding may add a digit
}

int _digits(int field) {
  const int decimals = dbDec(selectedArea, field);
  return dbLen(selectedArea, field) - decimals - (decimals >= 1);
}

// Brings the text of a numeric field into the field's form and draws it; a number too large for
// the field becomes 0. -1 when the field's length and decimals leave no digit before the point.
int showVal(int row, int col, std::string& text, int field) {
  if (dbTyp(selectedArea, field) != 'N') return 0;
  const int digits = _digits(field);
  if (digits < 1) return -1;
  std::string form = _inForm(text, field, digits);
  if (form.empty()) form = _inForm("0", field, digits);
  text = form;
  ScrSayRev(row, col, text);
  return 0;
}

void _editField(RecordEditor& e) {
  std::string& text = e.texts[e.i];
  e.key = ScrGet(_row(e, e.i), textCol, text, 'C', "");
  if (!StaysStored(e.i, text, e.stored[e.i])) showVal(_row(e, e.i), textCol, text, e.i);
  // A text that ran into the rows below leaves them to be drawn again.
  e.repaint = textCol + static_cast<int>(text.size()) + 2 > ScrColumns();
}

void _actOnKey(RecordEditor& e) {
  const int n = static_cast<int>(e.texts.size());
  switch (e.key) {
    case keyUp:
      if (e.i > 0) --e.i;
      break;
    case keyTab:
    case keyEnter:
    case keyDown: ++e.i; break;
    case keyMark:
      dbDelToggle(selectedArea);
      _sayDeleted();
      break;
  }
  if (e.i == n && !g_opt[optCONFIRM]) e.key = keySave;
  e.i = std::min(e.i, n - 1);
  if (e.i < e.top || e.i >= e.top + shownRows) {
    e.top = e.i;
    e.repaint = true;
  }
}

void _save(const RecordEditor& e) {
  dbRepl0(selectedArea);
  for (int field = 0; field < static_cast<int>(e.texts.size()); ++field)
    if (!StaysStored(field, e.texts[field], e.stored[field]))
      dbSetVal(selectedArea, field, s2qs(e.texts[field]));
  dbReplace(selectedArea);
}

}  // namespace

bool StaysStored(int field, const std::string& text, const std::string& stored) {
  if (text != stored) return false;
  if (dbTyp(selectedArea, field) != 'N') return dbVal(selectedArea, field).size() < text.size();
  const double x = TxtToDbl(text);
  const std::string form = FmtFix(x, dbLen(selectedArea, field), dbDec(selectedArea, field));
  return form.size() > text.size() || TxtToDbl(form) != x;
}

int MoxEdit() {
  if (!DbChk()) return 0;
  RecordEditor e;
  const ScrKeys keys(hint);
  const int n = std::min(dbCOLS(selectedArea), maxFields);
  for (int field = 0; field < n; ++field) {
    e.texts.emplace_back(dbVal(selectedArea, field));
    e.texts.back().resize(static_cast<size_t>(dbLen(selectedArea, field)), ' ');
  }
  e.stored = e.texts;
  const bool deleted = dbDELETED(selectedArea);
  while (e.i < n && e.key != keyAbandon && e.key != keySave) {
    if (e.repaint) _paint(e);
    e.repaint = false;
    _editField(e);
    _actOnKey(e);
  }
  if (e.key != keyAbandon)
    _save(e);
  else if (dbDELETED(selectedArea) != deleted)
    dbDelToggle(selectedArea);
  ScrLeave();
  return 0;
}

}  // namespace mox
