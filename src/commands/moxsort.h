// SORT: a copy of the selected table, sorted in memory.
#pragma once

#include <string>

#include "store/dbf.h"

namespace mox {

enum SortOrder { sortDescending = 0, sortAscending = -1 };

// Copies the selected table and sorts the copy by the text of one field. 0; -1 when the copy has no
// such field: it then stands unsorted; -2 after a report.
int MoxSort(const std::string& field, const std::string& filename, int order);

}  // namespace mox
