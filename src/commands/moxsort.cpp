// The sort holds at most eight records, and a merge two. Runs of up to eight records are sorted in
// memory; two neighbouring runs are merged behind the table's end and copied back to their place.
// The bytes of the last merge stay there, behind the end mark; the header's count rules.

#include "commands/moxsort.h"

#include <array>
#include <climits>
#include <cstdio>
#include <utility>

#include "commands/moxcopy.h"
#include "commands/target.h"
#include "run/handlers.h"
#include "run/rundb_scan.h"
#include "session/error.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int maxInMemory = 8;

// One record in memory.
struct RKV {
  int recno = 0;
  std::string key;    // the field's text
  std::string value;  // the whole record
};

// What is sorted, and how.
struct Sort {
  DbfTable t;
  int field;
  int order;
};

int _rdRKV(Sort& s, int recno, RKV& r) {
  const int result = dbfSkipTo(s.t, recno);
  r = {recno, fldget(s.t, s.field), dbfRow(s.t)};
  return result;
}

void _swapRKV(RKV& a, RKV& b) { std::swap(a, b); }

bool _isBefore(const Sort& s, const RKV& a, const RKV& b) {
  const int sign = a.key.compare(b.key);
  return s.order == sortDescending ? sign > 0 : sign < 0;
}

int _put(Sort& s, const std::string& value) {
  dbfSetRow(s.t, value);
  return dbfReplace(s.t);
}

int _sortInMemory(Sort& s, int lo, int n) {
  std::array<RKV, maxInMemory> run;
  for (int i = 0; i < n; ++i) _rdRKV(s, lo + i, run[i]);
  for (int i = 0; i < n; ++i)
    for (int j = i + 1; j < n; ++j)
      if (_isBefore(s, run[j], run[i])) _swapRKV(run[i], run[j]);
  int result = 0;
  for (int i = 0; i < n && result == 0; ++i) {
    dbfSkipTo(s.t, lo + i);
    result = _put(s, run[i].value);
  }
  return result;
}

// Takes the record to the merged ones and reads the next of its run.
int _take(Sort& s, RKV& r, int last) {
  int result = dbfAppend(s.t);
  if (result == 0) result = _put(s, r.value);
  if (r.recno < last)
    _rdRKV(s, r.recno + 1, r);
  else
    r.recno = INT_MAX;  // the run has ended
  return result;
}

int _copyBack(Sort& s, int first, int last, int base) {
  int result = 0;
  for (int i = first; i <= last && result == 0; ++i) {
    dbfSkipTo(s.t, base + i - first);
    const std::string value = dbfRow(s.t);
    dbfSkipTo(s.t, i);
    result = _put(s, value);
  }
  return result;
}

// Merges run A, from a1 on, and run B, from b1 to b2, its neighbour. Interrupted, it leaves both
// as they were: what comes behind the first record copied back is done to its end.
int _merge(Sort& s, int a1, int b1, int b2) {
  const int base = dbfROWS(s.t) + 1;
  RKV a, b;
  _rdRKV(s, a1, a);
  _rdRKV(s, b1, b);
  int result = 0;
  while (result == 0 && !Interrupted() && (a.recno < b1 || b.recno <= b2)) {
    const bool takeA = b.recno > b2 || (a.recno < b1 && _isBefore(s, a, b));
    result = takeA ? _take(s, a, b1 - 1) : _take(s, b, b2);
  }
  if (result == 0 && !Interrupted()) result = _copyBack(s, a1, b2, base);
  if (result != 0) return result;
  s.t.file->rmax = base - 1;
  result = dbfAppend(s.t);  // with dbfRemove: the count and the end mark
  return result == 0 ? dbfRemove(s.t) : result;
}

int _sort(Sort& s, int lo, int hi) {
  const int n = hi - lo + 1;
  if (n < 2 || Interrupted()) return 0;
  if (n <= maxInMemory) return _sortInMemory(s, lo, n);
  const int mid = (hi + lo) / 2;
  int result = _sort(s, lo, mid);
  if (result == 0) result = _sort(s, mid + 1, hi);
  return result == 0 ? _merge(s, lo, mid + 1, hi) : result;
}

}  // namespace

int MoxSort(const std::string& field, const std::string& filename, int order) {
  const std::string name = FnExtDflt(filename, ".dbf");
  Sort s{{}, 0, order};
  const int tally = CopyRecords(0, dbRMAX(selectedArea), {}, name, "1=1", s.t);
  if (tally < 0) return -2;
  SayCopied(tally);
  s.field = fldno(s.t, field);
  const bool found = s.field >= 0;
  s.t.limit = 2 * maxRecords + 1;
  const int result = found ? _sort(s, 1, dbfROWS(s.t)) : 0;
  if (TargetClose(s.t, result) != 0) return -2;
  return found ? 0 : -1;
}

void OpSort(Operands& o) {
  if (!DbChk()) return;
  const std::string& field = o.text();
  const std::string& filename = o.text();
  const int result = MoxSort(field, filename, o.integer());
  if (result == -1)
    SetErr("FIELD CANNOT BE FOUND", field);
  else if (result == 0 && g_opt[optTALK])
    std::printf("SORT COMPLETE\n");
}

}  // namespace mox
