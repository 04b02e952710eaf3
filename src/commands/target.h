// The files that whole-table statements make and read beside the work areas.
//
// A target that exists is replaced without a question, but only by a statement that can work: what
// can be checked is checked before the file is touched. A target that can't be written to its end
// is removed.
#pragma once

#include <string>

#include "store/dbf.h"

namespace mox {

// The path of a target: the existing file that has the name in whatever case, or the name itself.
// Nothing, after a report, when a work area holds that file.
bool TargetPath(const std::string& name, std::string& path);

// Opens a table that is read or written as a whole, as dbfOpen does.
int TargetOpen(DbfTable& t, const std::string& path);
// Closes a target on which the last operation gave this result. A full table is an error and stays
// as it is; any other failure is an error and leaves no file. A table that was never opened is
// passed over. 0, or -1 after the report.
int TargetClose(DbfTable& t, int result);
// Removes a target that couldn't be written, with the report.
void TargetLost(const std::string& path);

}  // namespace mox
