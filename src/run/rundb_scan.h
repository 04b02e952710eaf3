// Visiting records one by one under a scope and a condition.
#pragma once

#include <functional>
#include <string>

#include "run/run_expr.h"

namespace mox {

// Visits records of the selected area in order, from a record number (0 is the first in order) on,
// until count were visited or the table ends, and calls the action for those that qualify. The
// table stays on the last record visited. An action that returns false ends the scan.
// 0, or -1 after a report: when the condition gives no complete list, and nothing is visited, or
// when the person stopped the scan.
int ScanRecords(int start, int count, const std::string& condition,
                const std::function<bool()>& action);
// The same with a condition that is compiled.
void ScanRecords(int start, int count, Expr& condition, const std::function<bool()>& action);

}  // namespace mox
