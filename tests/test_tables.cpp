// Whole tables: the sort, and copies for callers.
#include <gtest/gtest.h>

#include <algorithm>

#include "commands/moxsort.h"
#include "run/prompt.h"
#include "session/number.h"
#include "store/db.h"
#include "temp_dir.h"

namespace mox {
namespace {

class Tables : public testing::Test {
 protected:
  Tables() { SessionInit(); }
  ~Tables() override { dbInit(); }

  // A table of a number and a text that few records share, in no order.
  void Make(const std::string& name, int records) {
    DbfTable t;
    ASSERT_EQ(0, dbfCreate(t, name));
    dbfFld(t, 1, "NUM", 'N', 6, 0);
    dbfFld(t, 2, "KEY", 'C', 5, 0);
    ASSERT_EQ(0, dbfFld(t, 0, "", ' ', 0, 0));
    for (int i = 1; i <= records; ++i) {
      ASSERT_EQ(0, dbfAppend(t));
      fldput(t, 0, std::to_string(i));
      fldput(t, 1, std::to_string(random() % (records + 1)));
      ASSERT_EQ(0, dbfReplace(t));
    }
    ASSERT_EQ(0, dbfClose(t));
  }

  Lines Records(const std::string& name) {
    DbfTable t;
    EXPECT_EQ(0, dbfOpen(t, name));
    Lines records;
    for (dbfSkipTo(t, 1); !dbfEOF(t); dbfSkip(t, 1)) records.push_back(dbfRow(t));
    EXPECT_EQ(records.size(), static_cast<size_t>(dbfROWS(t)));
    return records;
  }

  TempDir dir;
  std::mt19937 random{7};
};

TEST_F(Tables, SortOfAnySize) {
  for (int n : {0, 1, 8, 9, 1000}) {
    dbInit();
    Make("T.dbf", n);
    ASSERT_EQ(0, dbOpen(0, "T"));
    ASSERT_EQ(0, MoxSort("KEY", "S", n % 2 ? sortDescending : sortAscending));
    Lines all = Records("T.dbf"), sorted = Records("S.dbf");
    const auto key = [](const std::string& row) { return row.substr(7, 5); };
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), [&](const auto& a, const auto& b) {
      return n % 2 ? key(a) > key(b) : key(a) < key(b);
    })) << n;
    std::sort(all.begin(), all.end());
    std::sort(sorted.begin(), sorted.end());
    EXPECT_TRUE(all == sorted) << n;
    const size_t stand = n > 8 ? 2 * n : n;
    EXPECT_EQ(dbfHeaderSize + stand * 12 + 1, fs::file_size("S.dbf"));
    EXPECT_EQ(0x1A, Bytes("S.dbf")[dbfHeaderSize + n * 12]);
  }
}

// A number that stands in a text as its field prints it isn't read first: nobody may see that.
TEST_F(Tables, NumbersInFields) {
  DbfTable t;
  ASSERT_EQ(0, dbfCreate(t, "N"));
  const int widths[] = {6, 8, 20, 20}, decimals[] = {0, 2, 15, 17};
  for (int i = 0; i < 4; ++i)
    dbfFld(t, i + 1, "F" + std::to_string(i), 'N', widths[i], decimals[i]);
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

// What the layers offer and no statement asks for.
TEST_F(Tables, CopiesAndQuotedFields) {
  Make("T.dbf", 5);
  ASSERT_EQ(0, dbOpen(0, "T"));
  dbSkipTo(0, 2);
  dbDelete(0);
  dbSkipTo(0, 4);
  EXPECT_EQ(0, dbCopyData(0, {"KEY"}, "C"));
  EXPECT_EQ(4, dbRECNO(0));
  EXPECT_EQ(4u, Records("C.dbf").size());
  DbfTable t, copy;
  ASSERT_EQ(0, dbfOpen(t, "T"));
  fldput(t, 1, "a\"b");
  EXPECT_EQ("     1|\"a\"\"b  \"|\"\"",
            fldgetqs(t, 0) + '|' + fldgetqs(t, 1) + '|' + fldgetqs(t, 2));
  ASSERT_EQ(0, dbfCreateFrom(copy, "copy", t, {"KEY", "NONE"}));
  EXPECT_EQ(0, dbfAppend(copy));
  EXPECT_EQ(0, dbfCpyRowToFm(copy, t, {}));
  EXPECT_EQ(-2, dbfCpyRowToFm(copy, *std::make_unique<DbfTable>(), {}));
  EXPECT_EQ(" a\"b  ", dbfRow(copy));
}

}  // namespace
}  // namespace mox
