// The steps that connect names with values. A name is resolved when the step runs.

#include "run/run_var.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "run/handlers.h"
#include "run/run_out.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "session/value.h"
#include "store/db.h"
#include "vars/vars.h"

namespace mox {

namespace {

constexpr int minNumberLength = 10;

// A name with its subscripts.
struct Reference {
  std::string name;
  int row = 0, col = 0;
};

Reference _reference(Operands& o) {
  Reference ref{strUpper(o.text())};
  if (o.more()) ref.col = o.integer();
  if (o.more()) ref.row = std::exchange(ref.col, o.integer());
  return ref;
}

// Stores the value below the reference; the value.
const Value& _putValue(Operands& o) {
  const Value& value = o.value();
  const Reference ref = _reference(o);
  PutV(ref.name, ref.row, ref.col, value);
  return value;
}

Value _element(const Typ& typ, const Value& value) {
  if (typ.type == 'L') return L_FmVTLD(value) ? "T" : "F";
  if (typ.type == 'N') return Value::ofNumber(value.number());
  return qs2s(value.text());
}

// Reports the result of a store: 0 or -1.
int _stored(int result) {
  switch (result) {
    case varNoArray: SetErr("ARRAY NOT DEFINED", ""); return -1;
    case varNoElement: SetErr("OUT OF BOUNDS", ""); return -1;
    case varFull: SetErr("TOO MANY MEMORY VARIABLES", ""); return -1;
    case varDotted: SetErr("SYNTAX ERROR", "."); return -1;
    default: return 0;
  }
}

void _setTyp(int number, int type, int length, int decimals) {
  VarSetProp(number, propType, type);
  VarSetProp(number, propLength, type == 'N' ? std::max(length, minNumberLength) : length);
  VarSetProp(number, propDecimals, decimals);
}

}  // namespace

Value GetFV(std::string_view name, int row, int col) {
  if (std::optional<Value> field = GetDb(name)) return std::move(*field);
  return GetV(name, row, col);
}

Value GetV(std::string_view name, int row, int col) {
  const int number = VarNum(name);
  if (number < 0) {
    SetErr("VARIABLE CANNOT BE FOUND", name);
    return "";
  }
  const Value& element = VarGetI2(number, row, col);
  const int type = VarGetProp(number, propType);
  if (type == 'L') return L_ToVTLD(element.text().starts_with('T'));
  if (type != 'N') return s2qs(element.text());
  return element.withTail(VarGetProp(number, propLength), VarGetProp(number, propDecimals));
}

int PutV(std::string_view name, int row, int col, const Value& value) {
  const Typ typ = value.typ();
  if (_stored(VarPutS2(name, row, col, _element(typ, value))) != 0) return -1;
  _setTyp(VarNum(name), typ.type, typ.length, typ.decimals);
  return 0;
}

int PutNumber(std::string_view name, std::string_view number, int length, int decimals) {
  const std::string upper = strUpper(name);
  if (_stored(VarPut(upper, number)) != 0) return -1;
  const int place = VarNum(upper);
  if (VarGetProp(place, propType) != 'N') _setTyp(place, 'N', length, decimals);
  return 0;
}

void OpGetV(Operands& o) {
  const Reference ref = _reference(o);
  o.result(GetFV(ref.name, ref.row, ref.col));
}

void OpPutV(Operands& o) { _putValue(o); }

void OpStore(Operands& o) {
  const Value& value = _putValue(o);
  if (!g_opt[optTALK]) return;
  SayVal(0, value);
  SayNL();
}

void OpRelease(Operands& o) {
  const Lines pairs = o.list();
  for (size_t i = 0; i < pairs.size(); i += 2) {
    const std::string pattern = strUpper(pairs[i]);
    if (TxtToInt(pairs[i + 1]) != 0)
      VarDel(pattern);
    else
      VarDelExcept(pattern);
  }
}

}  // namespace mox
