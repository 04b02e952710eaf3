// Whole tables: values of text lines, buffered tables, the sort, refused writes.
#include <gtest/gtest.h>

#include <algorithm>

#include "commands/moxcopy.h"
#include "commands/moxjoin.h"
#include "commands/moxsort.h"
#include "commands/moxtotal.h"
#include "commands/sdf.h"
#include "run/prompt.h"
#include "session/error.h"
#include "store/db.h"
#include "temp_dir.h"

namespace mox {
namespace {

TEST(Csv, Values) {
  const struct {
    const char *line, *delimiter;
    Lines values;
  } cases[] = {
      {"", ",", {}},
      {",", ",", {""}},
      {"a,b", ",", {"a", "b"}},
      {"a, ", ",", {"a", ""}},
      {"a,,\t,d", ",", {"a", "", "", "d"}},
      {"\"a\"x,b", ",", {"\"a\""}},
      {" \ta b , \"c,\"\"d\" ,", ",", {"a b ", "\"c,\"\"d\""}},
      {"\"open,b", ",", {"\"open", "b"}},
      {"\"\",\"", ",", {"\"\"", "\""}},
      {"1--2-3--4--5--6", "--", {"1", "2-3", "4", "5"}},
  };
  for (const auto& c : cases) {
    std::vector<std::string_view> values;
    EXPECT_EQ(static_cast<int>(c.values.size()), getCSV(c.line, c.delimiter, 4, values)) << c.line;
    EXPECT_EQ(c.values, Lines(values.begin(), values.end())) << c.line;
  }
}

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
  for (int n : {0, 1, 8, 9, 1000, maxRecords}) {
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

// The commonest condition of a JOIN is told by its steps, whatever the grammar makes of it.
TEST_F(Tables, JoinsThatNeedNoRunForEachPair) {
  for (int area : {0, 1}) {
    Make("T" + std::to_string(area), 3);
    ASSERT_EQ(0, dbOpen(area, "T" + std::to_string(area)));
  }
  for (const char* equal : {"KEY=S.KEY", "S.NUM=P.NUM", "num = b.key"}) {
    Expr condition(equal, scanSteps);
    EXPECT_TRUE(JoinsEqualFields(condition)) << equal;
  }
  for (const char* other :
       {"KEY=P.KEY", "KEY>S.KEY", "NUM=S.NUM+0", "KEY=S.NONE", "KEY=S.KEY .AND. T"}) {
    Expr condition(other, scanSteps);
    EXPECT_FALSE(JoinsEqualFields(condition)) << other;
  }
}

TEST_F(Tables, CopyOfTheLiveRecordsComesBack) {
  Make("T.dbf", 5);
  ASSERT_EQ(0, dbOpen(0, "T"));
  dbSkipTo(0, 2);
  dbDelete(0);
  dbSkipTo(0, 4);
  EXPECT_EQ(0, dbCopyData(0, {"KEY"}, "C"));
  EXPECT_EQ(4, dbRECNO(0));
  EXPECT_EQ(4u, Records("C.dbf").size());
  DbfTable d;
  EXPECT_EQ(-1, dbCopyStruc(0, {"NUM", "NOPE", "KEY"}, "D", d));
  EXPECT_EQ(0, dbfClose(d));
  EXPECT_EQ(dbfHeaderSize + 1u, fs::file_size("D.dbf"));
}

}  // namespace
}  // namespace mox
