#include "store/db.h"

#include "session/error.h"
#include "session/session.h"
#include "store/db_area.h"
#include "store/ndx_page.h"

namespace mox {

DbArea db[maxAreas];

namespace {

int _area = 0;

constexpr std::string_view letters = "ABCD";

bool _inRange(int area) { return area >= 0 && area < maxAreas; }

DbfTable& _table(int area) { return dbAreaOf(area).table; }

// The master index of the area, or null.
NdxFile* _master(DbArea& a) { return a.ndxs > 0 ? &a.index[0] : nullptr; }
NdxFile* _master(int area) { return _master(dbAreaOf(area)); }

// A record number that a move through the index gave; outside the table when it is damaged, so
// that the move ends at the end of the table.
int _target(NdxFile& x, int rno) { return x.file && x.file->damaged ? dbfOutside : rno; }

bool _hasPrefix(std::string_view name) { return name.size() >= 3 && name[1] == '.'; }

}  // namespace

DbArea& dbAreaOf(int area) { return db[area == selectedArea ? _area : area]; }

int dbWritten(DbfTable& t, int result) {
  if (result == dbfFull) SetErr("TABLE IS FULL", t.name);
  if (result == dbfCantWrite && !ReadHasFailed()) SetErr("CANNOT WRITE FILE", t.name);
  return result;
}

int af2a(std::string_view name) {
  if (!_hasPrefix(name)) return _area;
  const char letter = UpperChr(name[0]);
  if (letter == 'P') return 0;
  if (letter == 'S') return 1;
  const size_t area = letters.find(letter);
  return area == letters.npos ? -2 : static_cast<int>(area);
}

std::string_view af2f(std::string_view name) { return _hasPrefix(name) ? name.substr(2) : name; }

std::string af(int area, std::string_view name) {
  std::string full;
  if (_inRange(area)) full = {letters[area], '.'};
  full += name;
  return full;
}

bool DbChk() {
  if (dbOPEN(selectedArea)) return true;
  SetErr("NO DATABASE FILE IN USE", "");
  return false;
}

void dbRest() {
  dbPut();
  for (DbArea& a : db)
    if (dbfOPEN(a.table)) imgPut(a.table.file->image);
  ndxRest();
}

void dbInit() {
  dbPut();
  for (DbArea& a : db) a = DbArea{};
  ++g_names;
  _area = 0;
}

void dbReset() {
  for (int area = 0; area < maxAreas; ++area) dbClose(area);
  _area = 0;
}

int dbOpen(int area, std::string_view filename) {
  dbClrIndex(area);
  return dbfOpen(_table(area), filename, true);
}

int dbClose(int area) {
  dbClrIndex(area);
  return dbCloseDbf(area);
}

int dbCloseDbf(int area) {
  dbPut();
  DbfTable& t = _table(area);
  const std::string name = t.name;
  const int result = dbfClose(t);
  if (result == dbfCantWrite) SetErr("CANNOT WRITE FILE", name);
  return result;
}

int dbReopenDbf(int area, const std::string& filename) {
  return dbfOpen(_table(area), filename, true);
}

int dbSelect(int area) {
  if (_inRange(area)) _area = area;
  return _area;
}

int dbSelected() { return _area; }

std::string dbFn(int area) { return dbOPEN(area) ? _table(area).name : std::string(); }
const std::string& dbFILENAME(int area) { return _table(area).name; }
bool dbOPEN(int area) { return dbfOPEN(_table(area)); }
int dbCOLS(int area) { return dbfCOLS(_table(area)); }
int dbRECNO(int area) { return dbfRECNO(_table(area)); }
bool dbEOF(int area) { return dbfEOF(_table(area)); }
bool dbDELETED(int area) { return dbfDELETED(_table(area)); }
bool dbOnRecord(int area) { return dbfOnRecord(_table(area)); }

bool dbHasRecord(int area) {
  if (dbOnRecord(area)) return true;
  SetErr("NO RECORD", "");
  return false;
}

int dbRMAX(int area) { return dbfROWS(_table(area)); }
int dbFno(int area, std::string_view name) { return fldno(_table(area), name); }
const std::string& dbName(int area, int field) { return _table(area).names[field]; }
char dbTyp(int area, int field) { return _table(area).typ[field]; }
int dbLen(int area, int field) { return _table(area).len[field]; }
int dbDec(int area, int field) { return _table(area).dec[field]; }
int dbDispStruc(int area) { return dbfDispStruc(_table(area)); }

int dbFileInfo(const std::string& filename, int& records, std::string& date) {
  DbfTable t;
  if (dbfOpen(t, filename) != 0) return -1;
  records = dbfROWS(t);
  const auto [day, month, year] = t.date;
  date = StrFmt("%02d/%02d/%02d", day, month, year);
  dbfClose(t);
  return 0;
}

std::string_view dbVal(int area, int field) { return fldget(_table(area), field); }

int dbSetVal(int area, int field, std::string_view value) {
  std::string room;
  return fldput(_table(area), field, qs2s(value, room));
}

const std::string& dbRow(int area) { return dbfRow(_table(area)); }

void dbSetRow(int area, const std::string& row) { dbfSetRow(_table(area), row); }

int dbTop(int area) {
  NdxFile* const x = _master(area);
  if (!x) return dbfSkipTo(_table(area), 0);
  const int rno = ndxTop(*x);
  const int result = dbfSkipTo(_table(area), _target(*x, rno));
  dbNdxDamaged(*x);
  return result;
}

int dbSkip(int area, int distance) {
  if (distance == 0) return 0;
  DbArea& a = dbAreaOf(area);
  DbfTable& t = a.table;
  NdxFile* const x = _master(a);
  if (!x) return dbfSkip(t, distance);
  if (ndxAstray(*x)) dbMasterBack(a);
  int rno = 1;
  for (; distance > 0 && rno > 0; --distance) rno = ndxFwd(*x);
  for (; distance < 0 && rno > 0; ++distance) rno = ndxBak(*x);
  if (rno > 0)
    dbfSkipTo(t, rno);
  else
    t.eof = true;
  dbNdxDamaged(*x);
  return 0;
}

int dbSkipTo(int area, int recno) {
  constexpr int stay = -2;
  DbfTable& t = _table(area);
  if (dbfROWS(t) == 0) {
    dbfOnNone(t);
    t.eof = true;
    return 0;
  }
  NdxFile* const x = _master(area);
  if (x && recno == 0) recno = _target(*x, ndxTop(*x));
  if (x && recno == -1) recno = _target(*x, ndxBottom(*x));
  dbfSkipTo(t, recno);
  if (!x) return 0;
  const int found = recno == stay ? 0 : dbMasterTo(dbAreaOf(area), recno);
  if (dbNdxDamaged(*x)) t.eof = true;
  return found == 0 ? 0 : -1;
}

int dbFind(int area, int length, std::string_view text) {
  NdxFile* const x = _master(area);
  if (!x) return -1;
  DbfTable& t = _table(area);
  const int rno = ndxFind(*x, length, text);
  if (rno > 0)
    dbfSkipTo(t, rno);
  else
    dbfOnNone(t);
  dbNdxDamaged(*x);
  return rno;
}

int dbAppend(int area) {
  DbfTable& t = _table(area);
  return dbWritten(t, dbfAppend(t));
}

int dbBegin(int area) {
  DbfTable& t = _table(area);
  return dbWritten(t, dbfBegin(t));
}

int dbRemove(int area) {
  DbfTable& t = _table(area);
  return dbWritten(t, dbfRemove(t));
}

int dbDelete(int area) {
  DbfTable& t = _table(area);
  return dbWritten(t, dbfDelete(t));
}

int dbRecall(int area) {
  DbfTable& t = _table(area);
  return dbWritten(t, dbfRecall(t));
}

void dbDelToggle(int area) {
  char& mark = dbfRow(_table(area))[0];
  mark = mark == '*' ? ' ' : '*';
}

int dbPack(int area) {
  DbfTable& t = _table(area);
  if (dbMark(area) != 0) return -1;
  const int result = dbWritten(t, dbfPack(t));
  if (result == 0) dbStale(area);
  return result;
}

}  // namespace mox
