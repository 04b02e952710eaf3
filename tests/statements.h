// Statements compiled and run in the test's process.
#pragma once

#include <string>

#include "lang/compile.h"
#include "run/prompt.h"
#include "run/run.h"
#include "session/error.h"
#include "session/misc.h"
#include "session/session.h"

namespace mox {

// The steps of a source: none when it doesn't compile.
inline Program Compiled(const std::string& source, bool isFile = false) {
  errnum = errNone;
  Lines lines = split(source, "\n"), steps;
  const bool done = doCompile(isFile, lines, maxPromptSteps, steps) == cmpDone;
  return done ? CutSteps(std::move(steps)) : Program();
}

// The error of the statements, or nothing.
inline std::string RunSource(const std::string& source) {
  ForgetInterrupt();
  const Program program = Compiled(source);
  if (!program.empty()) doRun(program);
  return errnum == errNone ? "" : errnum == errTold ? "told" : *errmsg;
}

}  // namespace mox
