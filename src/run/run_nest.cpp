#include "run/run_nest.h"

#include <cstdio>
#include <map>
#include <memory>
#include <optional>

#include "lang/compile.h"
#include "run/handlers.h"
#include "run/run.h"
#include "session/error.h"
#include "session/files.h"
#include "session/options.h"

namespace mox {

namespace {

int doLevel = 0;

// The lists of the files that ran last: a DO in a loop compiles once, as long as the lines stay the
// same and no trace wants to show what they compile to.
struct Kept {
  Lines lines;
  std::shared_ptr<const Program> program;
};
std::map<std::string, Kept> kept;
constexpr size_t maxKept = 16;         // files
constexpr size_t maxKeptLines = 1000;  // of one

// The list of a file's lines; null when they don't compile or leave a block open.
std::shared_ptr<const Program> _compile(const std::string& path, Lines& lines) {
  const bool keeps =
      lines.size() <= maxKeptLines && !g_opt[optC0] && !g_opt[optC1] && !g_opt[optC2];
  const auto found = kept.find(path);
  if (keeps && found != kept.end() && found->second.lines == lines) return found->second.program;
  const Lines source = keeps ? lines : Lines();
  Lines steps;
  const size_t limit = 4 * (lines.size() + 250);
  if (doCompile(true, lines, limit, steps) != cmpDone) return nullptr;
  auto program = std::make_shared<const Program>(CutSteps(std::move(steps)));
  if (!keeps) return program;
  if (kept.size() == maxKept) kept.clear();
  kept[path] = {source, program};
  return program;
}

}  // namespace

int DoFile(const std::string& path) {
  std::optional<Lines> lines = ReadLines(path);
  if (!lines) return -1;
  if (const auto program = _compile(path, *lines)) {
    ++doLevel;
    if (doLevel <= maxDoLevels)
      doRun(*program);
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
