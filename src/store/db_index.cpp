// The indexes of the work areas: slots, keys, record changes, building.

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "session/error.h"
#include "session/value.h"
#include "store/db.h"
#include "store/db_area.h"

namespace mox {

namespace {

constexpr size_t maxKeyValue = 102;  // characters of a key expression's value: 100 and two quotes
constexpr int progressStep = 100;    // records

bool _slotInRange(int slot) { return slot >= 0 && slot < maxIndexes; }

// True for a slot of an area that there is.
bool _hasSlot(int area, int slot) {
  return area >= selectedArea && area < maxAreas && _slotInRange(slot);
}

// The key text of a value; a logical has none.
std::string _keyOf(std::string_view value) {
  if (value.empty() || value[0] == '"') return qs2s(value);
  return GetTyp(value).type == 'L' ? std::string() : qs2s(value);
}

// Runs a key expression on the current record: 0 with its value, or -1.
int _runKey(const Key& key, std::string& value) {
  const int result = key.run(value);
  if (value.size() > maxKeyValue) value.resize(maxKeyValue);
  return result;
}

// Reports why a change of an index failed, in place of any error of a key expression.
int _indexFailed(NdxFile& x, int result) {
  NdxPages& f = *x.file;
  errnum = errNone;
  if (result == ndxCantWrite)
    SetErr("CANNOT WRITE FILE", f.name);
  else if (f.full)
    SetErr("INDEX FILE IS FULL", f.name);
  else
    SetErr("INDEX FILE IS DAMAGED", f.name);
  f.full = f.damaged = false;
  return -1;
}

// True when an earlier slot of the area has the same file: one of them keeps it in step.
bool _repeated(const DbArea& a, int slot) {
  for (int i = 0; i < slot; ++i)
    if (a.index[i].file == a.index[slot].file) return true;
  return false;
}

// Runs an operation on every index of the area once: 0, or -1 after a report.
template <class Op>
int _eachIndex(DbArea& a, Op op) {
  for (int slot = 0; slot < a.ndxs; ++slot) {
    NdxFile& x = a.index[slot];
    if (!x.file || _repeated(a, slot)) continue;
    const int result = op(x);
    if (result != 0) return _indexFailed(x, result);
  }
  return 0;
}

// Moves the keys of the record whose image before the change is row0, first in memory. All new
// pages are written before any page that the files have, so that a full disk changes no file.
int _moveKeys(DbArea& a, std::string& row0) {
  DbfTable& t = a.table;
  std::swap(t.row, row0);
  _eachIndex(a, [&](NdxFile& x) {
    ndxDel(x, t.recno, dbKeyText(x));
    return 0;
  });
  std::swap(t.row, row0);
  int result = _eachIndex(a, [&](NdxFile& x) { return ndxAdd(x, t.recno, dbKeyText(x)); });
  if (result == 0) result = _eachIndex(a, ndxReserve);
  if (result == 0) result = _eachIndex(a, ndxFlush);
  if (result != 0) _eachIndex(a, [](NdxFile& x) { return ndxDrop(x), 0; });
  return result;
}

// What INDEX ON needs of the first record's value. False after a report.
bool _keyShape(const std::string& expr, Typ& typ) {
  const Key key = g_makeKey(expr);
  std::string value;
  if (key.compile() != 0 || _runKey(key, value) != 0) SynErr(expr);
  if (errnum != errNone) return false;
  typ = GetTyp(value);
  if (typ.type != 'C' && typ.type != 'N')
    SetErr("INDEX KEY IS NEITHER CHARACTER NOR NUMERIC", expr);
  else if (typ.type == 'C' && (typ.length < 1 || typ.length > maxKeyLen))
    SetErr(typ.length < 1 ? "INDEX KEY IS EMPTY" : "INDEX KEY IS TOO LONG", expr);
  else if (expr.size() > maxNdxExpr)
    SetErr("INDEX KEY EXPRESSION IS TOO LONG", expr);
  return errnum == errNone;
}

void _sayIndexed(int count) { std::printf("%05d RECORDS INDEXED\n", count); }

// Enters the records from the current one on; one whose expression fails is passed over.
int _addRecords(NdxFile& x, bool talk) {
  int count = 0;
  std::string value;
  for (; !dbEOF(selectedArea); dbSkip(selectedArea, 1)) {
    if (x.file->key.compile() != 0) continue;
    const int result = _runKey(x.file->key, value);
    if (errnum == errTold) return -1;
    const bool failed = result != 0 || errnum != errNone;
    errnum = errNone;
    if (failed) continue;
    const int added = ndxAdd(x, dbRECNO(selectedArea), _keyOf(value));
    if (added != 0) return _indexFailed(x, added);
    if (++count % progressStep == 0 && talk) _sayIndexed(count);
  }
  if (talk && (count == 0 || count % progressStep != 0)) _sayIndexed(count);
  return errnum == errNone ? 0 : -1;
}

// A file in the making: it goes away unless it took its place.
struct NewFile {
  std::string name;
  ~NewFile() { FileDelete(name); }
};

// True when INDEX ON may put a file in the place of what stands there: no folder, no table in use,
// nothing that can't be written.
bool _mayReplace(const std::string& name) {
  for (const DbArea& a : db)
    if (dbfOPEN(a.table) && SameFile(a.table.name, name)) return false;
  return FileOpen(name, "r+b") || !FileExists(name);
}

// Puts the new file in the place of the target and opens it where the target was open.
int _takePlace(const NewFile& made, const std::string& target) {
  std::vector<std::pair<NdxFile*, std::string>> users;
  for (DbArea& a : db)
    for (NdxFile& x : a.index)
      if (x.file && SameFile(x.file->name, target)) users.emplace_back(&x, x.file->name);
  for (const auto& [x, name] : users) ndxClose(*x);
  const bool replaced = FileReplace(made.name, target);
  bool open = true;
  for (const auto& [x, name] : users) open &= ndxOpen(*x, name) == 0;
  if (!replaced) SetErr("INDEX FILE CANNOT BE CREATED", target);
  if (!open) SetErr("INDEX FILE CANNOT BE OPENED", target);
  return replaced && open ? 0 : -1;
}

int _cantCreate(const std::string& name) {
  SetErr("INDEX FILE CANNOT BE CREATED", name);
  return -1;
}

}  // namespace

bool dbNdxDamaged(NdxFile& x) {
  if (!x.file || !x.file->damaged) return false;
  x.file->damaged = false;
  SetErr("INDEX FILE IS DAMAGED", x.file->name);
  return true;
}

std::string dbKeyText(NdxFile& x) {
  if (!x.file) return {};
  std::string value;
  _runKey(x.file->key, value);
  return _keyOf(value);
}

void dbClrIndex(int area) {
  DbArea& a = dbAreaOf(area);
  for (NdxFile& x : a.index) ndxClose(x);
  a.ndxs = 0;
}

int dbSetIndex(int area, int slot, std::string_view filename) {
  if (!_slotInRange(slot)) return ndxBadKey;
  DbArea& a = dbAreaOf(area);
  const int result = ndxOpen(a.index[slot], filename);
  if (result == 0) a.ndxs = std::max(a.ndxs, slot + 1);
  return result;
}

int dbNdxs(int area) { return _hasSlot(area, 0) ? dbAreaOf(area).ndxs : 0; }
bool dbINDEXED(int area) { return dbNdxs(area) > 0; }

std::string dbNdxFn(int area, int slot) {
  return _hasSlot(area, slot) ? ndxGetFn(dbAreaOf(area).index[slot]) : std::string();
}

std::string dbNdxExpr(int area, int slot) {
  return _hasSlot(area, slot) ? ndxGetExpr(dbAreaOf(area).index[slot]) : std::string();
}

void dbRepl0(int area) {
  DbArea& a = dbAreaOf(area);
  if (dbOPEN(area)) a.row0 = a.table.row;
}

int dbReplace(int area) {
  if (!dbOPEN(area)) return 0;
  DbArea& a = dbAreaOf(area);
  DbfTable& t = a.table;
  std::string row0 = std::exchange(a.row0, {});
  row0.resize(t.row.size(), ' ');
  const int written = dbfReplace(t);
  if (written != 0) return written == dbfCantWrite ? dbWritten(t, written) : 0;
  if (a.ndxs == 0) return dbWritten(t, 0);
  if (_moveKeys(a, row0) != 0) {
    t.row = row0;
    dbfReplace(t);
    dbfFlush(t);
    return -1;
  }
  const std::string key = dbKeyText(a.index[0]);
  ndxFindRno(a.index[0], t.recno, key);
  return dbWritten(t, 0);
}

int dbIndexOnTo(std::string_view expr, std::string_view filename, bool talk) {
  const std::string name = FnExt(filename, ".ndx");
  dbTop(selectedArea);
  if (errnum != errNone) return -1;  // the order to go by is damaged
  Typ typ;
  if (!_keyShape(std::string(expr), typ)) return -1;
  const NewFile made{_mayReplace(name) ? FileBeside(name) : std::string()};
  NdxFile x;
  if (made.name.empty() || ndxCreate(x, made.name, expr, typ.type, typ.length) != 0)
    return _cantCreate(name);
  if (_addRecords(x, talk) != 0) return -1;
  const int result = ndxFlush(x);
  if (result != 0) return _indexFailed(x, result);
  ndxClose(x);
  return _takePlace(made, name);
}

int dbReindex(bool talk) {
  DbArea& a = dbAreaOf(selectedArea);
  const int ndxs = std::exchange(a.ndxs, 0);  // the moves go in natural order
  ErrorSlot failed;
  for (int slot = 0; slot < ndxs; ++slot) {
    const std::string name = dbNdxFn(selectedArea, slot);
    if (name.empty()) continue;
    if (talk) std::printf("\nREINDEXING INDEX FILE - %s\n", name.c_str());
    if (dbIndexOnTo(dbNdxExpr(selectedArea, slot), name, talk) == 0) continue;
    const ErrorSlot error = TakeErr();
    if (failed.num == errNone) failed = error;
  }
  a.ndxs = ndxs;
  if (failed.num == errNone) return 0;
  PutErr(failed);
  return -1;
}

}  // namespace mox
