// Comparison, the one operator whose step has an operand.
#pragma once

#include <string_view>

#include "run/run.h"

namespace mox {

// Place of an operator word (LE, GE, NE, EQ, LT, GT) in the table, or -1.
int CmpOperator(std::string_view word);

// a b -> logical, by the operator's place.
int OpCmp(int depth, Stack& stk, int op);

}  // namespace mox
