#include "commands/moxcopy.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "commands/sdf.h"
#include "commands/target.h"
#include "run/handlers.h"
#include "run/rundb_scan.h"
#include "session/error.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

// Fields to copy, by their places in the source and in the target.
struct FieldPair {
  int from;  // -1 for an empty value
  int to;
};

std::vector<FieldPair> _pairs(int area, const Lines& fields, const DbfTable& t) {
  std::vector<FieldPair> pairs;
  for (const std::string& name : fields.empty() ? dbFields(area) : fields)
    if (const int to = fldno(t, name); to >= 0) pairs.push_back({dbFno(area, name), to});
  return pairs;
}

void _copyDBFflds(int area, const std::vector<FieldPair>& pairs, DbfTable& t) {
  for (const FieldPair& p : pairs) fldput(t, p.to, dbVal(area, p.from));
}

// Adds a record with the fields of the selected area's current one: 0, or what refused it.
int _copyRecord(const std::vector<FieldPair>& pairs, DbfTable& t) {
  if (const int result = dbfBegin(t); result != 0) return result;
  _copyDBFflds(selectedArea, pairs, t);
  return dbfAdd(t);
}

std::vector<FieldPair> _appendPairs(const DbfTable& source) {
  std::vector<FieldPair> pairs;
  for (int i = 0; i < dbCOLS(selectedArea); ++i)
    if (const int from = fldno(source, dbName(selectedArea, i)); from >= 0)
      pairs.push_back({from, i});
  return pairs;
}

void _apndDBFflds(DbfTable& source, const std::vector<FieldPair>& pairs) {
  for (const FieldPair& p : pairs) dbSetVal(selectedArea, p.to, fldget(source, p.from));
}

}  // namespace

int CopyRecords(int start, int count, const Lines& fields, const std::string& filename,
                const std::string& condition, DbfTable& t) {
  const std::string name = FnExt(filename, ".dbf");
  Expr test(condition, scanSteps);
  if (ScanCompile(test) != 0) return -1;
  const int made = dbCopyStruc(selectedArea, fields, name, t);
  if (!TargetBegun(t, made, name)) return -1;
  const std::vector<FieldPair> pairs = _pairs(selectedArea, fields, t);
  int tally = 0;
  int result = 0;
  ScanRecords(start, count, test, [&] {
    if (g_opt[optDELETED] && dbDELETED(selectedArea)) return true;
    result = _copyRecord(pairs, t);
    if (result == 0) ++tally;
    return result == 0;
  });
  if (result == 0 && !Interrupted()) return tally;
  TargetClose(t, result);
  return -1;
}

void SayCopied(int tally) {
  if (g_opt[optTALK]) std::printf("%05d RECORD(S) COPIED\n", tally);
}

int moxCpyToDbf(int start, int count, const Lines& fields, const std::string& filename,
                const std::string& condition) {
  DbfTable t;
  const int tally = CopyRecords(start, count, fields, filename, condition, t);
  if (tally < 0 || TargetClose(t, 0) != 0) return -1;
  SayCopied(tally);
  return 0;
}

int KeepAppended(Expr& condition, int& tally, ErrorSlot& lacking) {
  const bool keep = Qualifies(condition);
  const ErrorSlot judged = TakeErr();  // only that of the last record survives
  if (!keep) {
    dbRevert();
    PutErr(judged);
    return 0;
  }
  const int result = dbReplaceNew(selectedArea);
  if (result == dbNoKey) lacking = TakeErr();
  tally += result >= 0;
  return std::min(result, 0);
}

int EndAppend(int result, int tally, const ErrorSlot& lacking) {
  tally -= dbLetGo(selectedArea);
  if (errnum == errNone) PutErr(lacking);
  if (g_opt[optTALK]) std::printf("%05d RECORD(S) ADDED\n", tally);
  return result == 0 ? 0 : -1;
}

int moxApndFmDBF(const std::string& filename, const std::string& condition) {
  const std::string name = FnExt(filename, ".dbf");
  DbfTable source;
  if (dbfOpen(source, name) != 0) {
    SetErr("FILE DOES NOT EXIST", name);
    return -1;
  }
  Expr test(condition, scanSteps);
  if (ScanCompile(test) != 0) return -1;
  const std::vector<FieldPair> pairs = _appendPairs(source);
  ErrorSlot lacking;
  int tally = 0;
  int result = 0;
  dbHold(selectedArea);
  const int rows = dbfROWS(source);  // its own records would be added on and on
  dbfSkipTo(source, 1);
  for (int r = 0; r < rows && !dbfEOF(source) && result == 0 && !Interrupted();
       ++r, dbfSkip(source, 1)) {
    if (dbfDELETED(source)) continue;
    if ((result = dbBegin(selectedArea)) != 0) break;
    _apndDBFflds(source, pairs);
    result = KeepAppended(test, tally, lacking);
  }
  return EndAppend(result, tally, lacking);
}

void OpCpyMox(Operands& o) {
  if (!DbChk()) return;
  const std::string& filename = o.text();
  const int start = o.integer(), count = o.integer();
  const Lines fields = o.list();
  const std::string& condition = o.text();
  if (o.text()[0] == 'Y')
    moxCpyToSdf(start, count, fields, filename, condition, o.text());
  else
    moxCpyToDbf(start, count, fields, filename, condition);
}

void OpCpyDef(Operands& o) {
  if (!DbChk()) return;
  const std::string name = FnExt(o.text(), ".dbf");
  DbfTable t;
  const int made = dbCopyStruc(selectedArea, o.list(), name, t);
  if (TargetBegun(t, made, name)) TargetClose(t, 0);
}

void OpApndDbf(Operands& o) {
  if (!DbChk()) return;
  const std::string& filename = o.text();
  moxApndFmDBF(filename, o.text());
}

}  // namespace mox
