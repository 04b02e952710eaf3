// The insides of the work areas, shared by db.cpp and db_index.cpp alone.
#pragma once

#include <array>

#include "store/db.h"
#include "store/dbf.h"
#include "store/ndx.h"

namespace mox {

struct DbArea {
  DbfTable table;
  int ndxs = 0;  // index slots in use; those behind may be open while a rebuild runs
  std::array<NdxFile, maxIndexes> index;  // the first is the master
  std::string row0;                       // image of the record before the change that is under way
};

extern DbArea db[maxAreas];
DbArea& dbAreaOf(int area);  // selectedArea included

// Hands what an operation wrote to the operating system and reports what went wrong.
int dbWritten(DbfTable& t, int result);

// What of an index the last operations met, as an error: true when its file is damaged.
bool dbNdxDamaged(NdxFile& x);
// The key text of the area's record in its buffer. Runs the key expression.
std::string dbKeyText(NdxFile& x);

}  // namespace mox
