// Runs of steps that are done as one do what their steps do, one by one.
#include <gtest/gtest.h>

#include <set>

#include "run/join.h"
#include "session/options.h"
#include "statements.h"
#include "store/db.h"
#include "temp_dir.h"
#include "vars/vars.h"

namespace mox {
namespace {

const Lines operands = {
    "N", "C",  "L", "ODD",  "QUO", "A.N",     "X.N",  "NONE",       "V",     "S",     "B",
    "W", "S2", "2", "1.50", "T",   "\"abc\"", "\"\"", "\"a\"\"b\"", "(V+1)", "(N/3)", "(.NOT. B)"};

// A table with a field of each type, and fields that hold what no number is.
void MakeTable() {
  DbfTable t;
  dbfCreate(t, "J");
  const int widths[] = {6, 4, 1, 5, 5};
  for (int i = 0; i < 5; ++i) dbfFld(t, i + 1, operands[i], "NCLNN"[i], widths[i], i == 0 ? 2 : 0);
  dbfFld(t, 0, "", ' ', 0, 0);
  dbfAppend(t);
  t.row = "   1.50abc T1,2  \"1   ";
  dbfReplace(t);
  dbfClose(t);
}

// Every statement whose steps are joined, with every operand.
Lines Statements() {
  Lines all;
  for (const std::string& a : operands) {
    for (const char* tail : {"", "+1", "-1.5", "*2", " .AND. B", " .OR. L", "+1 .AND. V"})
      all.push_back("STORE " + a + tail + " TO S2");
    all.insert(all.end(), {"STORE .NOT. " + a + " TO S2", "STORE " + a + " TO NEW",
                           "STORE LEN(" + a + ") TO S2", "IF " + a + "=V\nSTORE 7 TO S2\nENDIF"});
    for (const char* op : {"<", "<=", "=", "<>", ">=", ">"})
      all.insert(all.end(),
                 {"STORE " + a + op + "1.5 TO S2", "IF " + a + op + "2\nSTORE 7 TO S2\nENDIF"});
    for (const std::string& b : operands) all.push_back("STORE " + a + "<" + b + " TO S2");
  }
  return all;
}

// What a list leaves in the variables, and reports.
std::string Left(const Program& program, const Program& before, bool traced) {
  VarClear();
  doRun(before);
  testing::internal::CaptureStdout();
  g_opt[optR1] = traced;
  doRun(program);
  g_opt[optR1] = 0;
  testing::internal::GetCapturedStdout();
  std::string left = errnum != errNone ? errmsg.value_or("") : "";
  for (int i = 0; i < VarCount(); ++i) {
    left += '|' + *VarName(i) + '=' + VarGetI2(i, 0, 0).text();
    for (int prop : {propType, propLength, propDecimals})
      left += ',' + std::to_string(VarGetProp(i, prop));
  }
  return left;
}

TEST(Join, DoesWhatItsStepsDo) {
  const TempDir dir;
  MakeTable();
  SessionInit();
  g_opt[optTALK] = 0;
  ASSERT_EQ(dbOpen(0, "J"), 0);
  const Program before =
      Compiled("STORE 2.5 TO V\nSTORE \"abc\" TO S\nSTORE T TO B\nSTORE 0 TO S2\nCOUNT TO W", true);
  std::set<const JoinRow*> met;
  for (const std::string& statement : Statements()) {
    const Program program = Compiled(statement, true);
    ASSERT_FALSE(program.empty()) << statement;
    for (const Step& step : program)
      if (step.joint) met.insert(step.joint->row);
    ASSERT_EQ(Left(program, before, false), Left(program, before, true)) << statement;
  }
  for (const JoinRow& row : g_joins) EXPECT_TRUE(met.count(&row)) << row.steps;
  dbInit();
}

}  // namespace
}  // namespace mox
