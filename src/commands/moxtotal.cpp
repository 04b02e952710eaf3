#include "commands/moxtotal.h"

#include <cstdio>
#include <vector>

#include "commands/target.h"
#include "run/handlers.h"
#include "run/rundb_scan.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int sumDigits = 10;     // behind the point of a sum on its way to the field
constexpr int toldRecords = 100;  // how often the count is told

// A listed field: its places in the area and in the target, and its sum.
struct TotalField {
  int from;
  int to;
  double sum = 0;
  bool isNumber() const { return dbTyp(selectedArea, from) == 'N'; }
};

std::string_view _key(int field) { return dbVal(selectedArea, field); }

// Passes over the deleted records that the option DELETED hides.
void _passDeleted() {
  while (g_opt[optDELETED] && !dbEOF(selectedArea) && dbDELETED(selectedArea))
    dbSkip(selectedArea, 1);
}

void _copyFields(const std::vector<TotalField>& fields, DbfTable& t) {
  for (const TotalField& f : fields) fldput(t, f.to, dbVal(selectedArea, f.from));
}

void _sumNumFields(std::vector<TotalField>& fields) {
  for (TotalField& f : fields)
    if (f.isNumber()) f.sum += TxtToDbl(dbVal(selectedArea, f.from));
}

void _updNumFields(const std::vector<TotalField>& fields, DbfTable& t) {
  for (const TotalField& f : fields)
    if (f.isNumber()) fldput(t, f.to, FmtSci(f.sum, sumDigits));
}

// Adds the record of the run that starts here and goes to the record behind it: 0, or what
// refused the record.
int _totalRun(DbfTable& t, int key, std::vector<TotalField>& fields) {
  if (const int result = dbfAppend(t); result != 0) return result;
  _copyFields(fields, t);
  for (TotalField& f : fields) f.sum = 0;
  const std::string same(_key(key));
  for (; !dbEOF(selectedArea) && _key(key) == same; _passDeleted()) {
    _sumNumFields(fields);
    dbSkip(selectedArea, 1);
  }
  _updNumFields(fields, t);
  return dbfReplace(t);
}

void _tell(int groups) {
  if (g_opt[optTALK]) std::printf("%05d RECORDS COPIED\n", groups);
}

// The listed fields, at most as many as a table holds; false when a name is no field.
bool _totalFields(const Lines& names, std::vector<TotalField>& fields) {
  for (const std::string& name : names) {
    const int from = dbFno(selectedArea, name);
    if (from < 0) return false;
    if (fields.size() < maxFields) fields.push_back({from, -1});
  }
  if (names.empty())
    for (int i = 0; i < dbCOLS(selectedArea); ++i) fields.push_back({i, -1});
  return true;
}

}  // namespace

int moxTotal(const std::string& filename, const std::string& key, const Lines& names) {
  std::vector<TotalField> fields;
  if (!_totalFields(names, fields)) return -1;
  const std::string name = FnExtDflt(filename, ".dbf");
  DbfTable t;
  if (!TargetBegun(t, dbCopyStruc(selectedArea, names, name, t), name)) return -1;
  for (TotalField& f : fields) f.to = fldno(t, dbName(selectedArea, f.from));
  const int keyField = dbFno(selectedArea, key);
  int groups = 0;
  int result = 0;
  dbTop(selectedArea);
  _passDeleted();
  for (; !dbEOF(selectedArea) && result == 0 && !Interrupted(); _passDeleted()) {
    result = _totalRun(t, keyField, fields);
    if (result == 0 && ++groups % toldRecords == 0) _tell(groups);
  }
  if (TargetClose(t, result) != 0) return -1;
  if (groups == 0 || groups % toldRecords != 0) _tell(groups);
  return 0;
}

void OpTotal(Operands& o) {
  if (!DbChk()) return;
  const std::string& filename = o.text();
  const std::string& key = o.text();
  moxTotal(filename, key, o.list());
}

}  // namespace mox
