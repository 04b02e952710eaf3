// The indexes of the work areas: slots, keys, record changes, building.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <optional>
#include <utility>
#include <vector>

#include "session/error.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"
#include "store/db_area.h"
#include "store/ndx_page.h"

namespace mox {

bool g_late = false;

namespace {

constexpr size_t maxKeyValue = 102;  // characters of a key expression's value: 100 and two quotes
constexpr int progressStep = 100;    // records

// The table whose changes are held over steps.
using LateClock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds maxLate{100};
struct Late {
  int area = 0;
  int bytes = 0;  // of the records that were written
  int turns = 0;
  LateClock::time_point since;
} _late;

bool _slotInRange(int slot) { return slot >= 0 && slot < maxIndexes; }

// True for a slot of an area that there is.
bool _hasSlot(int area, int slot) {
  return area >= selectedArea && area < maxAreas && _slotInRange(slot);
}

// The areas that have the table open.
template <class Action>
void _eachUser(const DbfTable& t, Action action) {
  for (DbArea& a : db)
    if (&a.table == &t || (t.file && a.table.file == t.file)) action(a);
}

// Shows a record's image to the key expressions: in each area that has the table open it stands in
// the place of the area's own record.
class ShownRow {
 public:
  ShownRow(const DbfTable& t, const std::string& row) { _show(t, row); }
  ~ShownRow() {
    for (Kept& k : kept_) {
      k.user->row = std::move(k.row);
      k.user->stale = k.stale;
      k.user->changing = k.changing;
    }
  }
  // The table's own record, where other areas have the table open too.
  explicit ShownRow(DbfTable& t) {
    int users = 0;
    _eachUser(t, [&](DbArea&) { ++users; });
    if (users > 1) _show(t, std::string(dbfRow(t)));
  }
  ShownRow(const ShownRow&) = delete;
  ShownRow& operator=(const ShownRow&) = delete;

 private:
  void _show(const DbfTable& t, const std::string& row) {
    _eachUser(t, [&](DbArea& a) {
      DbfTable& user = a.table;
      kept_.push_back({&user, std::exchange(user.row, row), std::exchange(user.stale, false),
                       std::exchange(user.changing, true)});
    });
  }
  struct Kept {
    DbfTable* user;
    std::string row;
    bool stale, changing;
  };
  std::vector<Kept> kept_;
};

// The key text of a value; a logical has none. A number is one whatever stands in its text.
void _keyOf(const Value& value, std::string& key) {
  std::string room;
  if (value.isContent() && value.content(room).find('"') == std::string_view::npos) {
    key = value.content(room);
    return;
  }
  const std::string_view text = std::string_view(value.text()).substr(0, maxKeyValue);
  key = qs2s(text);
  if (text.empty() || text[0] == '"') return;
  const ErrorSlot slot = TakeErr();
  if (GetTyp(text).type == 'L') key.clear();
  PutErr(slot);
}

// Runs a key expression on the current record: its value, or null. The run has the error slot for
// itself: what it reports comes behind an error that was there before.
const Value* _runKey(const Key& key) {
  const FirstErr first;
  const Value* const value = key.run();
  if (value && errnum == errNone) return value;
  if (errnum == errNone) SynErr("");
  return nullptr;
}

// Reports why a change of an index failed.
int _indexFailed(NdxFile& x, int result) {
  NdxPages& f = *x.file;
  if (result == ndxCantWrite)
    SetErr("CANNOT WRITE FILE", f.name);
  else if (f.full)
    SetErr("INDEX FILE IS FULL", f.name);
  else
    SetErr("INDEX FILE IS DAMAGED", f.name);
  f.full = f.damaged = false;
  return -1;
}

// --- Changes of records.

// An index that a change concerns, with the record's keys in it.
struct KeyMove {
  NdxFile* x;
  std::string before, after;
  bool out = true, in = true;  // has an item to take out; gets one
};

// Every index that an area has open for the table, each file once.
std::vector<KeyMove> _indexesOf(const DbArea& of) {
  std::vector<KeyMove> moves;
  _eachUser(of.table, [&](DbArea& a) {
    for (int slot = 0; slot < a.ndxs; ++slot) {
      NdxFile& x = a.index[slot];
      const auto same = [&](const KeyMove& m) { return m.x->file == x.file; };
      if (x.file && std::none_of(moves.begin(), moves.end(), same)) moves.push_back({&x, {}, {}});
    }
  });
  return moves;
}

bool _hasIndex(const DbArea& of) {
  bool has = false;
  _eachUser(of.table, [&](const DbArea& a) { has |= a.ndxs > 0; });
  return has;
}

// Runs an operation on the index of each move: 0, or -1 after a report.
template <class Op>
int _eachIndex(std::vector<KeyMove>& moves, Op op) {
  for (KeyMove& m : moves)
    if (const int result = op(m); result != 0) return _indexFailed(*m.x, result);
  return 0;
}

// The key of the stored record, of which none is needed when the record has no item.
bool _keyBefore(KeyMove& m, const DbfTable& t, const std::string& row) {
  const FirstErr first;
  const ShownRow shown(t, row);
  if (dbKeyText(*m.x, m.before) == 0) return true;
  const ErrorSlot failed = TakeErr();
  m.out = ndxHasRno(*m.x, t.recno);
  if (dbNdxDamaged(*m.x)) return false;
  if (m.out) PutErr(failed);
  return !m.out;
}

// Makes the keys of the stored record, if there is one, and then of the new one: false when one
// that is needed can't be made. With mayLack a record gets no item where its key can't be made.
bool _makeKeys(DbfTable& t, std::vector<KeyMove>& moves, bool mayLack) {
  const std::string before = dbfStored(t), after = t.row;
  for (KeyMove& m : moves) {
    m.out = !t.adding;
    if (m.out && !_keyBefore(m, t, before)) return false;
  }
  const ShownRow shown(t, after);
  for (KeyMove& m : moves) {
    m.in = dbKeyText(*m.x, m.after) == 0;
    if (!m.in && !mayLack) return false;
  }
  return true;
}

// Takes the stored record's item out of the index, also when it stands there under another key: the
// expression may ask for what has changed since. A blank record mostly has none and isn't sought.
void _takeOut(KeyMove& m, const DbfTable& t, const std::string& stored) {
  if (ndxDel(*m.x, t.recno, m.before) != 0 && !isBlank(stored)) ndxDelRno(*m.x, t.recno);
}

// Takes back what came to the files of a change that was refused.
void _takeBack(DbfTable& t, std::vector<KeyMove>& moves, const std::string& stored, bool replaced) {
  for (KeyMove& m : moves) ndxUndo(*m.x);
  if (replaced && !t.adding) {
    dbfSetRow(t, stored);
    replaced = dbfReplace(t) != 0;
  }
  if (!std::exchange(t.file->image.torn, false) && (t.adding || !replaced)) return;
  for (KeyMove& m : moves) ndxStale(*m.x);
}

// Writes record and indexes, each index first in memory. All new pages go out before anything that
// the files have is written over, so that a full disk changes no file; what is refused behind that
// is taken back. A program that is killed behind the marks leaves them. A new record is counted
// when all else is written.
int _moveRecord(DbfTable& t, std::vector<KeyMove>& moves) {
  const std::string stored = moves.empty() ? std::string() : dbfStored(t);
  int result = _eachIndex(moves, [&](KeyMove& m) {
    if (m.out) _takeOut(m, t, stored);
    if (m.x->file->damaged) return static_cast<int>(ndxFail);
    return m.in ? ndxAdd(*m.x, t.recno, m.after) : 0;
  });
  if (result == 0) result = _eachIndex(moves, [](KeyMove& m) { return ndxReserve(*m.x); });
  if (result == 0) result = _eachIndex(moves, [](KeyMove& m) { return ndxMark(*m.x); });
  bool replaced = false;
  if (result == 0) {
    result = dbWritten(t, dbfReplace(t));
    replaced = result == 0;
  }
  if (result == 0) result = _eachIndex(moves, [](KeyMove& m) { return ndxFlush(*m.x); });
  if (result == 0) result = dbWritten(t, dbfCount(t));
  if (result == 0)
    for (KeyMove& m : moves) ndxSettle(*m.x);
  else
    _takeBack(t, moves, stored, replaced);
  return result == 0 ? 0 : -1;
}

int _replace(int area, bool mayLack) {
  DbArea& a = dbAreaOf(area);
  if (!dbOPEN(area)) return 0;
  if (!a.table.adding && !dbHasRecord(area)) return -1;
  std::vector<KeyMove> moves = _indexesOf(a);
  for (KeyMove& m : moves) m.x->file->damaged = false;  // what an earlier statement met
  dbfRow(a.table);
  const bool made = (moves.empty() || _makeKeys(a.table, moves, mayLack)) && !ReadHasFailed();
  const bool moved = made && _moveRecord(a.table, moves) == 0;
  if (!moved) dbfRevert(a.table);
  if (!moves.empty()) dbMasterBack(a);
  const auto lacks = [](const KeyMove& m) { return !m.in; };
  return !moved ? -1 : std::any_of(moves.begin(), moves.end(), lacks) ? dbNoKey : 0;
}

// --- Building.

// What INDEX ON needs of the first record's value. False after a report.
bool _keyShape(const std::string& expr, Typ& typ) {
  const Key key = g_makeKey(expr);
  const Value* const value = key.compile() == 0 ? key.run() : nullptr;
  if (!value) SynErr(expr);
  if (errnum != errNone) return false;
  typ = GetTyp(std::string_view(value->text()).substr(0, maxKeyValue));
  if (typ.type != 'C' && typ.type != 'N')
    SetErr("INDEX KEY IS NEITHER CHARACTER NOR NUMERIC", expr);
  else if (typ.type == 'C' && (typ.length < 1 || typ.length > maxKeyLen))
    SetErr(typ.length < 1 ? "INDEX KEY IS EMPTY" : "INDEX KEY IS TOO LONG", expr);
  else if (expr.size() > maxNdxExpr)
    SetErr("INDEX KEY EXPRESSION IS TOO LONG", expr);
  return errnum == errNone;
}

void _sayIndexed(int count) { std::printf("%05d RECORDS INDEXED\n", count); }

// Enters the records from the current one on; one whose expression fails is passed over. An index
// that is made anew gets the keys that changes of its records give it.
int _addRecords(NdxFile& x, bool talk, bool anew) {
  int count = 0;
  std::string keyText;
  for (; !dbEOF(selectedArea); dbSkip(selectedArea, 1)) {
    const ErrorSlot slot = TakeErr();
    std::optional<ShownRow> shown;
    if (anew) shown.emplace(dbAreaOf(selectedArea).table);
    const Value* const value = x.file->key.compile() == 0 ? _runKey(x.file->key) : nullptr;
    if (errnum == errTold || ReadHasFailed()) return -1;
    PutErr(slot);
    if (!value) continue;
    _keyOf(*value, keyText);
    const int added = ndxAdd(x, dbRECNO(selectedArea), keyText);
    if (added != 0) return _indexFailed(x, added);
    if (++count % progressStep == 0 && talk) _sayIndexed(count);
  }
  if (talk && (count == 0 || count % progressStep != 0)) _sayIndexed(count);
  return errnum == errNone ? 0 : -1;
}

int _cantCreate(int result, const std::string& name) {
  if (result == fileInUse)
    SetErr("FILE IS IN USE", name);
  else
    SetErr("INDEX FILE CANNOT BE CREATED", name);
  return -1;
}

// True when another area's table uses the index, or the file is a table in use.
bool _servesOthers(const std::string& name) {
  const std::shared_ptr<NdxPages> open = ndxFindOpen(name);
  if (!open) return FileInUse(name);
  const DbfTable& mine = dbAreaOf(selectedArea).table;
  return std::any_of(std::begin(db), std::end(db), [&](const DbArea& a) {
    return a.table.file != mine.file &&
           std::any_of(a.index.begin(), a.index.end(),
                       [&](const NdxFile& x) { return x.file == open; });
  });
}

// Builds the index in the new file and puts it in its place.
int _build(NewFile& made, const std::string& expr, const Typ& typ, bool talk) {
  NdxFile x;
  if (const int result = ndxMake(x, made, expr, typ.type, typ.length); result != 0)
    return _cantCreate(result, made.path);
  const std::shared_ptr<NdxPages> open = ndxFindOpen(made.path);
  if (_addRecords(x, talk, open != nullptr) != 0) return -1;
  if (const int result = ndxFlush(x); result != 0) return _indexFailed(x, result);
  x = NdxFile{};
  const int result = open ? ndxTakeOver(*open, made) : NewFileDone(made);
  for (DbArea& a : db)  // the cursors of its users are on nothing then
    for (NdxFile& user : a.index)
      if (open && user.file == open) ndxLeave(user);
  return result == 0 ? 0 : _cantCreate(result, made.path);
}

}  // namespace

bool dbNdxDamaged(NdxFile& x) {
  if (!x.file || !x.file->damaged) return false;
  x.file->damaged = false;
  SetErr("INDEX FILE IS DAMAGED", x.file->name);
  return true;
}

int dbKeyText(NdxFile& x, std::string& key) {
  key.clear();
  const Value* const value = x.file ? _runKey(x.file->key) : nullptr;
  if (value) _keyOf(*value, key);
  return value ? 0 : -1;
}

int dbMasterTo(DbArea& a, int recno) {
  if (a.ndxs == 0 || !a.index[0].file) return 2;
  std::string key;
  const int made = dbKeyText(a.index[0], key);
  return made == 0 ? ndxFindRno(a.index[0], recno, key) : 2;
}

void dbMasterBack(DbArea& a) {
  const ShownRow shown(a.table);
  dbMasterTo(a, a.table.recno);
}

void dbClrIndex(int area) {
  DbArea& a = dbAreaOf(area);
  for (NdxFile& x : a.index) ndxClose(x);
  a.ndxs = 0;
}

int dbSetIndex(int area, int slot, std::string_view filename) {
  if (!_slotInRange(slot)) return ndxBadKey;
  DbArea& a = dbAreaOf(area);
  const FirstErr first;
  const int result = ndxOpen(a.index[slot], filename, true);
  if (result == 0) a.ndxs = std::max(a.ndxs, slot + 1);
  return result;
}

bool dbOutOfStep(int area, int slot) {
  return _hasSlot(area, slot) && ndxOutOfStep(dbAreaOf(area).index[slot]);
}

int dbNdxs(int area) { return _hasSlot(area, 0) ? dbAreaOf(area).ndxs : 0; }
bool dbINDEXED(int area) { return dbNdxs(area) > 0; }

std::string dbNdxFn(int area, int slot) {
  return _hasSlot(area, slot) ? ndxGetFn(dbAreaOf(area).index[slot]) : std::string();
}

std::string dbNdxExpr(int area, int slot) {
  return _hasSlot(area, slot) ? ndxGetExpr(dbAreaOf(area).index[slot]) : std::string();
}

void dbHold(int area) {
  DbfTable& t = dbAreaOf(area).table;
  if (!_hasIndex(dbAreaOf(area))) dbfHold(t);
}

int dbLetGo(int area) {
  DbfTable& t = dbAreaOf(area).table;
  int lost = 0;
  const FirstErr first;
  dbWritten(t, dbfLetGo(t, lost));
  return lost;
}

int dbReplaceLater(int area) {
  const int place = static_cast<int>(&dbAreaOf(area) - db);
  if (g_late && place != _late.area) dbPut();
  if (errnum != errNone) return -1;
  if (!g_late && !_hasIndex(db[place])) {
    g_late = true;
    _late = {place, 0, 0, LateClock::now()};
    dbHold(place);
  }
  const int result = dbReplace(area);
  if (g_late && (_late.bytes += db[place].table.rowsize) >= holdBytes) dbPut();
  return result;
}

void dbPut() {
  if (!std::exchange(g_late, false)) return;
  const ErrorSlot later = TakeErr();  // of a statement behind those whose records were held
  dbLetGo(_late.area);
  if (errnum == errNone) PutErr(later);
}

void dbTick() {
  constexpr int someTurns = 16;
  if (++_late.turns % someTurns == 0 && LateClock::now() - _late.since > maxLate) dbPut();
}

void dbRepl0(int area) {
  if (dbOPEN(area)) dbfChange(dbAreaOf(area).table);
}

void dbRevert() {
  for (DbArea& a : db) dbfRevert(a.table);
}

int dbReplace(int area) { return _replace(area, false); }
int dbReplaceNew(int area) { return _replace(area, true); }

int dbIndexOnTo(std::string_view expr, std::string_view filename, bool talk) {
  const std::string name = FnFind(FnExt(filename, ".ndx"));
  dbTop(selectedArea);
  if (errnum != errNone) return -1;  // the order to go by is damaged
  Typ typ;
  if (!_keyShape(std::string(expr), typ)) return -1;
  if (_servesOthers(name)) return _cantCreate(fileInUse, name);
  NewFile made;
  if (const int result = NewFileOpen(made, name, ndxFindOpen(name) != nullptr); result != 0)
    return _cantCreate(result, name);
  return _build(made, std::string(expr), typ, talk);
}

int dbReindex(bool talk, bool everyUser) {
  DbArea& a = dbAreaOf(selectedArea);
  const int ndxs = std::exchange(a.ndxs, 0);  // the moves go in natural order
  Lines names;
  for (int slot = 0; slot < ndxs; ++slot) names.push_back(dbNdxFn(selectedArea, slot));
  const size_t own = names.size();
  if (everyUser)
    for (const KeyMove& m : _indexesOf(a))
      if (std::find(names.begin(), names.end(), ndxGetFn(*m.x)) == names.end())
        names.push_back(ndxGetFn(*m.x));
  ErrorSlot failed;
  for (size_t i = 0; i < names.size(); ++i) {
    const std::shared_ptr<NdxPages> open = ndxFindOpen(names[i]);
    if (names[i].empty() || !open) continue;
    const bool tell = talk && i < own;
    if (tell) std::printf("\nREINDEXING INDEX FILE - %s\n", names[i].c_str());
    if (dbIndexOnTo(std::string(open->expr), names[i], tell) == 0) continue;
    const ErrorSlot error = TakeErr();
    if (failed.num == errNone) failed = error;
  }
  if (names.size() > own && own == 0) dbTop(selectedArea);  // as after a pack without an index
  a.ndxs = ndxs;
  for (NdxFile& x : a.index) ndxLeave(x);
  if (failed.num == errNone) return 0;
  PutErr(failed);
  return -1;
}

int dbMark(int area) {
  std::vector<KeyMove> moves = _indexesOf(dbAreaOf(area));
  return _eachIndex(moves, [](KeyMove& m) { return ndxMark(*m.x); });
}

void dbStale(int area) {
  for (KeyMove& m : _indexesOf(dbAreaOf(area))) ndxStale(*m.x);
}

void dbClrShared(int area) {
  _eachUser(dbAreaOf(area).table, [](DbArea& a) {
    for (NdxFile& x : a.index) ndxClose(x);
    a.ndxs = 0;
  });
}

}  // namespace mox
