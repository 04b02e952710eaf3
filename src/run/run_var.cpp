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
#include "session/session.h"
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

// Sets an element to what it holds of a value.
void _setElement(Value& element, char type, const Value& value) {
  std::string room;
  if (type == 'N')
    element.setNumber(value);
  else
    element.setText(type != 'L' ? value.content(room) : L_FmVTLD(value) ? "T" : "F");
}

// The value that an element reads as; a null one is empty.
void _read(const Var& var, const Value* element, Value& value) {
  static const Value none;
  if (!element) element = &none;
  const int length = var.props[propLength], decimals = var.props[propDecimals];
  if (var.props[propType] == 'L') {
    value.setTruth(element->text().starts_with('T'));
  } else if (var.props[propType] != 'N') {
    value.setContent(element->text());
  } else if (!element->isKnown()) {
    value.setDigits(element->text(), length, decimals);
  } else {
    value = *element;
    value.setTail(length, decimals);
  }
}

void _setTyp(Var& var, int type, int length, int decimals) {
  var.props[propType] = type;
  var.props[propLength] = type == 'N' ? std::max(length, minNumberLength) : length;
  var.props[propDecimals] = decimals;
}

void _lookUp(Name& name) {
  if (name.when == g_names) return;
  name.when = g_names;
  if (!dbFindField(name.text, name.area, name.field)) name.field = -1;
  name.var = name.area < 0 ? nullptr : VarAt(VarNum(name.text));
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

}  // namespace

Value GetFV(std::string_view name, int row, int col) {
  if (std::optional<Value> field = GetDb(name)) return std::move(*field);
  return GetV(name, row, col);
}

Value GetV(std::string_view name, int row, int col) {
  Value value;
  if (Var* const var = VarAt(VarNum(name)))
    _read(*var, VarElement(*var, row, col), value);
  else
    SetErr("VARIABLE CANNOT BE FOUND", name);
  return value;
}

int PutV(std::string_view name, int row, int col, const Value& value) {
  const Typ typ = value.typ();
  Value element;
  _setElement(element, typ.type, value);
  if (_stored(VarPutS2(name, row, col, std::move(element))) != 0) return -1;
  _setTyp(*VarAt(VarNum(name)), typ.type, typ.length, typ.decimals);
  return 0;
}

bool GetNamed(Name& name, Value& value) {
  _lookUp(name);
  if (name.field < 0 && !name.var) return false;
  if (name.field >= 0)
    dbFieldValue(name.area, name.field, value);
  else
    _read(*name.var, VarElement(*name.var, 0, 0), value);
  return true;
}

bool GetNumber(Name& name, double& x) {
  _lookUp(name);
  if (name.field >= 0) return dbFieldNumber(name.area, name.field, x);
  const Value* const element = name.var ? VarElement(*name.var, 0, 0) : nullptr;
  if (!element || !element->isKnown() || name.var->props[propType] != 'N') return false;
  x = element->number();
  return true;
}

bool PutNamed(Name& name, const Value& value) {
  _lookUp(name);
  Value* const element = name.var ? VarElement(*name.var, 0, 0) : nullptr;
  // A bare text may have no type.
  if (!element || (!value.isKnown() && !value.isQuoted())) return false;
  const Typ typ = value.typ();
  _setElement(*element, typ.type, value);
  _setTyp(*name.var, typ.type, typ.length, typ.decimals);
  return true;
}

int PutNumber(std::string_view name, std::string_view number, int length, int decimals) {
  const std::string upper = strUpper(name);
  if (_stored(VarPut(upper, number)) != 0) return -1;
  Var& var = *VarAt(VarNum(upper));
  if (var.props[propType] != 'N') _setTyp(var, 'N', length, decimals);
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
