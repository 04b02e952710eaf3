// Defining a table: the entry of its fields and their checks.
//
// CREATE asks for the fields line by line. MODIFY STRUCTURE shows the fields of the selected table
// as a grid of 32 plain lines of 24 bytes,
//
//   NAME______ T  www  ddd
//
// whose columns mean nothing until the words of a line are read again; it then makes the table
// anew, without records.
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

// Edits the structure of the selected table: 0, or -1 after a report with the table as it was.
int MoxModiStru();
// Makes a table of the grid's lines, up to the first blank one. A line that is refused, with its
// message, leaves an empty field. 0, or -1 after a report with the file as it was.
int _CrDbf(const std::string& filename, const Lines& lines);
// Edits lines, from this row on down to the last of the screen, until a key that saves, abandons
// or leaves them at either end; the last key.
int edScrn(int row, int col, int n, std::string* lines);

}  // namespace mox
