// Long histories of adds, deletes, searches and walks against an ordered multimap, with a check of
// the file behind each phase; and damaged files.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <set>

#include "session/number.h"
#include "store/bytes.h"
#include "store/ndx_page.h"
#include "temp_dir.h"

namespace mox {
namespace {

// The order of numeric keys, told another way: by sign, then exponent, then digits.
using Order = std::vector<int>;
Order OrderOf(const NdxPages& f, const std::string& key) {
  const bool number = f.type == 'N', negative = number && (key[0] & 0x80);
  Order order{negative ? 0 : 1};
  for (unsigned char byte : key) order.push_back(negative ? -byte : byte);
  if (number) order[1] = negative ? 0x80 + order[1] : order[1] & 0x7F;
  return order;
}

using Model = std::multimap<Order, std::pair<std::string, int>>;  // order -> text, record

// Reads a page of the file and all below it: every key in order, every inner item equal to the
// last leaf item below it, all leaves at one depth.
struct Checker {
  std::string file;
  int itmlen;
  size_t pages;
  std::vector<std::pair<std::string, int>> leaves{};
  std::set<int> seen{};
  int leafDepth = -1;

  void Page(int no, int depth) {
    ASSERT_TRUE(no > 0 && static_cast<size_t>(no) < pages && seen.insert(no).second) << no;
    const auto* p = reinterpret_cast<const unsigned char*>(file.data()) + no * ndxPageSize;
    const int count = get1(p), nxt = get2(p + 1 + count * itmlen);
    ASSERT_TRUE(depth > 0 || count > 0 || nxt == 0) << "a root without items";
    bool leaf = nxt == 0;
    for (int i = 0; i < count; ++i) {
      const unsigned char* item = p + 1 + i * itmlen;
      const std::pair<std::string, int> key{
          std::string(reinterpret_cast<const char*>(item + 4), itmlen - 4), get2(item + 2)};
      if (get2(item) == 0) {
        leaves.push_back(key);
        continue;
      }
      leaf = false;
      Page(get2(item), depth + 1);
      if (testing::Test::HasFatalFailure()) return;
      ASSERT_EQ(key, leaves.back()) << "page " << no << " item " << i;
    }
    if (nxt) Page(nxt, depth + 1);
    if (!leaf) return;
    ASSERT_TRUE(depth == 0 || count > 0) << "empty leaf " << no;
    if (leafDepth < 0) leafDepth = depth;
    ASSERT_EQ(leafDepth, depth);
  }
};

class Ndx : public testing::Test {
 protected:
  // No key is computed here: any text will do as a key expression.
  Ndx() {
    g_makeKey = [](const std::string&) { return Key{[] { return 0; }, [] { return nullptr; }}; };
  }
  void Add(const std::string& text, int rno) {
    ASSERT_EQ(0, ndxAdd(x, rno, text));
    model.emplace(OrderOf(*x.file, std::string(formatkey(*x.file, text))), std::pair(text, rno));
  }
  void Delete(size_t at) {
    const auto item = std::next(model.begin(), static_cast<long>(at));
    const auto [text, rno] = item->second;
    ASSERT_EQ(0, ndxDel(x, rno, text)) << text << " " << rno;
    ASSERT_EQ(-1, ndxDel(x, rno, text));
    model.erase(item);
  }

  // Both walks, both ends, and some searches agree with the model; the file is sound.
  void Check() {
    ASSERT_EQ(0, ndxFlush(x));
    const NdxPages& f = *x.file;
    const std::string bytes = Bytes(f.name);
    const auto* header = reinterpret_cast<const unsigned char*>(bytes.data());
    Checker checker{bytes, f.itmlen, bytes.size() / ndxPageSize};
    ASSERT_EQ(checker.pages, static_cast<size_t>(get2(header + 4)));
    ASSERT_NO_FATAL_FAILURE(checker.Page(get2(header + 2), 0));
    std::vector<int> expected, leaves, records, back;
    for (const auto& [order, item] : model) expected.push_back(item.second);
    for (const auto& leaf : checker.leaves) leaves.push_back(leaf.second);
    ASSERT_EQ(expected, leaves);
    for (int r = ndxTop(x); r > 0; r = ndxFwd(x)) records.push_back(r);
    EXPECT_EQ(-1, ndxBak(x));
    for (int r = ndxBottom(x); r > 0; r = ndxBak(x)) back.push_back(r);
    EXPECT_EQ(-1, ndxFwd(x));
    ASSERT_EQ(expected, records);
    std::reverse(back.begin(), back.end());
    ASSERT_EQ(expected, back);
    ASSERT_EQ(expected.empty() ? -2 : expected[0], ndxTop(x));
    // A key is found at its first record, and each record has its place.
    for (int i = 0; i < 50 && !model.empty(); ++i) {
      auto item = std::next(model.begin(), static_cast<long>(random() % model.size()));
      const auto& [text, rno] = item->second;
      const bool number = x.file->type == 'N';
      ASSERT_EQ(model.lower_bound(item->first)->second.second,
                ndxFind(x, maxKeyLen, number ? text : formatkey(*x.file, text)));
      ASSERT_EQ(0, ndxFindRno(x, rno, text));
      const int next = ndxFwd(x);
      ASSERT_EQ(++item == model.end() ? -1 : item->second.second, next);
    }
  }

  std::mt19937 random{20240229};
  NdxFile x;
  Model model;
  TempDir dir;
};

struct History {
  int type, keylen, keys;  // keys: how many different ones
  char order;              // of the adds: up, down, random
};

TEST_F(Ndx, HistoriesAgreeWithAMultimap) {
  const History histories[] = {{'C', 1, 20, 'r'},    {'C', 5, 100000, 'u'},  {'C', 20, 100000, 'd'},
                               {'C', 20, 300, 'r'},  {'C', 100, 90000, 'u'}, {'C', 100, 90000, 'd'},
                               {'C', 100, 400, 'r'}, {'C', 100, 1, 'r'},     {'N', 6, 90000, 'r'},
                               {'N', 6, 30, 'u'}};
  for (const History& h : histories) {
    SCOPED_TRACE(StrFmt("%c%d %d %c", h.type, h.keylen, h.keys, h.order));
    model.clear();
    ASSERT_EQ(0, ndxCreate(x, "A", "N", h.type, h.keylen));
    EXPECT_EQ(1024u, Bytes("A.ndx").size());
    const auto text = [&](int n) {
      return h.type == 'N'   ? FmtFix((n - h.keys / 2) / 7.0, 0, 3)
             : h.keylen == 1 ? std::string(1, static_cast<char>('A' + n))
                             : StrFmt("%0*d", std::min(h.keylen, 5 + n % 9), n);
    };
    const auto add = [&](int r) {
      const int n = h.order == 'r' ? static_cast<int>(random() % h.keys) : r * h.keys / 3000;
      Add(text(h.order == 'd' ? h.keys - 1 - n : n), r);
    };
    // Runs a change so often, and looks at all of it.
    const auto phase = [&](int times, const std::function<void(int)>& change) {
      for (int i = 0; i < times; ++i) ASSERT_NO_FATAL_FAILURE(change(i));
      ASSERT_NO_FATAL_FAILURE(Check());
    };
    const auto last = [&] { return model.size() - 1; };
    const auto all = [&] { return static_cast<int>(model.size()); };
    phase(1500, [&](int i) { add(1 + i); });
    ASSERT_EQ(0, ndxClose(x));
    ASSERT_EQ(0, ndxOpen(x, "A"));
    // Deletes at random with adds between, then the right edge, the left edge, and all.
    phase(600, [&](int i) {
      Delete(random() % model.size());
      if (i % 3 == 0) add(1501 + i);
    });
    phase(300, [&](int) { Delete(last()); });
    phase(300, [&](int i) { add(2200 + i); });
    phase(300, [&](int) { Delete(0); });
    phase(all() - 3, [&](int) { Delete(random() % 2 ? 0 : last()); });
    phase(all(), [&](int) { Delete(random() % model.size()); });
    phase(100, [&](int i) { add(1 + i); });
    if (HasFatalFailure()) return;
    ndxClose(x);
  }
}

// With 4 items to a page the right edge is often a page of one item, or of none but nxt.
TEST_F(Ndx, ShortHistoriesAtTheRightEdge) {
  for (int round = 0; round < 150; ++round) {
    model.clear();
    ASSERT_EQ(0, ndxCreate(x, "A", "N", 'C', 100));
    int r = 0;
    for (int i = 0; i < 150; ++i) {
      const size_t n = model.size();
      const bool grow = random() % 100 < (i / 30 % 2 ? 30u : 70u);
      if (n == 0 || grow) {
        ASSERT_NO_FATAL_FAILURE(Add(StrFmt("%04d", static_cast<int>(random() % 2000)), ++r));
      } else {
        const size_t fromEnd = n - 1 - random() % std::min<size_t>(n, 6);
        ASSERT_NO_FATAL_FAILURE(Delete(random() % 4 ? fromEnd : random() % n));
      }
      if (i % 10 != 9) continue;
      SCOPED_TRACE(StrFmt("round %d step %d", round, i));
      ASSERT_NO_FATAL_FAILURE(Check());
    }
    ndxClose(x);
  }
}

TEST_F(Ndx, NumericKeysAndRefusals) {
  // A numeric key and its order: below 1 comes 0, below that 0.5.
  ASSERT_EQ(0, ndxCreate(x, "B", "X", 'N', 0));
  const char* const values[] = {"-123.45", "-1", "-0.5", "0.5", "0", "1", "123.45"};
  for (int i = 6; i >= 0; --i) ASSERT_EQ(0, ndxAdd(x, i + 1, values[i]));
  std::vector<int> records;
  for (int r = ndxTop(x); r > 0; r = ndxFwd(x)) records.push_back(r);
  EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5, 6, 7}), records);
  EXPECT_EQ(std::string("\xC2\x12\x34\x50\0\0", 6), formatkey(*x.file, values[0]));
  EXPECT_EQ(std::string("\x40\0\0\0\0\0", 6), formatkey(*x.file, "-0"));

  EXPECT_EQ(-99, ndxCreate(x, "C", "X", 'L', 1));
  EXPECT_EQ(-99, ndxCreate(x, "C", "X", 'C', 101));
  EXPECT_EQ(-99, ndxCreate(x, "C", std::string(502, 'X'), 'C', 1));
  EXPECT_FALSE(fs::exists("C.ndx"));
  EXPECT_EQ(-1, ndxOpen(x, "C"));
  EXPECT_EQ(-1, ndxAdd(x, 1, ""));
}

// All users of a file see one tree; what is dropped was never there.
TEST_F(Ndx, OneFileTwoUsersAndDroppedChanges) {
  ASSERT_EQ(0, ndxCreate(x, "A", "N", 'C', 100));
  NdxFile y;
  ASSERT_EQ(0, ndxOpen(y, "./A.ndx"));
  for (int r = 1; r <= 50; ++r) ASSERT_EQ(0, ndxAdd(r % 2 ? x : y, r, StrFmt("%03d", r)));
  ASSERT_EQ(0, ndxFlush(y));
  const std::string bytes = Bytes("A.ndx");
  for (int r = 51; r <= 99; ++r) ASSERT_EQ(0, ndxAdd(x, r, StrFmt("%03d", r)));
  ASSERT_EQ(0, ndxReserve(x));
  ndxDrop(x);
  ASSERT_EQ(0, ndxFlush(x));
  EXPECT_EQ(bytes, Bytes("A.ndx").substr(0, bytes.size()));
  EXPECT_EQ(50, ndxBottom(y));
}

// As many keys as a table has records, 4 to a page and in the order that leaves pages half empty:
// all of them, or a clear end with the file as it was at the last flush.
TEST_F(Ndx, TheLongestTree) {
  ASSERT_EQ(0, ndxCreate(x, "A", "N", 'C', 100));
  int r = 1, result = 0;
  while (r <= 65535 && (result = ndxAdd(x, r, StrFmt("%05d", r))) == 0) ++r;
  if (result != 0) {
    EXPECT_EQ(ndxFull, result);
    EXPECT_EQ(-2, ndxTop(x));
    return;
  }
  ASSERT_EQ(0, ndxFlush(x));
  EXPECT_EQ(65535, ndxBottom(x));
  for (r = ndxTop(x); r > 0 && ndxFwd(x) == r + 1;) ++r;
  EXPECT_EQ(65535, r);
  EXPECT_FALSE(x.file->damaged);
}

// Random damage: every operation ends, and the file keeps to its pages.
TEST_F(Ndx, DamagedFilesLeadNowhere) {
  ASSERT_EQ(0, ndxCreate(x, "GOOD", "N", 'C', 100));
  for (int r = 1; r <= 60; ++r) ASSERT_EQ(0, ndxAdd(x, r, StrFmt("%03d", r * 7 % 60)));
  ndxClose(x);
  const std::string good = Bytes("GOOD.ndx");
  for (int round = 0; round < 400; ++round) {
    std::string bad = good;
    for (int i = 0; i < 1 + round % 8; ++i) {
      const size_t page = random() % (bad.size() / ndxPageSize);
      const size_t offset = page == 0      ? 2 + random() % 9
                            : random() % 3 ? random() % 5 * 104 + 1
                                           : random() % 512;
      bad[page * ndxPageSize + offset] = static_cast<char>(random() % (round % 2 ? 40 : 256));
    }
    if (round % 7 == 0) bad.resize(random() % bad.size());
    PutBytes("BAD.ndx", bad);
    if (ndxOpen(x, "BAD") != 0) continue;
    const size_t most = std::max<size_t>(bad.size(), x.file->pages * size_t{ndxPageSize});
    int walked = 0;
    for (int r = ndxTop(x); r >= 0; r = ndxFwd(x)) ++walked;
    for (int r = ndxBottom(x); r >= 0; r = ndxBak(x)) ++walked;
    EXPECT_LE(walked, 2 * 65536);
    for (int i = 0; i < 30; ++i) {
      ndxFind(x, 3, StrFmt("%03d", i));
      ndxDel(x, i * 2, StrFmt("%03d", i * 14 % 60));
      ndxAdd(x, 100 + i, StrFmt("%03d", i * 2));
    }
    ndxClose(x);
    EXPECT_LE(Bytes("BAD.ndx").size(), most + 60 * ndxPageSize);
  }
}

}  // namespace
}  // namespace mox
