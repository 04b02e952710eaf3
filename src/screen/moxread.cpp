#include "screen/moxread.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "screen/moxedit.h"
#include "screen/scr.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "store/db.h"
#include "vars/vars.h"

namespace mox {

namespace {

constexpr int lastGetCol = 76;
constexpr int maxShownLength = 254;
constexpr int numberDigits = 15;
constexpr std::string_view hint =
    "Ctrl-W saves, Ctrl-Q leaves, Enter next field, Up field before, Ctrl-V inserts";

// One pending field.
struct Sv {
  int row = 0, col = 0;
  std::string name;  // of the field or the variable, upper case
  char type = 'C';   // N, C or L
  int length = 0;    // width of a field, display length of a variable
  int decimals = 0;
  std::string stored;   // the text of a field as the table has it
  std::string value;    // unformatted
  std::string edit;     // the text that is shown and edited
  std::string picture;  // empty: any
};

std::vector<Sv> _get;
int _indent = 0;  // width of the last SAY, until a GET takes it up

// The text that shows a value. A number too wide for its field shows stars before the point.
std::string _fmt(const std::string& value, char type, int length, int decimals) {
  if (type != 'N') return value;
  std::string text = FmtFixSigned(TxtToDbl(value), length, decimals);
  // A variable may hold a short text of a number that its length has room for.
  const size_t room = std::max(value.size(), static_cast<size_t>(length));
  if (text.size() <= room) return text;
  std::fill(text.begin(), text.begin() + std::min(text.find('.'), text.size()), '*');
  return text.substr(text.size() - room);
}

std::optional<Sv> svGetDb(std::string_view name) {
  const int field = dbFno(selectedArea, name);
  if (field < 0) return std::nullopt;
  Sv sv;
  sv.name = name;
  sv.type = dbTyp(selectedArea, field);
  sv.length = dbLen(selectedArea, field);
  sv.decimals = dbDec(selectedArea, field);
  sv.value = dbVal(selectedArea, field);
  sv.value.resize(static_cast<size_t>(sv.length), ' ');  // a zero byte cuts it
  sv.edit = sv.stored = sv.value;
  return sv;
}

std::optional<Sv> svGetMem(std::string_view name) {
  const int number = VarNum(name);
  if (number < 0) return std::nullopt;
  Sv sv;
  sv.name = name;
  sv.type = static_cast<char>(VarGetProp(number, propType));
  sv.length = std::clamp(VarGetProp(number, propLength), 0, maxShownLength);
  sv.decimals = std::clamp(VarGetProp(number, propDecimals), 0, maxShownLength);
  sv.value = VarGetI2(number, 0, 0).text();
  sv.edit = _fmt(sv.value, sv.type, sv.length, sv.decimals);
  return sv;
}

std::optional<Sv> svGet(std::string_view name) {
  std::optional<Sv> sv = svGetDb(name);
  if (!sv) sv = svGetMem(name);
  if (!sv) SetErr("VARIABLE CANNOT BE FOUND", name);
  return sv;
}

int svPutDb(const Sv& sv) {
  const int field = dbFno(selectedArea, sv.name);
  if (field < 0) return -1;
  if (StaysStored(field, sv.value, sv.stored)) return 0;
  dbSetVal(
      selectedArea, field,
      sv.type == 'N' ? FmtFixSigned(TxtToDbl(sv.value), sv.length, sv.decimals) : s2qs(sv.value));
  return 0;
}

int svPutMem(const Sv& sv) {
  const int number = VarNum(sv.name);
  if (number < 0) return -1;
  std::string text = sv.value;
  if (sv.type == 'L')
    text.assign(1,
                !text.empty() && std::string_view("YyTt").find(text[0]) != text.npos ? 'T' : 'F');
  else if (sv.type == 'N')
    text = FmtSci(TxtToDbl(text), numberDigits);
  return VarPutI2(number, 0, 0, text) == 0 ? 0 : -1;
}

int svPut(const Sv& sv) { return svPutDb(sv) == 0 ? 0 : svPutMem(sv); }

// Takes the edited text over as the value. Stars that nobody typed over, as they were shown, stand
// for the number that they hide.
void svUpdate(Sv& sv, std::string shown) {
  const bool stars = sv.type == 'N' && shown.find('*') != shown.npos;
  _prep(shown, sv.picture);
  if (!stars || sv.edit != shown) sv.value = sv.edit;
  sv.edit = _fmt(sv.value, sv.type, sv.length, sv.decimals);
}

// The next field from i on, in steps of 1 or -1, in which something can be typed: -1 or the number
// of fields when there is none.
int _seek(int i, int step) {
  const int n = static_cast<int>(_get.size());
  while (i >= 0 && i < n && ScrStart(_get[i].edit, _get[i].picture) < 0) i += step;
  return i;
}

// Edits the fields and returns the last key: keyAbandon when nothing is to be saved.
int _editFields() {
  const int n = static_cast<int>(_get.size());
  const ScrKeys keys(n > 0 ? hint : "");
  int key = 0;
  for (int i = _seek(0, 1); i < n && key != keyAbandon && key != keySave;) {
    Sv& sv = _get[i];
    const std::string shown = sv.edit;
    key = ScrGet(sv.row, sv.col, sv.edit, sv.type, sv.picture);
    svUpdate(sv, shown);
    ScrSayRev(sv.row, sv.col, sv.edit);
    if (key == keyUp) {
      const int before = _seek(i - 1, -1);
      if (before >= 0) i = before;
    } else if (key == keyTab || key == keyEnter || key == keyDown) {
      const int next = _seek(i + 1, 1);
      if (next < n)
        i = next;
      else if (!g_opt[optCONFIRM])
        key = keySave;
    }
  }
  return key;
}

// True when a field of the table waits on the screen.
bool _hasField() {
  return std::any_of(_get.begin(), _get.end(),
                     [](const Sv& sv) { return dbFno(selectedArea, sv.name) >= 0; });
}

}  // namespace

void AtSay(int row, int col, std::string_view text) {
  _indent = static_cast<int>(text.size());
  ScrSay(row, col, text);
}

int AtGet(int row, int col, std::string_view name, std::string_view picture) {
  if (_get.size() >= maxGets) return -1;
  const int indent = _indent;
  _indent = 0;
  std::optional<Sv> sv = svGet(name);
  if (!sv) return -1;
  sv->row = std::clamp(row, 0, scrRows - 1);
  sv->col = std::clamp(col + indent, 0, lastGetCol);
  sv->picture = picture;
  ScrSayRev(sv->row, sv->col, sv->edit);
  ScrRestore();
  _get.push_back(std::move(*sv));
  return 0;
}

void AtClear() { _get.clear(); }

void MoxRead() {
  if (_hasField() && !dbHasRecord(selectedArea)) return AtClear();
  if (_editFields() != keyAbandon) {
    dbRepl0(selectedArea);
    for (const Sv& sv : _get) svPut(sv);
    if (dbOnRecord(selectedArea)) dbReplace(selectedArea);
  }
  AtClear();
  ScrLeave();
}

}  // namespace mox
