#include "commands/moxupdate.h"

#include <algorithm>
#include <string_view>

#include "commands/target.h"
#include "run/handlers.h"
#include "run/rundb_scan.h"
#include "session/error.h"
#include "session/number.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int sumDigits = 10;  // behind the point of a sum on its way to the field

// Numbers that differ by less than 1 are equal.
int _compare(char type, std::string_view a, std::string_view b) {
  return type == 'N' ? DblToInt(TxtToDbl(a) - TxtToDbl(b)) : a.compare(b);
}

void _doAdds(int area, DbfTable& source, const Lines& adds) {
  for (const std::string& name : adds) {
    const int from = fldno(source, name);
    const int to = dbFno(area, name);
    if (from < 0 || to < 0) continue;
    const double sum = TxtToDbl(dbVal(area, to)) + TxtToDbl(fldget(source, from));
    dbSetVal(area, to, dbTyp(area, to) == 'N' ? FmtSci(sum, sumDigits) : FmtFix(sum, 1, 0));
  }
}

void _doReplaces(int area, DbfTable& source, const Lines& targets, const Lines& sources) {
  for (size_t i = 0; i < std::min(targets.size(), sources.size()); ++i) {
    const int from = fldno(source, sources[i]);
    const int to = dbFno(area, targets[i]);
    if (from >= 0 && to >= 0) dbSetVal(area, to, fldget(source, from));
  }
}

int _refuse(const char* message, const std::string& name) {
  SetErr(message, name);
  return -1;
}

}  // namespace

int moxUpdate(int area, const std::string& filename, const std::string& key, const Lines& adds,
              const Lines& targets, const Lines& sources) {
  const int keyTo = dbFno(area, key);
  if (keyTo < 0) return _refuse("VARIABLE CANNOT BE FOUND", key);
  const std::string name = FnExtDflt(filename, ".dbf");
  DbfTable source;
  if (dbfOpen(source, name) != 0) return _refuse("BAD FILE NAME", name);
  const int keyFrom = fldno(source, key);
  if (keyFrom < 0) return _refuse("VARIABLE CANNOT BE FOUND", key);
  dbTop(area);
  dbfSkipTo(source, 1);
  dbHold(area);
  ErrorSlot told;  // of the first record that stayed as it was
  while (!dbEOF(area) && !dbfEOF(source) && !Interrupted()) {
    const int sign = _compare(dbTyp(area, keyTo), dbVal(area, keyTo), fldget(source, keyFrom));
    if (sign < 0) {
      dbSkip(area, 1);
      continue;
    }
    if (sign == 0) {
      dbRepl0(area);
      _doAdds(area, source, adds);
      _doReplaces(area, source, targets, sources);
      dbReplace(area);
    }
    if (errnum != errNone && told.num == errNone) told = TakeErr();
    dbfSkip(source, 1);
  }
  dbLetGo(area);
  if (errnum == errNone) PutErr(told);
  return errnum == errNone ? 0 : -1;
}

void OpUpdate(Operands& o) {
  if (!DbChk()) return;
  const std::string& filename = o.text();
  const std::string& key = o.text();
  const Lines adds = o.list(), targets = o.list(), sources = o.list();
  moxUpdate(selectedArea, filename, key, adds, targets, sources);
}

}  // namespace mox
