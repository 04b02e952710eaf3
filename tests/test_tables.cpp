// The sort of whole tables, and numbers in fields.
#include <gtest/gtest.h>

#include <algorithm>

#include "session/number.h"
#include "statements.h"
#include "store/db.h"
#include "temp_dir.h"

namespace mox {
namespace {

struct Tables : testing::Test {
  Tables() { SessionInit(); }
  ~Tables() override { dbInit(); }

  TempDir dir;
  std::mt19937 random{7};
};

// Texts that few records share, in no order.
TEST_F(Tables, SortOfAnySize) {
  for (int n : {0, 1, 8, 9, 1000}) {
    std::string text;
    for (int i = 0; i < n; ++i) text += StrFmt("%6dthe same%-5d\n", i, int(random() % (n + 1)));
    PutBytes("T.txt", text);
    const std::string order = n % 2 ? "DESCENDING" : "ASCENDING";
    DbfTable t;
    dbfCreate(t, "T");
    dbfFld(t, 1, "NUM", 'N', 6, 0);
    dbfFld(t, 2, "KEY", 'C', 13, 0);
    dbfFld(t, 0, "", ' ', 0, 0);
    dbfClose(t);
    ASSERT_EQ("", RunSource("SET TALK OFF : USE T : APPEND FROM T SDF : SORT ON KEY TO S " + order +
                            " : USE"));
    const std::string sorted = Bytes("S.dbf");
    Lines all = split(text, "\n"), rows;
    all.pop_back();
    for (int i = 0; i < n; ++i) rows.push_back(sorted.substr(dbfHeaderSize + i * 20 + 1, 19));
    EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end(), [&](const auto& a, const auto& b) {
      return n % 2 ? a.substr(6) > b.substr(6) : a.substr(6) < b.substr(6);
    })) << n;
    std::sort(rows.begin(), rows.end());
    EXPECT_EQ(all, rows) << n;
    EXPECT_EQ(dbfHeaderSize + (n > 8 ? 2 * n : n) * 20 + 1u, sorted.size());
    EXPECT_EQ(0x1A, sorted[dbfHeaderSize + n * 20]);
  }
}

// A number that stands in a text as its field prints it isn't read first: nobody may see that.
TEST_F(Tables, NumbersInFields) {
  DbfTable t;
  ASSERT_EQ(0, dbfCreate(t, "N"));
  const int widths[] = {6, 8, 20, 20}, decimals[] = {0, 2, 15, 17};
  for (int i = 0; i < 4; ++i) dbfFld(t, i + 1, "F", 'N', widths[i], decimals[i]);
  for (int turn = 0; turn < 20000; ++turn) {
    std::string text;
    for (unsigned n = random() % 12; n > 0; --n) text += "  -+..00129e"[random() % 12];
    if (turn % 2) text = FmtFix(static_cast<double>(random() % 2001) - 1000, 9, random() % 18);
    for (int i = 0; i < 4; ++i) {
      fldput(t, i, text);
      std::string stored = FmtFix(TxtToDbl(text), widths[i], decimals[i]);
      stored.resize(static_cast<size_t>(widths[i]), ' ');
      ASSERT_EQ(stored, fldget(t, i)) << text;
    }
  }
}

}  // namespace
}  // namespace mox
