// The address table: labels and the step numbers at which they stand, for one compile. Of a label
// that is set twice the first setting counts.
#pragma once

#include <string_view>

namespace mox {

void ATClear();
void ATAdd(std::string_view label, int step);
int ATLookup(std::string_view label);  // the step number, or -1

}  // namespace mox
