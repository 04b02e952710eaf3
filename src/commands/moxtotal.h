// TOTAL: a new table with one record for each run of equal keys.
#pragma once

#include <string>

#include "session/misc.h"

namespace mox {

// Copies the first record of each run of the selected area, in order, with the named fields (none
// means all), the numeric ones summed over the run. A key that is no field makes one run of all
// records. 0; -1, without a report when the structure can't be made.
int moxTotal(const std::string& filename, const std::string& key, const Lines& fields);

}  // namespace mox
