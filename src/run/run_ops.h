// Comparison, the one operator whose step has an operand.
#pragma once

#include <string_view>

namespace mox {

// Place of an operator word (LE, GE, NE, EQ, LT, GT) in the table, or -1.
int CmpOperator(std::string_view word);

// The logical value of a comparison, by the operator's place; an internal error for -1.
std::string_view OpCmp(std::string_view a, std::string_view b, int op);

}  // namespace mox
