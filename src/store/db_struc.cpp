// Copies of an area's structure and records in a new table.

#include "store/db.h"

namespace mox {

namespace {

// Copies the live records in order, by field name, until one can't be written.
int _copyRecords(int area, DbfTable& target) {
  int result = 0;
  for (dbTop(area); !dbEOF(area) && result == 0; dbSkip(area, 1)) {
    if (dbDELETED(area)) continue;
    result = dbfAppend(target);
    for (int i = 0; i < target.cols; ++i)
      fldput(target, i, dbVal(area, dbFno(area, target.names[i])));
    if (result == 0) result = dbfReplace(target);
  }
  return result;
}

}  // namespace

Lines dbFields(int area) {
  Lines names;
  for (int i = 0; i < dbCOLS(area); ++i) names.push_back(dbName(area, i));
  return names;
}

int dbCopyStruc(int area, const Lines& fields, const std::string& filename, DbfTable& t) {
  if (const int made = dbfCreate(t, filename); made != 0) return made;
  int result = 0;
  int number = 0;
  for (const std::string& name : fields.empty() ? dbFields(area) : fields) {
    const int i = dbFno(area, name);
    if (i < 0) result = -1;
    if (i < 0) break;
    dbfFld(t, ++number, name, dbTyp(area, i), dbLen(area, i), dbDec(area, i));
  }
  dbfFld(t, 0, "", ' ', 0, 0);
  return result;
}

int dbCopyData(int area, const Lines& fields, const std::string& filename) {
  DbfTable target;
  const int made = dbCopyStruc(area, fields, filename, target);
  if (made != 0) return made == dbfCantWrite ? made : -1;
  const int start = dbRECNO(area);
  int result = _copyRecords(area, target);
  if (result == 0) result = dbfClose(target);
  dbSkipTo(area, start);
  return result == 0 ? 0 : dbfCantWrite;
}

}  // namespace mox
