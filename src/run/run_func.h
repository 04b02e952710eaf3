// What the steps of the functions share.
//
// A call finds its arguments on the stack, the first deepest, and on top their number. It leaves
// one result in the place of the first argument, or of the number when it has none, and so returns
// minus the number of arguments. A call with a wrong number reports it and leaves all as it is.
#pragma once

#include <string>

#include "run/run.h"

namespace mox {

// The number of arguments of the call on top of the stack.
int ArgCount(int depth, const Stack& stk);

// The arguments of the call, behind the last their number; null after a report, which shows the
// usage, when they aren't at least least and at most most.
std::string* Args(int depth, Stack& stk, int least, int most, const char* usage);

}  // namespace mox
