// The memory variables of the session: one flat table of named values.
//
// A variable is a name and rows times columns texts, with a few numbered properties. Its number
// is its place in the table, in order of creation; a deletion moves the later ones down. An element
// is a text, or a number that makes its text when somebody asks for it. The forms of the operand
// stack are for the steps that store and fetch; what stands in an element is fixed by the type:
//
//   N  the number as FmtSci(x, 15) prints it, or any text that reads as a number
//   L  "T" or "F"
//   C  the plain content
//
// Names are compared exactly; callers bring them in upper case. A name holds no dot.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "session/value.h"

namespace mox {

constexpr int maxVars = 100;
constexpr int maxProps = 10;

enum VarProp {
  propRows = 0,    // set by VarDim, never changed
  propCols = 1,    // the same
  propType = 2,    // 'N', 'L' or 'C'; of the whole variable: the last store decides
  propLength = 3,  // display width
  propDecimals = 4,
};

// Results of the storing operations.
enum VarResult {
  varNoArray = -1,    // no such number; a new name with a subscript; VarDim: the name exists
  varNoElement = -2,  // a subscript outside the dimensions
  varFull = -3,       // 100 variables are in use
  varDotted = -4,     // the name holds a dot
};

struct Var {
  std::string name;
  std::vector<Value> values;  // row by row: element (r, c) is values[r * columns + c]
  std::array<int, maxProps> props{};
};

int VarCount();
int VarNum(std::string_view name);       // the number, or -1
const std::string* VarName(int number);  // null for a bad number

// Creates a variable of empty elements: its number, or a VarResult.
int VarDim(std::string_view name, int rows, int cols);

// Store an element: 0, or a VarResult. The forms by name create a 1 by 1 variable when there is
// none.
int VarPutI2(int number, int row, int col, Value element);
int VarPutS2(std::string_view name, int row, int col, Value element);
int VarPut(std::string_view name, Value element);

// Fetch an element; an empty one for a bad number, name or subscript. The reference holds until the
// table changes.
const Value& VarGetI2(int number, int row, int col);
const Value& VarGetS2(std::string_view name, int row, int col);
const Value& VarGet(std::string_view name);

// The variable itself, null for a bad number; it stays where it is as long as names lead where they
// led (session.h: g_names). And an element of it, null for a subscript outside its dimensions.
Var* VarAt(int number);
inline Value* VarElement(Var& var, int row, int col) {
  const int rows = var.props[propRows], cols = var.props[propCols];
  if (row < 0 || row >= rows || col < 0 || col >= cols) return nullptr;
  return &var.values[static_cast<size_t>(row) * static_cast<size_t>(cols) +
                     static_cast<size_t>(col)];
}

// Properties 0 to 9; -1 for a bad number or property.
int VarGetProp(int number, int prop);
int VarSetProp(int number, int prop, int value);

void VarClear();
void VarDelNum(int number);  // deletes one variable; nothing for a bad number

// True when the name fits the pattern: ? fits any byte, * fits the whole rest whatever stands
// behind it, other bytes fit themselves. A tail of ? and * also fits nothing.
bool IsLike(std::string_view name, std::string_view pattern);
void VarDel(std::string_view pattern);        // deletes the variables whose names fit
void VarDelExcept(std::string_view pattern);  // deletes those whose names don't

}  // namespace mox
