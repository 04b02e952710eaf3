// Expressions that are compiled at run time: conditions, list elements, index keys, macros.
//
// Each runs on an operand stack of its own, inside the run of the statement that it belongs to.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "run/run.h"
#include "session/value.h"
#include "store/key.h"

namespace mox {

constexpr size_t evalSteps = 100;  // limit of an expression that runs once, and of an index key
constexpr size_t scanSteps = 50;   // limit of a condition or expression that runs for each record

// Compiles and runs an expression once: 0 with its value, cut at max bytes, or -1.
int EvalExpr(std::string_view text, size_t max, Value& result);

// An expression that runs again and again, compiled when it first runs.
struct Expr {
  Expr(std::string source, size_t stepLimit) : text(std::move(source)), limit(stepLimit) {}
  std::string text;
  size_t limit;
  std::optional<Program> program;
  std::unique_ptr<Run> run;  // kept between runs for its memory
  bool failed = false;       // of the last run
};
// Makes the program unless it is there: 0, or -1 when the text gives no complete list. Compiles
// anew, with the same result, while the options C1 or C2 show the steps of what is compiled.
int ExprCompile(Expr& e);
// Runs the program: its value, which holds until it runs again. The empty text when it failed.
const Value& RunExpr(Expr& e);

// The same, with a report when it gives no complete list.
int ScanCompile(Expr& e);
// Runs a compiled condition on the current record: true when its integer value isn't 0.
bool Qualifies(Expr& condition);

// The key expression of an index, for the store.
Key MakeKey(const std::string& text);

}  // namespace mox
