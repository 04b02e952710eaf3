// Comparison, the one operator whose step has an operand.
#pragma once

#include <string_view>

#include "session/value.h"

namespace mox {

// Place of an operator word (LE, GE, NE, EQ, LT, GT) in the table, or -1.
int CmpOperator(std::string_view word);

// The truth of a comparison, by the operator's place; an internal error for -1.
bool OpCmp(const Value& a, const Value& b, int op);
bool CmpNumbers(double x, double y, int op);  // the same of two numbers, for a place in the table

// What S2N makes of a value; and the sum, difference, product or quotient of two, by + - * /.
Value ToNumber(const Value& value);
Value StrFmN1N2Op(const Value& a, const Value& b, char op);

}  // namespace mox
