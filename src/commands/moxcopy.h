// COPY to a table, COPY STRUCTURE, APPEND FROM a table.
#pragma once

#include <string>

#include "run/run_expr.h"
#include "session/misc.h"

namespace mox {

// Copies records of the selected area into a new table, with the named fields (none means all) in
// the order of the list, which ends at the first name that is no field. The start, count and
// condition are those of ScanRecords. Each copy is live. A target that can't be made is no error:
// the scan runs and stores nothing. 0, or -1 after a report.
int moxCpyToDbf(int start, int count, const Lines& fields, const std::string& filename,
                const std::string& condition);

// Appends the live records of a table file to the selected area, field by field of the same name,
// and takes back those for which the condition, read on the new record, isn't true. 0, or -1 after
// a report.
int moxApndFmDBF(const std::string& filename, const std::string& condition);

// Runs the condition on the record that was just appended and filled, and keeps the record or takes
// it back: 0, or another number, after a report, when that couldn't be written.
int KeepAppended(Expr& condition, int& tally);

}  // namespace mox
