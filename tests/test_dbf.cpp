#include <gtest/gtest.h>

#include <climits>

#include "store/dbf.h"
#include "temp_dir.h"

namespace mox {
namespace {

class Dbf : public testing::Test {
 protected:
  // PEOPLE.DBF: NAME C10, AGE N3, the records R1, R2 ... of age 1, 2 ...; leaves it open on 1.
  void People(int records) {
    ASSERT_EQ(0, dbfCreate(t, "PEOPLE.DBF"));
    dbfFld(t, 1, "name ", 'C', 10, 0);
    dbfFld(t, 2, "AGE", 'N', 3, 0);
    ASSERT_EQ(0, dbfFld(t, 0, "", ' ', 0, 0));
    for (int r = 1; r <= records; r++) {
      ASSERT_EQ(0, dbfAppend(t));
      fldput(t, 0, "R" + std::to_string(r));
      fldput(t, 1, std::to_string(r));
      ASSERT_EQ(0, dbfReplace(t));
    }
    ASSERT_EQ(0, dbfClose(t));
    ASSERT_EQ(0, dbfOpen(t, "PEOPLE.DBF"));
  }

  // The table stands there, and how the call before ended is as expected.
  void At(int recno, bool eof, int got = 0, int result = 0) {
    EXPECT_EQ(std::tuple(result, recno, eof), std::tuple(got, dbfRECNO(t), dbfEOF(t)));
  }

  TempDir dir;
  DbfTable t;
};

std::string Descriptor(std::string name, char type, char width) {
  name.resize(11);
  return name + type + width + std::string(3, '\0');
}

TEST_F(Dbf, FileIsExactToTheByte) {
  People(3);
  auto [day, month, year] = DateToday();
  std::string want{2, 3, 0, char(day), char(month), char(year), 14, 0};
  want += Descriptor("NAME", 'C', 10) + Descriptor("AGE", 'N', 3) + '\x0D';
  want.resize(dbfHeaderSize);
  want += " R1          1 R2          2 R3          3\x1A";
  EXPECT_EQ(want, Bytes("PEOPLE.DBF"));
  EXPECT_EQ((std::array{day, month, year}), t.date);

  testing::internal::CaptureStdout();
  dbfDispStruc(t);
  EXPECT_EQ("STRUCTURE FOR FILE:  PEOPLE.DBF\nNUMBER OF RECORDS:   00003\nDATE OF LAST UPDATE: " +
                DateNow() +
                "\nPRIMARY USE DATABASE\nFLD       NAME      TYPE WIDTH   DEC\n"
                "001     NAME         C    010\n002     AGE          N    003\n"
                "** TOTAL **             00014\n",
            testing::internal::GetCapturedStdout());

  // Only a change moves the date.
  want.replace(3, 3, "\1\2\3");
  PutBytes("PEOPLE.DBF", want);
  dbfOpen(t, "PEOPLE.DBF");
  dbfClose(t);
  EXPECT_EQ(want, Bytes("PEOPLE.DBF"));
  EXPECT_EQ(0, dbfOpen(t, "people"));
  EXPECT_EQ("PEOPLE.DBF", t.name);
}

TEST_F(Dbf, FieldLimits) {
  dbfCreate(t, "wide");
  for (int i = 1; i <= maxFields; i++)
    EXPECT_EQ(0, dbfFld(t, i, "ABCDEFGH" + std::to_string(100 + i), 'C', 254, 0));
  EXPECT_EQ(-2, dbfFld(t, maxFields + 1, "X", 'C', 1, 0));
  dbfFld(t, 0, "", ' ', 0, 0);
  dbfClose(t);
  EXPECT_EQ('\x0D', Bytes("wide.dbf")[520]);
  ASSERT_EQ(0, dbfOpen(t, "wide"));
  EXPECT_EQ(maxFields, dbfCOLS(t));
  EXPECT_EQ(8129, t.rowsize);
  EXPECT_EQ("ABCDEFGH13", t.names[31]);
}

TEST_F(Dbf, Moves) {
  People(5);
  At(5, false, dbfSkipTo(t, -1));
  At(5, true, dbfSkipTo(t, 6), dbfOutside);
  At(5, false, dbfSkip(t, 0));
  At(5, true, dbfSkip(t, 1), dbfOutside);
  At(4, false, dbfSkip(t, -1));
  At(1, false, dbfSkipTo(t, 0));
  At(1, true, dbfSkip(t, INT_MAX), dbfOutside);
  EXPECT_EQ("  1", fldget(t, 1));
  EXPECT_EQ(0, dbfAppend(t));
  At(6, true);
  EXPECT_EQ(0, dbfRemove(t));
  At(5, false);
  EXPECT_EQ("  5", fldget(t, 1));
  EXPECT_EQ('\x1A', Bytes("PEOPLE.DBF")[591]);
}

TEST_F(Dbf, FieldsAreCutAndFilled) {
  DbfTable copy;
  People(1);
  int age = fldno(t, "age");
  const char* const numbers[][2] = {
      {"12345", "123"}, {"-1.6x", " -2"}, {"Nancy", "  0"}, {"1e300", "100"}};
  for (auto [text, stored] : numbers) {
    fldput(t, age, text);
    EXPECT_EQ(stored, fldget(t, age)) << text;
  }
  fldput(t, 0, "a \"long\" name");
  EXPECT_EQ("\"a \"\"long\"\" n\"", fldgetqs(t, 0));
  EXPECT_EQ("\"\"", fldgetqs(t, 2));
  EXPECT_EQ(-1, fldput(t, 2, ""));

  ASSERT_EQ(0, dbfCreateFrom(copy, "copy", t, {"AGE", "NONE"}));
  EXPECT_EQ(1, dbfCOLS(copy));
  dbfAppend(copy);
  EXPECT_EQ(0, dbfCpyRowToFm(copy, t, {}));
  EXPECT_EQ(" 100", dbfRow(copy));
}

TEST_F(Dbf, DeletePackAndTheRecordsBehind) {
  People(4);
  for (int r : {1, 3}) EXPECT_EQ(0, dbfSkipTo(t, r) + dbfDelete(t));
  dbfRecall(t);
  dbfSkipTo(t, 2);
  dbfRow(t)[0] = '?';  // any mark but a space drops the record
  dbfReplace(t);
  EXPECT_EQ(0, dbfPack(t));
  EXPECT_EQ(2, dbfROWS(t));
  At(1, false);
  for (const char* name : {"R3        ", "R4        "}) {
    EXPECT_EQ(name, fldget(t, 0));
    dbfDelete(t);
    dbfSkip(t, 1);
  }
  EXPECT_EQ(0, dbfPack(t));
  EXPECT_TRUE(dbfEOF(t));
  EXPECT_EQ(521u + 4 * 14 + 1, Bytes("PEOPLE.DBF").size());

  // No record stands there now, so nothing is written, though a read finds the old bytes.
  std::string before = Bytes("PEOPLE.DBF");
  dbfOpen(t, "PEOPLE");
  EXPECT_FALSE(dbfEOF(t));
  EXPECT_EQ(-1, dbfRecall(t));
  EXPECT_TRUE(dbfDELETED(t));
  t.recno = 0;
  EXPECT_EQ(std::pair(-1, -1), std::pair(dbfReplace(t), dbfRemove(t)));
  EXPECT_EQ(before, Bytes("PEOPLE.DBF"));
}

TEST_F(Dbf, CountBeyondTheFileAndFullTable) {
  People(2);
  dbfClose(t);
  std::string bytes = Bytes("PEOPLE.DBF");
  bytes.resize(bytes.size() - 4);  // the end mark and the last age
  bytes[1] = bytes[2] = '\xFE';
  PutBytes("PEOPLE.DBF", bytes);
  ASSERT_EQ(0, dbfOpen(t, "PEOPLE"));
  EXPECT_EQ(0, dbfSkipTo(t, 65278));
  At(65278, true);
  EXPECT_EQ("R1        ", fldget(t, 0));
  EXPECT_EQ(0, dbfPack(t));
  EXPECT_EQ(2, dbfROWS(t));
  dbfSkipTo(t, 2);
  EXPECT_EQ(" R2           ", dbfRow(t));

  dbfClose(t);
  bytes[1] = '\xFE', bytes[2] = '\xFF';
  PutBytes("PEOPLE.DBF", bytes);
  dbfOpen(t, "PEOPLE");
  EXPECT_EQ(0, dbfAppend(t));
  EXPECT_EQ(maxRecords, dbfRECNO(t));
  EXPECT_EQ(521u + 14u * maxRecords + 1, Bytes("PEOPLE.DBF").size());
  EXPECT_EQ(dbfFull, dbfAppend(t));
  EXPECT_EQ(maxRecords, dbfROWS(t));
}

TEST_F(Dbf, ForeignFiles) {
  std::string bytes(dbfHeaderSize, '\0');
  PutBytes("version.dbf", bytes);
  PutBytes("short.dbf", "\2" + bytes.substr(2));
  EXPECT_EQ(dbfClosed, dbfOpen(t, "none"));
  EXPECT_EQ(dbfShort, dbfOpen(t, "short"));
  EXPECT_EQ(dbfWrongVersion, dbfOpen(t, "version"));
  EXPECT_FALSE(dbfOPEN(t));
  EXPECT_EQ("", t.name);

  // No end of the field list: 32 fields, the widest and of odd types, or of no width at all.
  for (char fill : {'\xFF', '\0'}) {
    bytes.assign(dbfHeaderSize, fill);
    bytes.replace(0, 3, "\2\1\0", 3);
    PutBytes("odd.dbf", bytes + ' ' + std::string(9000, '\0'));
    ASSERT_EQ(0, dbfOpen(t, "odd"));
    EXPECT_EQ(maxFields, dbfCOLS(t));
    EXPECT_EQ(fill ? 1 + 32 * 255 : 1, t.rowsize);
    EXPECT_EQ("", fldget(t, 31));
    EXPECT_EQ(0, fldput(t, 31, "x") + dbfDelete(t) + dbfAppend(t) + dbfPack(t));
    EXPECT_EQ(1, dbfROWS(t));
  }
}

}  // namespace
}  // namespace mox
