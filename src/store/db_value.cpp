// Fields as values: what a name in an expression reads.

#include "session/error.h"
#include "store/db.h"
#include "store/db_area.h"

namespace mox {

std::optional<Value> GetDb(std::string_view name) {
  int area = 0;
  if (const std::string_view bare = af2f(name); bare.size() < name.size()) {
    area = af2a(name);
    if (area < 0) {
      SynErr("AREA");
      return Value();
    }
    name = bare;
  }
  const DbfTable& t = db[area].table;
  const int field = fldno(t, name);
  if (field < 0) return std::nullopt;
  std::string text = fldget(t, field);
  if (t.typ[field] == 'L')
    return L_ToVTLD(!text.empty() && std::string_view("TtYy").find(text[0]) != text.npos);
  if (t.typ[field] != 'N') return Value(s2qs(text));
  return Value::ofDigits(text, t.len[field], t.dec[field]);
}

}  // namespace mox
