// Comparison, the one operator whose step has an operand.
#pragma once

#include <string_view>

#include "session/value.h"

namespace mox {

// Place of an operator word (LE, GE, NE, EQ, LT, GT) in the table, or -1.
int CmpOperator(std::string_view word);

// The truth of a comparison, by the operator's place; an internal error for -1.
bool OpCmp(const Value& a, const Value& b, int op);

}  // namespace mox
