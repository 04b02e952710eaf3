// Fields as values: what a name in an expression reads.

#include "session/error.h"
#include "session/number.h"
#include "store/db.h"
#include "store/db_area.h"

namespace mox {

namespace {

std::string_view _bytes(DbfTable& t, int field) {
  const std::string_view bytes = std::string_view(dbfRow(t)).substr(
      static_cast<size_t>(t.pos[field]), static_cast<size_t>(t.len[field]));
  return bytes.substr(0, bytes.find('\0'));
}

}  // namespace

bool dbFindField(std::string_view name, int& area, int& field) {
  const std::string_view bare = af2f(name);
  area = bare.size() == name.size() ? 0 : af2a(name);
  field = area < 0 ? -1 : fldno(db[area].table, bare);
  return field >= 0;
}

Value dbFieldValue(int area, int field) {
  DbfTable& t = db[area].table;
  const std::string_view bytes = _bytes(t, field);
  if (t.typ[field] == 'L')
    return L_ToVTLD(!bytes.empty() && std::string_view("TtYy").find(bytes[0]) != bytes.npos);
  if (t.typ[field] != 'N') return s2qs(bytes);
  return Value::ofDigits(bytes, t.len[field], t.dec[field]);
}

bool dbFieldNumber(int area, int field, double& x) {
  DbfTable& t = db[area].table;
  const std::string_view bytes = _bytes(t, field);
  if (t.typ[field] != 'N' || bytes.starts_with('"')) return false;
  x = TxtToDbl(bytes);
  return true;
}

std::optional<Value> GetDb(std::string_view name) {
  int area = 0, field = 0;
  if (dbFindField(name, area, field)) return dbFieldValue(area, field);
  if (area >= 0) return std::nullopt;
  SynErr("AREA");
  return Value();
}

}  // namespace mox
