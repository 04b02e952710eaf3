// The address table: labels and the step numbers at which they stand. Of a label that is set twice
// the first setting counts.
#pragma once

#include <string_view>

#include "lang/compile_state.h"

namespace mox {

void ATClear(CompileState& state);
void ATAdd(CompileState& state, std::string_view label, int step);
int ATLookup(const CompileState& state, std::string_view label);  // the step number, or -1

}  // namespace mox
