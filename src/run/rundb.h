// What the record steps share.
#pragma once

#include <string>
#include <string_view>

#include "run/run_expr.h"

namespace mox {

// True when the selected area's record number is one of the table's.
bool validRno();
// Starts a display line: record number and deletion mark.
void dspRnoDel();
// Shows the raw text of every field, each with a blank behind it.
void dspFlds();
// Shows the value of an expression: 0, or -1 when it gives no complete list to run.
int dspExpr(Expr& e);

// The source of an expression as it was typed, or the content of a text when it is one quoted text
// and no more.
std::string SourceText(const std::string& source);

}  // namespace mox
