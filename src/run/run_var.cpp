// The steps that connect names with values. A name is resolved when the step runs.

#include "run/run_var.h"

#include <algorithm>
#include <optional>

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
constexpr int numberDigits = 15;

// A reference on the stack, top last: name, up to two subscripts, their count and the name's.
struct Reference {
  int count;  // 1 to 3
  std::string* name;
  int row = 0, col = 0;
};

// Reads the reference on top of the stack and turns its name into upper case; nothing after a
// report when the count is wrong.
std::optional<Reference> _reference(int depth, Stack& stk) {
  const int count = depth < 1 ? 0 : DblToInt(TxtToDbl(stk[depth - 1]));
  if (count < 1 || count > 3 || count >= depth) {
    IntErr("2");
    return std::nullopt;
  }
  Reference ref{count, &stk[depth - 1 - count]};
  *ref.name = strUpper(*ref.name);
  if (count >= 2) ref.col = DblToInt(TxtToDbl(stk[depth - 2]));
  if (count == 3) ref.row = DblToInt(TxtToDbl(stk[depth - 3]));
  return ref;
}

std::string _elementText(const Typ& typ, std::string_view value) {
  if (typ.type == 'L') return L_FmVTLD(value) ? "T" : "F";
  if (typ.type == 'N') return FmtSci(TxtToDbl(value), numberDigits);
  return qs2s(value);
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

std::string GetFV(std::string_view name, int row, int col) {
  if (std::optional<std::string> field = GetDb(name)) return std::move(*field);
  return GetV(name, row, col);
}

std::string GetV(std::string_view name, int row, int col) {
  const int number = VarNum(name);
  if (number < 0) {
    SetErr("VARIABLE CANNOT BE FOUND", name);
    return "";
  }
  const std::string& element = VarGetI2(number, row, col);
  const int type = VarGetProp(number, propType);
  if (type == 'L') return L_ToVTLD(!element.empty() && element[0] == 'T');
  if (type != 'N') return s2qs(element);
  std::string value = element + ",N,";
  value += std::to_string(VarGetProp(number, propLength));
  value += ',';
  value += std::to_string(VarGetProp(number, propDecimals));
  return value;
}

int PutV(std::string_view name, int row, int col, std::string_view value) {
  const Typ typ = GetTyp(value);
  if (_stored(VarPutS2(name, row, col, _elementText(typ, value))) != 0) return -1;
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

int OpGetV(int depth, Stack& stk) {
  const std::optional<Reference> ref = _reference(depth, stk);
  if (!ref) return 0;
  *ref->name = GetFV(*ref->name, ref->row, ref->col);
  return -ref->count;
}

int OpPutV(int depth, Stack& stk) {
  const std::optional<Reference> ref = _reference(depth, stk);
  if (!ref) return 0;
  if (ref->count + 2 > depth) {
    IntErr("2");
    return 0;
  }
  PutV(*ref->name, ref->row, ref->col, stk[depth - ref->count - 2]);
  return -(ref->count + 2);
}

int OpStore(int depth, Stack& stk) {
  const int change = OpPutV(depth, stk);
  if (change < 0 && g_opt[optTALK]) {
    SayVal(0, stk[depth + change]);
    SayNL();
  }
  return change;
}

int OpRelease(int depth, Stack& stk) {
  const int count = TxtToInt(stk[depth - 1]);
  const int removed = 2 * count + 1;
  for (int i = depth - removed; i < depth - 1; i += 2) {
    const std::string pattern = strUpper(stk[i]);
    if (TxtToInt(stk[i + 1]) != 0)
      VarDel(pattern);
    else
      VarDelExcept(pattern);
  }
  return -removed;
}

}  // namespace mox
