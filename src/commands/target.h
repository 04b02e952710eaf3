// The tables that whole-table statements make beside the work areas.
//
// A target that exists is replaced without a question, but only by a statement that can work, and
// only when the new table is whole: until then, and after any refusal, the old one stands.
#pragma once

#include <string>

#include "store/dbf.h"

namespace mox {

// After dbCopyStruc with this result: false, after a report, when no target was begun.
bool TargetBegun(const DbfTable& t, int made, const std::string& name);
// Ends a target on which the last operation gave this result: it takes its place when the statement
// went well and wasn't stopped. 0, or -1 after a report.
int TargetClose(DbfTable& t, int result);

}  // namespace mox
