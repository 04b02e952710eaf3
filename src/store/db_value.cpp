// Fields as values: what a name in an expression reads.

#include <algorithm>
#include <cmath>

#include "host/file.h"
#include "session/error.h"
#include "session/number.h"
#include "store/db.h"
#include "store/db_area.h"

namespace mox {

namespace {

constexpr int mostKept = 4096;  // records whose numbers are kept

// Where the number of the area's record is kept, or null.
double* _kept(DbArea& a, int field) {
  if (a.waits != OS_Waits()) {
    a.waits = OS_Waits();
    a.numbers = {};
  }
  std::vector<double>& numbers = a.numbers[field];
  if (numbers.empty())
    numbers.assign(static_cast<size_t>(std::min(dbfROWS(a.table), mostKept)) + 1, std::nan(""));
  const auto at = static_cast<size_t>(a.table.recno);
  return at < numbers.size() ? &numbers[at] : nullptr;
}

}  // namespace

bool dbFindField(std::string_view name, int& area, int& field) {
  const std::string_view bare = af2f(name);
  area = bare.size() == name.size() ? 0 : af2a(name);
  field = area < 0 ? -1 : fldno(db[area].table, bare);
  return field >= 0;
}

void dbFieldValue(int area, int field, Value& value) {
  DbfTable& t = db[area].table;
  const std::string_view bytes = fldget(t, field);
  if (t.typ[field] == 'L')
    value.setTruth(!bytes.empty() && std::string_view("TtYy").find(bytes[0]) != bytes.npos);
  else if (t.typ[field] == 'N')
    value.setDigits(bytes, t.len[field], t.dec[field]);
  else
    value.setContent(bytes);
}

void dbSetFieldValue(int area, int field, const Value& value) {
  DbfTable& t = dbAreaOf(area).table;
  std::string room;
  if (t.typ[field] == 'N' && value.isKnown())
    fldputNumber(t, field, value.number());
  else if (t.typ[field] == 'L' && value.typ().type == 'L')
    fldput(t, field, L_FmVTLD(value) ? "T" : "F");
  else
    fldput(t, field, value.content(room));
}

bool dbFieldNumber(int area, int field, double& x) {
  DbfTable& t = db[area].table;
  double* const kept = db[area].keeps ? _kept(db[area], field) : nullptr;
  if (kept && !std::isnan(*kept)) return x = *kept, true;
  const char* const bytes = dbfRow(t).data() + t.pos[field];
  const auto length = static_cast<size_t>(t.len[field]);
  if (t.typ[field] != 'N' || (length > 0 && *bytes == '"')) return false;
  x = TxtToDbl({bytes, length});  // it ends at a zero byte, too
  if (kept) *kept = x;
  return true;
}

void dbKeepNumbers(int area, bool keeps) {
  db[area].keeps = keeps;
  db[area].numbers = {};
}

std::optional<Value> GetDb(std::string_view name) {
  int area = 0, field = 0;
  Value value;
  if (dbFindField(name, area, field))
    dbFieldValue(area, field, value);
  else if (area >= 0)
    return std::nullopt;
  else
    SynErr("AREA");
  return value;
}

}  // namespace mox
