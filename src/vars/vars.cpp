#include "vars/vars.h"

#include <algorithm>
#include "session/session.h"

namespace mox {

namespace {

std::vector<Var> _makeTable() {
  std::vector<Var> table;
  table.reserve(maxVars);  // the records stay where they are while the table grows
  return table;
}
std::vector<Var> sym = _makeTable();

const Value _none;

}  // namespace

int VarCount() { return static_cast<int>(sym.size()); }

int VarNum(std::string_view name) {
  for (size_t i = 0; i < sym.size(); ++i)
    if (sym[i].name == name) return static_cast<int>(i);
  return -1;
}

const std::string* VarName(int number) {
  const Var* const var = VarAt(number);
  return var ? &var->name : nullptr;
}

Var* VarAt(int number) {
  return number >= 0 && number < VarCount() ? &sym[static_cast<size_t>(number)] : nullptr;
}

int VarDim(std::string_view name, int rows, int cols) {
  if (name.find('.') != name.npos) return varDotted;
  if (VarNum(name) >= 0) return varNoArray;
  if (VarCount() >= maxVars) return varFull;
  Var var;
  var.name = name;
  var.props[propRows] = std::max(rows, 0);
  var.props[propCols] = std::max(cols, 0);
  var.values.resize(static_cast<size_t>(var.props[propRows]) *
                    static_cast<size_t>(var.props[propCols]));
  sym.push_back(std::move(var));
  ++g_names;
  return VarCount() - 1;
}

int VarPutI2(int number, int row, int col, Value element) {
  Var* const var = VarAt(number);
  if (!var) return varNoArray;
  Value* const place = VarElement(*var, row, col);
  if (!place) return varNoElement;
  *place = std::move(element);
  return 0;
}

int VarPutS2(std::string_view name, int row, int col, Value element) {
  if (name.find('.') != name.npos) return varDotted;
  int number = VarNum(name);
  if (number < 0) {
    if (row != 0 || col != 0) return varNoArray;
    number = VarDim(name, 1, 1);
    if (number < 0) return varFull;
  }
  return VarPutI2(number, row, col, std::move(element));
}

int VarPut(std::string_view name, Value element) {
  return VarPutS2(name, 0, 0, std::move(element));
}

const Value& VarGetI2(int number, int row, int col) {
  Var* const var = VarAt(number);
  const Value* const element = var ? VarElement(*var, row, col) : nullptr;
  return element ? *element : _none;
}

const Value& VarGetS2(std::string_view name, int row, int col) {
  return VarGetI2(VarNum(name), row, col);
}

const Value& VarGet(std::string_view name) { return VarGetS2(name, 0, 0); }

int VarGetProp(int number, int prop) {
  const Var* const var = VarAt(number);
  return var && prop >= 0 && prop < maxProps ? var->props[static_cast<size_t>(prop)] : -1;
}

int VarSetProp(int number, int prop, int value) {
  Var* const var = VarAt(number);
  if (!var || prop < 0 || prop >= maxProps) return -1;
  var->props[static_cast<size_t>(prop)] = value;
  return 0;
}

void VarClear() {
  sym.clear();
  ++g_names;
}

void VarDelNum(int number) {
  if (!VarAt(number)) return;
  sym.erase(sym.begin() + number);
  ++g_names;
}

bool IsLike(std::string_view name, std::string_view pattern) {
  const size_t both = std::min(name.size(), pattern.size());
  for (size_t i = 0; i < both; ++i) {
    if (pattern[i] == '*') return true;
    if (pattern[i] != '?' && pattern[i] != name[i]) return false;
  }
  return name.size() == both && pattern.find_first_not_of("?*", both) == pattern.npos;
}

void VarDel(std::string_view pattern) {
  std::erase_if(sym, [&](const Var& var) { return IsLike(var.name, pattern); });
  ++g_names;
}

void VarDelExcept(std::string_view pattern) {
  std::erase_if(sym, [&](const Var& var) { return !IsLike(var.name, pattern); });
  ++g_names;
}

}  // namespace mox
