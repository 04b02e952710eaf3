#include "commands/moxjoin.h"

#include <vector>

#include "commands/target.h"
#include "run/handlers.h"
#include "run/rundb.h"
#include "session/error.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int primary = 0, secondary = 1;

// Where a field of the target comes from.
struct JoinField {
  int area;
  int field;
};

void _addNames(int area, Lines& names) {
  for (int i = 0; i < dbCOLS(area); ++i) names.push_back(af(area, dbName(area, i)));
}

Lines _joinNames(const Lines& fields) {
  Lines names;
  for (const std::string& name : fields) names.push_back(strUpper(name));
  if (!names.empty()) return names;
  _addNames(primary, names);
  _addNames(secondary, names);
  return names;
}

// The fields of the names, at most as many as a table holds: false after a report.
bool _joinFields(const Lines& names, std::vector<JoinField>& fields) {
  for (const std::string& name : names) {
    const int area = af2a(name);
    if (area < 0) {
      SynErr("AREA");
      return false;
    }
    const int field = dbFno(area, af2f(name));
    if (field < 0) {
      SetErr("FIELD CANNOT BE FOUND", name);
      return false;
    }
    if (fields.size() < maxFields) fields.push_back({area, field});
  }
  return true;
}

// Makes the empty target: 0; -1 it can't be made; dbfCantWrite.
int createDbf(const std::string& path, const std::vector<JoinField>& fields) {
  DbfTable t;
  if (const int made = dbfCreate(t, path); made != 0) return made == dbfCantWrite ? made : -1;
  int number = 0;
  for (const JoinField& f : fields)
    dbfFld(t, ++number, dbName(f.area, f.field), dbTyp(f.area, f.field), dbLen(f.area, f.field),
           dbDec(f.area, f.field));
  const int defined = dbfFld(t, 0, "", ' ', 0, 0);
  return dbfClose(t) == 0 ? defined : dbfCantWrite;
}

int _addPair(DbfTable& t, const std::vector<JoinField>& fields) {
  if (const int result = dbfAppend(t); result != 0) return result;
  int to = 0;
  for (const JoinField& f : fields) fldput(t, to++, dbVal(f.area, f.field));
  return dbfReplace(t);
}

int _joinRecords(DbfTable& t, const std::vector<JoinField>& fields, Expr& condition) {
  for (dbSkipTo(primary, 0); !dbEOF(primary); dbSkip(primary, 1)) {
    for (dbSkipTo(secondary, 0); !dbEOF(secondary); dbSkip(secondary, 1)) {
      if (!Qualifies(condition)) continue;
      if (const int result = _addPair(t, fields); result != 0) return result;
    }
  }
  return 0;
}

}  // namespace

int moxJoin(const std::string& filename, const std::string& condition, const Lines& fields) {
  if (!dbOPEN(secondary)) {
    SetErr("NO SECONDARY DATABASE FILE IN USE", "");
    return -1;
  }
  std::vector<JoinField> joined;
  std::string path;
  Expr test(condition, scanSteps);
  if (!_joinFields(_joinNames(fields), joined) || ScanCompile(test) != 0 ||
      !TargetPath(FnExtDflt(filename, ".dbf"), path))
    return -1;
  if (const int made = createDbf(path, joined); made != 0) {
    if (made == dbfCantWrite)
      TargetLost(path);
    else
      SetErr("CANNOT CREATE FILE", "");
    return -1;
  }
  DbfTable t;
  TargetOpen(t, path);
  return TargetClose(t, _joinRecords(t, joined, test));
}

int OpJoin(int depth, Stack& stk) {
  const int k = StackInt(stk[depth - 1]);
  const int removed = k + 3;
  if (DbChk())
    moxJoin(stk[depth - removed], stk[depth - removed + 1], StackNames(stk, depth - 1 - k, k));
  return -removed;
}

}  // namespace mox
