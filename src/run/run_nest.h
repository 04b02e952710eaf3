// Runs inside a run: command files and expressions compiled at run time.
//
// Each has its own step list and operand stack. What nested runs share is the error slot, the
// output column, the variables, the work areas and the options.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "run/run.h"

namespace mox {

constexpr size_t evalSteps = 100;  // limit of an expression that runs once, and of an index key
constexpr size_t scanSteps = 50;   // limit of a condition or expression that runs for each record
constexpr int maxDoLevels = 100;   // command files that run inside each other

// Compiles and runs a command file: 0 if it could be read, whatever became of it, else -1. A file
// that doesn't compile leaves its error; one whose last block is open does nothing.
int DoFile(const std::string& path);

// Compiles and runs an expression once: 0 with its value, cut at max bytes, or -1.
int EvalExpr(std::string_view text, size_t max, std::string& result);

// An expression that runs again and again, compiled when it first runs.
struct Expr {
  Expr(std::string source, size_t stepLimit) : text(std::move(source)), limit(stepLimit) {}
  std::string text;
  size_t limit;
  std::optional<Program> program;
  Stack stk;  // kept between runs for its memory
};
// Makes the program unless it is there: 0, or -1 when the text gives no complete list. Compiles
// anew, with the same result, while the options C1 or C2 show the steps of what is compiled.
int ExprCompile(Expr& e);
// Runs the program: 0 with the value, or -1 with an empty result.
int RunExpr(Expr& e, std::string& result);

}  // namespace mox
