// COPY to a table, COPY STRUCTURE, APPEND FROM a table.
#pragma once

#include <string>

#include "run/run_expr.h"
#include "session/error.h"
#include "session/misc.h"
#include "store/dbf.h"

namespace mox {

// Copies records of the selected area into a new table, with the named fields (none means all) in
// the order of the list, which ends at the first name that is no field. The start, count and
// condition are those of ScanRecords. Each copy is live. A target that can't be made is no error:
// the scan runs and stores nothing. 0, or -1 after a report.
int moxCpyToDbf(int start, int count, const Lines& fields, const std::string& filename,
                const std::string& condition);

// The same up to its end, which the caller makes: the target stays open unless it can't be made.
// The tally of the records, or -1 after a report.
int CopyRecords(int start, int count, const Lines& fields, const std::string& filename,
                const std::string& condition, DbfTable& t);
void SayCopied(int tally);

// Appends the live records of a table file to the selected area, field by field of the same name,
// but those for which the condition, read on the new record, isn't true. 0, or -1 after
// a report.
int moxApndFmDBF(const std::string& filename, const std::string& condition);

// Runs the condition on the record that was begun (dbBegin) and filled, and adds it or gives it up:
// 0; another number, after a report, when it couldn't be written: it isn't there then. The report
// of a record that is kept without a key in some index goes to lacking.
int KeepAppended(Expr& condition, int& tally, ErrorSlot& lacking);
// Ends an APPEND FROM: tells the tally, and reports the last record that lacks a key.
int EndAppend(int result, int tally, const ErrorSlot& lacking);

}  // namespace mox
