// The steps that visit records one by one under a scope and a condition.

#include <cstdio>
#include <optional>
#include <vector>

#include "run/handlers.h"
#include "run/run_out.h"
#include "run/run_var.h"
#include "run/rundb.h"
#include "run/rundb_scan.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int maxSums = 6;

// Condition of the last LOCATE, whatever table it ran on.
std::optional<std::string> _locate;

void _say(const char* format, int number) {
  if (g_opt[optTALK]) std::printf(format, number);
}

std::vector<Expr> _expressions(const Stack& stk, int first, int n) {
  std::vector<Expr> all;
  for (int i = first; i < first + n; ++i) all.emplace_back(stk[i], scanSteps);
  return all;
}

bool _listRecord(std::vector<Expr>& expressions) {
  if (!validRno()) return true;
  bool whole = true;
  dspRnoDel();
  for (Expr& e : expressions) {
    whole = dspExpr(e) == 0;
    if (!whole) break;
    SayTxt(-1, " ");
  }
  if (expressions.empty()) dspFlds();
  std::putchar('\n');
  return whole;
}

// DELETE and RECALL: start n for ->
int _markRecords(int depth, Stack& stk, bool counts, int (*mark)(int), const char* told) {
  constexpr int removed = 3;
  if (!DbChk()) return -removed;
  int tally = 0;
  const auto action = [&] {
    const bool changes = dbDELETED(selectedArea) == counts;
    if (mark(selectedArea) != 0) return false;
    tally += changes;
    return true;
  };
  if (ScanRecords(StackInt(stk[depth - 3]), StackInt(stk[depth - 2]), stk[depth - 1], action) == 0)
    _say(told, tally);
  return -removed;
}

// From the current record on to the first that qualifies, and tells where the table stands.
void _seek(Expr& condition) {
  while (!dbEOF(selectedArea) && !Interrupted() && !Qualifies(condition)) dbSkip(selectedArea, 1);
  if (Interrupted()) return;
  if (dbEOF(selectedArea)) {
    if (g_opt[optTALK]) std::printf("END OF FILE ENCOUNTERED\n");
  } else {
    _say("RECORD: %05d\n", dbRECNO(selectedArea));
  }
}

// One sum, with the width and decimals that its values brought.
struct Sum {
  Expr expr;
  double total = 0;
  int length = 0;
  int decimals = 0;
};

// Adds the expression's value, rounded to single precision: 0, or -1 when it doesn't compile.
int CalcExprN(Sum& sum) {
  if (ScanCompile(sum.expr) != 0) return -1;
  std::string value;
  RunExpr(sum.expr, value);
  const Typ typ = GetTyp(value);
  sum.length = std::max(sum.length, typ.length);
  sum.decimals = std::max(sum.decimals, typ.decimals);
  sum.total += static_cast<float>(TxtToDbl(value));
  return 0;
}

// What SUM1 finds: e1 .. en n start count for t1 .. tm m, by places on the stack.
struct SumOperands {
  int m, firstName, condition, n, firstExpr, removed;
};

SumOperands _sumOperands(int depth, const Stack& stk) {
  SumOperands at;
  at.m = StackInt(stk[depth - 1]);
  at.firstName = depth - 1 - at.m;
  at.condition = at.firstName - 1;
  at.n = StackInt(stk[at.condition - 3]);
  at.firstExpr = at.condition - 3 - at.n;
  at.removed = at.n + at.m + 5;
  return at;
}

void _finishSums(const std::vector<Sum>& sums, const SumOperands& at, const Stack& stk) {
  if (g_opt[optTALK]) {
    for (const Sum& sum : sums) std::printf("%s ", FmtFix(sum.total, 0, 6).c_str());
    std::printf("\n");
  }
  for (int i = 0; i < at.n && i < at.m; ++i)
    PutNumber(stk[at.firstName + i], FmtFix(sums[i].total, 0, 6), sums[i].length, sums[i].decimals);
}

}  // namespace

int ScanRecords(int start, int count, const std::string& condition,
                const std::function<bool()>& action) {
  Expr test(condition, scanSteps);
  if (ScanCompile(test) != 0) return -1;
  ScanRecords(start, count, test, action);
  return Interrupted() ? -1 : 0;
}

void ScanRecords(int start, int count, Expr& condition, const std::function<bool()>& action) {
  dbSkipTo(selectedArea, start);
  for (int i = 0; i < count && !dbEOF(selectedArea) && !Interrupted();) {
    if (Qualifies(condition) && !action()) break;
    if (++i < count) dbSkip(selectedArea, 1);
  }
}

int OpList(int depth, Stack& stk) {
  const int n = StackInt(stk[depth - 4]);
  const int removed = n + 4;
  if (!DbChk()) return -removed;
  std::vector<Expr> expressions = _expressions(stk, depth - removed, n);
  ScanRecords(StackInt(stk[depth - 3]), StackInt(stk[depth - 2]), stk[depth - 1],
              [&] { return _listRecord(expressions); });
  return -removed;
}

int OpDel1(int depth, Stack& stk) {
  return _markRecords(depth, stk, false, dbDelete, "%05d DELETION(S)\n");
}

int OpRecall1(int depth, Stack& stk) {
  return _markRecords(depth, stk, true, dbRecall, "%05d RECALL(S)\n");
}

int OpLocate(int depth, Stack& stk) {
  constexpr int removed = 2;
  if (!DbChk()) return -removed;
  _locate = stk[depth - 1];
  Expr condition(*_locate, scanSteps);
  if (ScanCompile(condition) != 0) return -removed;
  if (StackInt(stk[depth - 2]) != 0)
    dbSkip(selectedArea, 1);
  else
    dbTop(selectedArea);
  _seek(condition);
  return -removed;
}

int OpContinue(int, Stack&) {
  if (!_locate) {
    _say("RECORD: %05d\n", 1);
    return 0;
  }
  if (!DbChk()) return 0;
  Expr condition(*_locate, scanSteps);
  if (ExprCompile(condition) != 0) {
    SetErr("CAN'T CONTINUE", "");
    return 0;
  }
  dbSkip(selectedArea, 1);
  _seek(condition);
  return 0;
}

int OpCount1(int depth, Stack& stk) {
  constexpr int removed = 4;
  constexpr int countLength = 10;
  if (!DbChk()) return -removed;
  int tally = 0;
  const auto action = [&] {
    ++tally;
    return true;
  };
  if (ScanRecords(StackInt(stk[depth - 4]), StackInt(stk[depth - 3]), stk[depth - 2], action) != 0)
    return -removed;
  _say("COUNT = %05d\n", tally);
  const std::string& name = stk[depth - 1];
  if (name[0] != '-') PutNumber(name, std::to_string(tally), countLength, 0);
  return -removed;
}

int OpSum1(int depth, Stack& stk) {
  const SumOperands at = _sumOperands(depth, stk);
  if (!DbChk()) return -at.removed;
  if (at.n > maxSums || at.n < 1) {
    SetErr(at.n < 1 ? "NO EXPRESSION TO SUM" : "MORE THAN 6 FIELDS TO SUM", "");
    return -at.removed;
  }
  std::vector<Sum> sums;
  for (int i = 0; i < at.n; ++i)
    sums.push_back({Expr(SourceText(stk[at.firstExpr + i]), scanSteps)});
  bool complete = true;
  const auto action = [&] {
    if (g_opt[optDELETED] && dbDELETED(selectedArea)) return true;
    for (Sum& sum : sums)
      if (CalcExprN(sum) != 0) return complete = false;
    return true;
  };
  const int start = StackInt(stk[at.condition - 2]);
  const int count = StackInt(stk[at.condition - 1]);
  if (ScanRecords(start, count, stk[at.condition], action) == 0 && complete)
    _finishSums(sums, at, stk);
  return -at.removed;
}

}  // namespace mox
