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

namespace mox {

// Asks for the fields of a new table line by line, and writes it, empty. A file of that name stays
// as it was when the input ends before the last line or when the table can't be written. 0, or -1
// after a report.
int MoxCreate(const std::string& filename);

// Edits the structure of the selected table: 0, or -1 after a report with the table as it was.
int MoxModiStru();

}  // namespace mox
