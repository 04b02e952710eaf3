// Long histories of an index against an ordered multimap, the file checked behind each phase.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>

#include "session/number.h"
#include "store/bytes.h"
#include "store/ndx_page.h"
#include "temp_dir.h"

namespace mox {
namespace {

// The order of numeric keys, told another way: by sign, then exponent, then digits.
using Order = std::vector<int>;
Order OrderOf(char type, const std::string& key) {
  const bool negative = type == 'N' && (key[0] & 0x80);
  Order order{negative ? 0 : 1};
  for (unsigned char byte : key) order.push_back(negative ? -byte : byte);
  if (type == 'N') order[1] = negative ? 0x80 + order[1] : order[1] & 0x7F;
  return order;
}

using Model = std::multimap<Order, std::pair<std::string, int>>;  // order -> text, record

class Ndx : public testing::Test {
 protected:
  // No key is computed here: any text will do as a key expression.
  Ndx() {
    g_makeKey = [](const std::string&) { return Key{[] { return 0; }, [] { return nullptr; }}; };
  }
  void Add(const std::string& text, int rno) {
    ASSERT_EQ(0, ndxAdd(x, rno, text));
    model.emplace(OrderOf(x.file->type, std::string(formatkey(*x.file, text))),
                  std::pair(text, rno));
  }
  void Delete(size_t at) {
    const auto item = std::next(model.begin(), static_cast<long>(at));
    const auto [text, rno] = item->second;
    ASSERT_EQ(0, ndxDel(x, rno, text)) << text << " " << rno;
    ASSERT_EQ(-1, ndxDel(x, rno, text));
    model.erase(item);
  }

  // Both walks, both ends, and some searches agree with the model; the file has its pages.
  void Check() {
    ASSERT_EQ(0, ndxFlush(x));
    const std::string bytes = Bytes(x.file->name);
    const auto* header = reinterpret_cast<const unsigned char*>(bytes.data());
    ASSERT_EQ(bytes.size(), static_cast<size_t>(get2(header + 4)) * ndxPageSize);
    std::vector<int> expected, records, back;
    for (const auto& [order, item] : model) expected.push_back(item.second);
    for (int r = ndxTop(x); r > 0; r = ndxFwd(x)) records.push_back(r);
    EXPECT_EQ(-1, ndxBak(x));
    for (int r = ndxBottom(x); r > 0; r = ndxBak(x)) back.push_back(r);
    EXPECT_EQ(-1, ndxFwd(x));
    std::reverse(back.begin(), back.end());
    ASSERT_EQ(expected, records);
    ASSERT_EQ(expected, back);
    ASSERT_EQ(expected.empty() ? -2 : expected[0], ndxTop(x));
    // A key is found at its first record, and each record has its place.
    for (int i = 0; i < 30 && !model.empty(); ++i) {
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
  const History histories[] = {{'C', 1, 20, 'r'},      {'C', 5, 100000, 'u'}, {'C', 20, 300, 'r'},
                               {'C', 100, 90000, 'd'}, {'C', 100, 400, 'r'},  {'C', 100, 1, 'r'},
                               {'N', 6, 90000, 'r'},   {'N', 6, 30, 'u'}};
  for (const History& h : histories) {
    SCOPED_TRACE(StrFmt("%c%d %d %c", h.type, h.keylen, h.keys, h.order));
    model.clear();
    ASSERT_EQ(0, ndxCreate(x, "A", "N", h.type, h.keylen));
    const std::string zero(formatkey(*x.file, "0"));
    EXPECT_EQ(h.type == 'N', zero == formatkey(*x.file, "-0.0"));  // which has no sign
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

// As many keys as a table has records, 4 to a page and in the order that leaves pages half empty.
TEST_F(Ndx, TheLongestTree) {
  ASSERT_EQ(0, ndxCreate(x, "A", "N", 'C', 100));
  for (int r = 1; r <= 65535; ++r) ASSERT_EQ(0, ndxAdd(x, r, StrFmt("%05d", r)));
  EXPECT_EQ(65535, ndxBottom(x));
  int r = ndxTop(x);
  while (ndxFwd(x) == r + 1) ++r;
  EXPECT_EQ(65535, r);
  EXPECT_FALSE(x.file->damaged);
}

}  // namespace
}  // namespace mox
