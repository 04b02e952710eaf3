// The copy is sorted in memory, which holds its records once. Runs of up to eight records are
// sorted by exchange, and two neighbouring runs are merged, so that equal keys come out in no order
// that anybody chose, but always in the same. In the file of more than eight records the last merge
// has left its working space, behind the end mark; the header's count rules.

#include "commands/moxsort.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

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

constexpr int maxExchange = 8;

// A record, by its row in memory and the first bytes of its key as a number.
struct RKV {
  std::uint64_t first;
  const char* row;
};

struct Sort {
  std::vector<RKV> records;
  size_t keyPos, keyLen;
  int order;
};

RKV _rdRKV(const Sort& s, const char* row) {
  RKV r{0, row};
  for (size_t i = 0; i < sizeof r.first; ++i)
    r.first = r.first << 8 | (i < s.keyLen ? static_cast<unsigned char>(row[s.keyPos + i]) : 0);
  return r;
}

void _swapRKV(RKV& a, RKV& b) { std::swap(a, b); }

bool _isBefore(const Sort& s, const RKV& a, const RKV& b) {
  const bool below = s.order != sortDescending;
  if (a.first != b.first) return (a.first < b.first) == below;
  const int sign = std::memcmp(a.row + s.keyPos, b.row + s.keyPos, s.keyLen);
  return below ? sign < 0 : sign > 0;
}

void _exchange(Sort& s, size_t lo, size_t hi) {
  for (size_t i = lo; i <= hi; ++i)
    for (size_t j = i + 1; j <= hi; ++j)
      if (_isBefore(s, s.records[j], s.records[i])) _swapRKV(s.records[i], s.records[j]);
}

// Merges the run from lo to mid with its neighbour, up to hi. Of equal keys the second run's go
// first.
void _merge(Sort& s, size_t lo, size_t mid, size_t hi) {
  const auto first = s.records.begin() + static_cast<std::ptrdiff_t>(lo);
  const auto middle = s.records.begin() + static_cast<std::ptrdiff_t>(mid) + 1;
  const auto last = s.records.begin() + static_cast<std::ptrdiff_t>(hi) + 1;
  std::vector<RKV> merged(hi - lo + 1);
  std::merge(middle, last, first, middle, merged.begin(),
             [&](const RKV& a, const RKV& b) { return _isBefore(s, a, b); });
  std::copy(merged.begin(), merged.end(), first);
}

void _sort(Sort& s, size_t lo, size_t hi) {
  if (hi - lo < maxExchange) return _exchange(s, lo, hi);
  if (Interrupted()) return;
  const size_t mid = (lo + hi) / 2;
  _sort(s, lo, mid);
  _sort(s, mid + 1, hi);
  _merge(s, lo, mid, hi);
}

int _sortTable(DbfTable& t, int field, int order) {
  const std::string rows = dbfRows(t);
  const size_t size = static_cast<size_t>(t.rowsize);
  if (rows.empty()) return 0;
  Sort s{{}, static_cast<size_t>(t.pos[field]), static_cast<size_t>(t.len[field]), order};
  for (size_t at = 0; at < rows.size(); at += size)
    s.records.push_back(_rdRKV(s, rows.data() + at));
  _sort(s, 0, s.records.size() - 1);
  std::vector<const char*> sorted;
  for (const RKV& r : s.records) sorted.push_back(r.row);
  return dbfSetRows(t, sorted, sorted.size() > maxExchange);
}

}  // namespace

int MoxSort(const std::string& field, const std::string& filename, int order) {
  const std::string name = FnExtDflt(filename, ".dbf");
  DbfTable t;
  const int tally = CopyRecords(0, dbRMAX(selectedArea), {}, name, "1=1", t);
  if (tally < 0) return -2;
  SayCopied(tally);
  const int key = fldno(t, field);
  const int result = key < 0 ? 0 : _sortTable(t, key, order);
  if (TargetClose(t, result) != 0) return -2;
  return key < 0 ? -1 : 0;
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
