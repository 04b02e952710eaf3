// The steps that visit records one by one under a scope and a condition.

#include <algorithm>
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

constexpr size_t maxSums = 6;

// Condition of the last LOCATE, whatever table it ran on.
std::optional<Expr> _locate;

void _say(const char* format, int number) {
  if (g_opt[optTALK]) std::printf(format, number);
}

std::vector<Expr> _expressions(const Lines& sources) {
  std::vector<Expr> all;
  for (const std::string& source : sources) all.emplace_back(source, scanSteps);
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

// DELETE and RECALL.
void _markRecords(Operands& o, bool counts, int (*mark)(int), const char* told) {
  if (!DbChk()) return;
  int tally = 0;
  const auto action = [&] {
    const bool changes = dbDELETED(selectedArea) == counts;
    if (mark(selectedArea) != 0) return false;
    tally += changes;
    return true;
  };
  const int start = o.integer(), count = o.integer();
  dbHold(selectedArea);
  const int scanned = ScanRecords(start, count, o.text(), action);
  dbLetGo(selectedArea);
  if (scanned == 0) _say(told, tally);
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
  const Value& value = RunExpr(sum.expr);
  const Typ typ = value.typ();
  sum.length = std::max(sum.length, typ.length);
  sum.decimals = std::max(sum.decimals, typ.decimals);
  sum.total += static_cast<float>(value.number());
  return 0;
}

void _finishSums(const std::vector<Sum>& sums, const Lines& names) {
  if (g_opt[optTALK]) {
    for (const Sum& sum : sums) std::printf("%s ", FmtFix(sum.total, 0, 6).c_str());
    std::printf("\n");
  }
  for (size_t i = 0; i < std::min(sums.size(), names.size()); ++i)
    PutNumber(names[i], FmtFix(sums[i].total, 0, 6), sums[i].length, sums[i].decimals);
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

void OpList(Operands& o) {
  if (!DbChk()) return;
  std::vector<Expr> expressions = _expressions(o.list());
  const int start = o.integer(), count = o.integer();
  ScanRecords(start, count, o.text(), [&] { return _listRecord(expressions); });
}

void OpDel1(Operands& o) { _markRecords(o, false, dbDelete, "%05d DELETION(S)\n"); }

void OpRecall1(Operands& o) { _markRecords(o, true, dbRecall, "%05d RECALL(S)\n"); }

void OpLocate(Operands& o) {
  if (!DbChk()) return;
  const bool next = o.integer() != 0;
  Expr& condition = _locate.emplace(o.text(), scanSteps);
  if (ScanCompile(condition) != 0) return;
  if (next)
    dbSkip(selectedArea, 1);
  else
    dbTop(selectedArea);
  _seek(condition);
}

void OpContinue(Operands&) {
  if (!_locate) return _say("RECORD: %05d\n", 1);
  if (!DbChk()) return;
  if (ExprCompile(*_locate) != 0) {
    SetErr("CAN'T CONTINUE", "");
    return;
  }
  dbSkip(selectedArea, 1);
  _seek(*_locate);
}

void OpCount1(Operands& o) {
  constexpr int countLength = 10;
  if (!DbChk()) return;
  int tally = 0;
  const auto action = [&] {
    ++tally;
    return true;
  };
  const int start = o.integer(), count = o.integer();
  if (ScanRecords(start, count, o.text(), action) != 0) return;
  _say("COUNT = %05d\n", tally);
  const std::string& name = o.text();
  if (name[0] != '-') PutNumber(name, std::to_string(tally), countLength, 0);
}

void OpSum1(Operands& o) {
  if (!DbChk()) return;
  const Lines sources = o.list();
  if (sources.size() > maxSums || sources.empty()) {
    SetErr(sources.empty() ? "NO EXPRESSION TO SUM" : "MORE THAN 6 FIELDS TO SUM", "");
    return;
  }
  std::vector<Sum> sums;
  for (const std::string& source : sources) sums.push_back({Expr(SourceText(source), scanSteps)});
  bool complete = true;
  const auto action = [&] {
    if (g_opt[optDELETED] && dbDELETED(selectedArea)) return true;
    for (Sum& sum : sums)
      if (CalcExprN(sum) != 0) return complete = false;
    return true;
  };
  const int start = o.integer(), count = o.integer();
  if (ScanRecords(start, count, o.text(), action) == 0 && complete) _finishSums(sums, o.list());
}

}  // namespace mox
