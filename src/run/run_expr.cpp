#include "run/run_expr.h"

#include <memory>

#include "lang/compile.h"
#include "run/handlers.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"

namespace mox {

namespace {

constexpr size_t maxMacro = 200;  // characters of the value of a macro

// Compiles an expression that must give a list to run: 0 or -1.
int _compileExpr(std::string_view text, size_t limit, Program& program) {
  Lines steps;
  if (doEval(text, limit, steps) != cmpDone || steps.empty()) return -1;
  program = CutSteps(std::move(steps));
  return 0;
}

}  // namespace

int EvalExpr(std::string_view text, size_t max, Value& result) {
  NestGuard nest;
  if (!nest.ok()) return -1;
  Program program;
  if (_compileExpr(text, evalSteps, program) != 0) return -1;
  Run run(program);
  if (doRun1(run, RunOf::expression) != 1) return -1;
  result = std::move(run.stk[0]);
  if (result.text().size() > max) result = Value(result.text().substr(0, max));
  return 0;
}

int ExprCompile(Expr& e) {
  if (e.program && !g_opt[optC1] && !g_opt[optC2]) return 0;
  e.program.emplace();
  if (_compileExpr(e.text, e.limit, *e.program) != 0) {
    e.program.reset();
    return -1;
  }
  e.run = std::make_unique<Run>(*e.program);
  return 0;
}

const Value& RunExpr(Expr& e) {
  static const Value none;
  NestGuard nest;
  e.failed = !nest.ok() || doRun1(*e.run, RunOf::expression) != 1;
  return e.failed ? none : e.run->stk[0];
}

int ScanCompile(Expr& e) {
  if (ExprCompile(e) == 0) return 0;
  SynErr(e.text);
  return -1;
}

bool Qualifies(Expr& condition) { return RunExpr(condition).holds(); }

Key MakeKey(const std::string& text) {
  const auto e = std::make_shared<Expr>(text, evalSteps);
  return {[e] { return ExprCompile(*e); },
          [e] {
            const Value& value = RunExpr(*e);
            return e->failed ? nullptr : &value;
          }};
}

void OpEval(Operands& o) {
  const std::string_view text = o.content();
  Value value;
  if (EvalExpr(text, maxMacro, value) == 0)
    o.result(std::move(value));
  else
    SynErr(text);
}

}  // namespace mox
