// The tables that whole-table statements make beside the work areas.
//
// A target that exists is replaced without a question, but only by a statement that can work, and
// only when the new table is whole: until then, and after any refusal, the old one stands.
#pragma once

#include <string>

#include "store/dbf.h"

namespace mox {

// Nothing, after a report, when an area of this or of another session has the target open.
bool TargetFree(int made, const std::string& name);
// Ends a target on which the last operation gave this result: it takes its place when the statement
// went well and wasn't stopped. A table that was never opened is passed over. 0, or -1 after a
// report.
int TargetClose(DbfTable& t, int result);

}  // namespace mox
