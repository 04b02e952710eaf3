// What the record steps share.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "run/run_nest.h"
#include "run/run_value.h"

namespace mox {

// True when the selected area's record number is one of the table's.
bool validRno();
// Starts a display line: record number and deletion mark.
void dspRnoDel();
// Shows the raw text of every field, each with a blank behind it.
void dspFlds();
// Shows the value of an expression: 0, or -1 when it gives no complete list to run.
int dspExpr(Expr& e);

// Compiles an expression, with a report when it gives no complete list: 0 or -1.
int ScanCompile(Expr& e);
// Runs a compiled condition on the current record: true when its integer value isn't 0.
bool Qualifies(Expr& condition);

// Visits records of the selected area in order, from a record number (0 is the first in order) on,
// until count were visited or the table ends, and calls the action for those that qualify. The
// table stays on the last record visited. An action that returns false ends the scan.
// 0, or -1 after a report: when the condition gives no complete list, and nothing is visited, or
// when the person stopped the scan.
int ScanRecords(int start, int count, const std::string& condition,
                const std::function<bool()>& action);
// The same with a condition that is compiled.
void ScanRecords(int start, int count, Expr& condition, const std::function<bool()>& action);

// The source of an expression as it was typed, or the content of a text when it is one quoted text
// and no more.
std::string SourceText(const std::string& source);

}  // namespace mox
