// UPDATE: changes an area from a second table, both in the order of a common key.
#pragma once

#include <string>

#include "session/misc.h"

namespace mox {

// Walks both tables once, side by side. Where the keys are equal, the ADD fields of the source are
// added to those of the area's record, then each field of targets takes the value of its partner
// in sources; names without a field or a partner are passed over. 0, or -1 after a report.
int moxUpdate(int area, const std::string& filename, const std::string& key, const Lines& adds,
              const Lines& targets, const Lines& sources);

}  // namespace mox
