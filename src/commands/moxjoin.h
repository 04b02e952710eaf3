// JOIN: a new table from the pairs of records of area 0 and area 1.
#pragma once

#include <string>

#include "run/run_expr.h"
#include "session/misc.h"

namespace mox {

// Visits every pair, area 0 outside, each in its own order, and adds a record for each for which
// the condition is true. The fields are names with an optional area prefix; none means all of area
// 0 and then all of area 1. 0, or -1 after a report.
int moxJoin(const std::string& filename, const std::string& condition, const Lines& fields);

// True when the condition compares a field of one area with a field of the other for equality: then
// no pair needs a run of it.
bool JoinsEqualFields(Expr& condition);

}  // namespace mox
