#include "run/prompt.h"

#include <cstdio>

#include "host/file.h"
#include "host/host.h"
#include "lang/compile.h"
#include "lang/mox_gmr.h"
#include "run/run.h"
#include "run/run_complete.h"
#include "run/run_expr.h"
#include "screen/moxread.h"
#include "screen/scr_line.h"
#include "session/error.h"
#include "session/options.h"
#include "session/session.h"
#include "store/db.h"
#include "vars/vars.h"

namespace mox {

namespace {

// Reads lines until they compile to a whole list, or not at all: true when there is a list to run.
bool _askCommand(Lines& steps) {
  Lines lines;
  Compilation made;
  int result = cmpOpen;
  for (char prompt = '.'; result == cmpOpen; prompt = '>') {
    if (lines.size() == maxBlockLines) {
      SetErr("BLOCK TOO LONG", "");
      return false;
    }
    std::printf("%c ", prompt);
    std::string line;
    if (!ScrReadCommand(prompt, CompleteLine, line)) {
      std::printf("\n");
      if (!OS_Interrupted()) InputEnded();  // after Ctrl-C a fresh prompt comes, without an error
      return false;
    }
    lines.push_back(std::move(rm_nl(line)));
    if (g_opt[optC0]) made = {};  // which shows the tokens of all lines, each time
    result = doCompileOn(false, lines, maxPromptSteps, made);
  }
  steps = std::move(made.steps);
  return result == cmpDone;
}

void _sayError() {
  if (errnum == errNone || errnum == errTold) return;
  if (OS_Interrupted()) std::printf("\n");  // the terminal has shown the key on this line
  SayErr2();
}

void _promptLoop() {
  std::printf("\n");
  AppVersion();
  std::printf("\nType 'HELP', 'HELP MOX', or a command.\n");
  while (!g_quit) AskAndRun1Cmd();
}

}  // namespace

void AppVersion() { std::printf("MOX Version %d.%02d.%05d\n", 2, 40, 299); }

void AskAndRun1Cmd() {
  errnum = errNone;
  ForgetInterrupt();
  Lines steps;
  if (_askCommand(steps)) doRun(CutSteps(std::move(steps)));
  _sayError();
  ForgetInterrupt();
}

void RunMoxProg(const std::string& name) {
  Lines lines{"DO " + name};
  Lines steps;
  if (doCompile(false, lines, maxPromptSteps, steps) == cmpDone) doRun(CutSteps(std::move(steps)));
  _sayError();
}

void SessionInit() {
  OptDefaults();
  K7Init();
  VarClear();
  AtClear();
  g_makeKey = MakeKey;
  dbInit();
  g_beforeWait = dbRest;
  g_keyboardCommand = AskAndRun1Cmd;
  g_quit = 0;
  g_ended = false;
  errnum = errNone;
}

int moxmain(const std::string* program) {
#ifndef NDEBUG
  if (const std::string fault = GrammarFault(g_grammar, KnownStep); !fault.empty()) {
    std::fprintf(stderr, "%s\n", fault.c_str());
    return 1;
  }
#endif
  SessionInit();
  OS_CatchInterrupt();
  if (program)
    RunMoxProg(*program);
  else
    _promptLoop();
  dbRest();
  return 0;
}

}  // namespace mox
