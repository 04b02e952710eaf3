// Defining a table: the entry of its fields and their checks.
#pragma once

#include <string>

#include "session/misc.h"

namespace mox {

constexpr int maxFieldWidth = 254;

// One field as a person describes it.
struct FieldDef {
  std::string name;  // upper case, at most maxFieldName bytes
  char type = ' ';
  int width = 0;
  int decimals = 0;
};

// Makes a field of the words name, type, width, decimals, of which the last two may be missing:
// 0, or after a message -1 for a bad name, -2 for a bad type, -3 for a bad width.
int _CrFld(const Lines& words, FieldDef& field);

// Asks for the fields of a new table line by line, and writes it, empty. A file of that name stays
// as it was when the input ends before the last line or when the table can't be written. 0, or -1
// after a report.
int MoxCreate(const std::string& filename);

}  // namespace mox
