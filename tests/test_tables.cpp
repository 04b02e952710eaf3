// The sort of whole tables.
#include <gtest/gtest.h>

#include <algorithm>

#include "statements.h"
#include "store/db.h"
#include "temp_dir.h"

namespace mox {

// Texts that few records share, in no order.
TEST(Tables, SortOfAnySize) {
  const TempDir dir;
  std::mt19937 random{7};
  SessionInit();
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

}  // namespace mox
