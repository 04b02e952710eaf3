// The insides of the work areas, shared by db.cpp and db_index.cpp alone.
#pragma once

#include <array>
#include <vector>

#include "store/db.h"
#include "store/dbf.h"
#include "store/ndx.h"

namespace mox {

struct DbArea {
  DbfTable table;
  int ndxs = 0;  // index slots in use; those behind may be open while a rebuild runs
  std::array<NdxFile, maxIndexes> index;  // the first is the master
  // Numbers that were read, by field and record; not a number where none was.
  std::array<std::vector<double>, maxFields> numbers;
  bool keeps = false;  // them
  unsigned waits = 0;  // when they were read
};

extern DbArea db[maxAreas];
DbArea& dbAreaOf(int area);  // selectedArea included

// Reports what went wrong with a table.
int dbWritten(DbfTable& t, int result);

// What of an index the last operations met, as an error: true when its file is damaged.
bool dbNdxDamaged(NdxFile& x);
// The key text of the area's record in its buffer: 0, or -1 with the key expression's error, unless
// there was one before.
int dbKeyText(NdxFile& x, std::string& key);
// Puts the cursor of the area's master index on the area's record: the result of ndxFindRno, or 2
// when the record has no key.
int dbMasterTo(DbArea& a, int recno);
// The same for the area's current record, whatever record another area of its table stands on.
void dbMasterBack(DbArea& a);

}  // namespace mox
