// The gate between names and values: fields and variables in, variables out.
#pragma once

#include <string>
#include <string_view>

#include "session/value.h"
#include "vars/vars.h"

namespace mox {

// The value of a field or, when no field has the name, of a variable.
Value GetFV(std::string_view name, int row, int col);
// The value of a variable's element; an empty text after a report when there is no such variable.
Value GetV(std::string_view name, int row, int col);
// Stores a value in a variable's element with its type, length and decimals: 0, or -1 after a
// report. A numeric variable has a length of at least 10.
int PutV(std::string_view name, int row, int col, const Value& value);
// A name and where it leads, looked up once and again when that may have changed.
struct Name {
  std::string text;  // in upper case
  unsigned when = 0;
  int area = 0, field = -1;  // field -1: it is no field
  Var* var = nullptr;        // null: there is none
};
// The steps of a name without subscripts, for what they mostly do. False: nothing is done, and
// nothing said.
bool GetNamed(Name& name, Value& value);
bool GetNumber(Name& name, double& x);  // of a numeric field or variable
bool PutNamed(Name& name, const Value& value);

// Stores a number's text under a name in upper case. A variable that wasn't a number gets the
// length and decimals given; one that was keeps its own. 0, or -1 after a report.
int PutNumber(std::string_view name, std::string_view number, int length, int decimals);

}  // namespace mox
