#include "run/run_nest.h"

#include <cstdio>

#include "lang/compile.h"
#include "run/handlers.h"
#include "run/run.h"
#include "session/error.h"
#include "session/files.h"
#include "session/options.h"

namespace mox {

namespace {

int doLevel = 0;

}  // namespace

int DoFile(const std::string& path) {
  std::optional<Lines> lines = ReadLines(path);
  if (!lines) return -1;
  Lines steps;
  const size_t limit = 4 * (lines->size() + 250);
  if (doCompile(true, *lines, limit, steps) == cmpDone) {
    ++doLevel;
    if (doLevel <= maxDoLevels)
      doRun(CutSteps(std::move(steps)));
    else
      NestErr();
    --doLevel;
  }
  return 0;
}

void OpDoCmd(Operands& o) {
  if (DoFile(FnExt(o.text(), ".cmd")) != 0)
    SetErr("COMMAND FILE CANNOT BE FOUND\n", "DO CANCELLED");
}

void OpReturn(Operands&) { errnum = errEnd; }

void OpCancel(Operands&) {
  if (g_opt[optTALK]) std::printf("DO CANCELLED\n");
  errnum = errSet;
}

}  // namespace mox
