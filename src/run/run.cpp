#include "run/run.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "host/host.h"
#include "run/join.h"
#include "run/run_ops.h"
#include "run/run_out.h"
#include "session/error.h"
#include "session/files.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int maxCalls = 49;  // nested CALL steps
constexpr double selectRound = 0.5;

struct CoreWord {
  std::string_view word;
  Core core;
};
constexpr CoreWord coreWords[] = {
    {"PUSH", Core::PUSH}, {":", Core::source}, {"END", Core::END}, {"LBL", Core::LBL},
    {"JP", Core::JP},     {"JPF", Core::JPF},  {"JPX", Core::JPX}, {"CMP", Core::CMP},
    {"CALL", Core::CALL}, {"RET", Core::RET},  {"DUP", Core::DUP}, {"POP", Core::POP},
    {"STOP", Core::STOP},
};

bool _isWordChar(char c) { return (static_cast<signed char>(c) >= '0' && c != 127) || c == '$'; }

// Cuts the word off the step, leaving the rest of it.
std::string_view GetWordD(std::string_view& step) {
  size_t start = 0;
  while (start < step.size() && (step[start] == ' ' || step[start] == '\t')) ++start;
  size_t end = start;
  while (end < step.size() && end - start < maxWord && _isWordChar(step[end])) ++end;
  const std::string_view word = step.substr(start, end - start);
  step.remove_prefix(end);
  return word;
}

// What the machine knows of a word of the step table.
struct Row {
  const StepEntry* entry = nullptr;
  Effect effect;
  bool quiet = false;
};

// The row of a word, made when it is first met; null for a word that no one knows.
const Row* _findRow(std::string_view word) {
  static std::vector<Row> rows(g_steps.size());
  const auto less = [](const StepEntry& e, std::string_view w) { return StrICmp(e.word, w) < 0; };
  const auto at = std::lower_bound(g_steps.begin(), g_steps.end(), word, less);
  if (at == g_steps.end() || StrICmp(at->word, word) != 0) return nullptr;
  Row& row = rows[static_cast<size_t>(at - g_steps.begin())];
  if (!row.entry) row = {&*at, CutEffect(at->effect), findndx(word, g_quietSteps) >= 0};
  return &row;
}

Core _coreOf(std::string_view word) {
  for (const CoreWord& c : coreWords)
    if (c.word == word) return c.core;
  return Core::none;
}

Step _cut(std::string text) {
  Step step;
  std::string_view rest = text;
  const std::string_view word = GetWordD(rest);
  const std::string_view operand = dlb(rest);
  step.word = text.size() - operand.size();
  step.core = _coreOf(word);
  if (step.core == Core::none) {
    if (const Row* const row = _findRow(word)) {
      step.entry = row->entry;
      step.effect = &row->effect;
      step.quiet = row->quiet;
    }
  } else if (step.core == Core::CMP) {
    step.number = CmpOperator(operand);
  } else if (step.core != Core::PUSH && step.core != Core::source) {
    step.number = TxtToInt(operand);
  }
  step.text = std::move(text);
  return step;
}

// The last step of the last run, whose program may be gone. Mostly it is this one.
std::string lastStep;
constexpr std::string_view endStep = "END";

void _end(const Step& step) {
  if (step.text.size() == endStep.size()) errstep = endStep;
  errnum = errEnd;
}

void _jumpIfFalse(Run& run, int target) {
  if (run.depth < 1) {
    IntErr("STACK UNDERFLOW");
    return;
  }
  if (!run.stk[--run.depth].holds()) run.pc = target;
}

// t1 .. tn n x: goes to the step number that x selects, or on when x selects none.
void _jumpSelected(Run& run) {
  if (run.depth < 2) {
    IntErr("STACK UNDERFLOW");
    return;
  }
  const int selector = DblToInt(run.stk[run.depth - 1].number() + selectRound);
  const int n = std::max(DblToInt(run.stk[run.depth - 2].number()), 0);
  run.depth -= 2;
  if (n <= run.depth && selector >= 1 && selector <= n)
    run.pc = TxtToInt(run.stk[run.depth - n + selector - 1].text());
  run.depth -= n;
}

void _call(Run& run, int target) {
  if (run.calls.size() == maxCalls) {
    NestErr();
    return;
  }
  run.calls.push_back(run.pc);
  run.pc = target;
}

void _return(Run& run) {
  if (run.calls.empty()) {
    IntErr("RET WITHOUT CALL");
    return;
  }
  run.pc = run.calls.back();
  run.calls.pop_back();
}

void _duplicate(Run& run, int n) {
  if (n < 1 || n > run.depth) return;
  Value copy = run.stk[run.depth - n];
  run.push() = std::move(copy);
}

void _compare(Run& run, int op) {
  if (run.depth < 2) {
    IntErr("1");
    return;
  }
  Value& a = run.stk[run.depth - 2];
  a = Value::ofTruth(OpCmp(a, run.stk[run.depth - 1], op));
  --run.depth;
}

void _label(std::string_view label) {
  if (label.starts_with('L')) std::printf("[%04d]\n", TxtToInt(label.substr(1)));
}

// The source text of a statement of a command file: echo and single step.
void _sourceLine(std::string_view text) {
  if (g_opt[optECHO]) std::printf("%.*s\n", static_cast<int>(text.size()), text.data());
  if (g_opt[optSTEP]) errnum = AskStep();
}

// A step that isn't the machine's own.
void _dispatch(Run& run, const Step& step) {
  if (!step.entry) {
    IntErr("doRunX 1");
    return;
  }
  if (g_late && !step.quiet) {
    dbPut();
    if (errnum != errNone) return;
  }
  if (run.operands.lay(step.entry->word, *step.effect, run.depth)) {
    step.entry->handler(run.operands);
    run.depth = run.operands.depthAfter();
  } else if (step.entry->word[0] == '=') {
    ArgErr(step.entry->refusal);
  } else {
    IntErr(step.entry->refusal);
  }
}

void _runStep(Run& run, const Step& step) {
  switch (step.core) {
    case Core::PUSH: run.push().setText(step.operand()); break;
    case Core::STOP: errnum = errEnd; break;
    case Core::END: _end(step); break;
    case Core::LBL: _label(step.operand()); break;
    case Core::JP:
      run.pc = step.number;
      if (g_late) dbTick();
      break;
    case Core::JPF: _jumpIfFalse(run, step.number); break;
    case Core::JPX: _jumpSelected(run); break;
    case Core::CMP: _compare(run, step.number); break;
    case Core::CALL: _call(run, step.number); break;
    case Core::RET: _return(run); break;
    case Core::DUP: _duplicate(run, step.number); break;
    case Core::POP: run.depth -= std::max(step.number, 0); break;
    case Core::source: _sourceLine(step.operand()); break;
    case Core::none: _dispatch(run, step); break;
  }
}

// Does the runs of steps from here on that can be done as one. That comes to an end without a look
// at Ctrl-C: only JP goes back in a list, and it is in no run.
void _runJoints(Run& run) {
  if (g_opt[optR1]) return;
  while (static_cast<size_t>(run.pc) < run.size) {
    Joint* const joint = run.steps[run.pc].joint.get();
    if (!joint || !joint->row->act(run, *joint)) return;
  }
}

bool busy = false;  // a question of single step, or a command typed at it, is under way

}  // namespace

void (*g_keyboardCommand)() = nullptr;

int NestGuard::nesting_ = 0;

NestGuard::NestGuard() : ok_(++nesting_ <= maxNest) {
  if (!ok_) NestErr();
}

void NestErr() { SetErr("NESTING LIMIT VIOLATION EXCEEDED", ""); }

Program CutSteps(Lines steps) {
  Program program;
  program.reserve(steps.size());
  for (std::string& text : steps) program.push_back(_cut(std::move(text)));
  JoinSteps(program);
  return program;
}

bool KnownStep(std::string_view step) {
  std::string_view rest = step;
  GetWordD(rest);
  if (!rest.empty() && _isWordChar(rest[0])) return false;
  const Step cut = _cut(std::string(step));
  return cut.core == Core::CMP ? cut.number >= 0 : cut.core != Core::none || cut.entry;
}

int doRun1(Run& run, RunOf what) {
  outcol = 0;
  errnum = errNone;
  run.pc = run.depth = 0;
  run.calls.clear();
  while (errnum == errNone && !(what == RunOf::statements && Interrupted())) {
    _runJoints(run);
    if (static_cast<size_t>(run.pc) >= run.size) {
      IntErr("NO SUCH STEP");
      break;
    }
    const Step& step = run.steps[run.pc];
    errpc = run.pc++;
    errstep = step.text;
    if (g_opt[optR1]) std::printf("%05d: %s\n", errpc, step.text.c_str());
    _runStep(run, step);
    if (run.depth < 0) IntErr("STACK UNDERFLOW");
    if (g_opt[optR1] && run.depth >= 1)
      std::printf("       stk[%d]=%s\n", run.depth - 1, run.top().text().c_str());
  }
  if (errnum == errEnd) {
    errnum = errNone;
    if (run.depth != (what == RunOf::expression)) IntErr(StrFmt("STACK DEPTH %d", run.depth));
  }
  if (errstep.data() != endStep.data()) errstep = lastStep = errstep;
  return run.depth;
}

void doRun(const Program& program) {
  NestGuard nest;
  if (!nest.ok()) return;
  Run run(program);
  doRun1(run, RunOf::statements);
  dbPut();
  dbRevert();  // of a change that an error or Ctrl-C broke off
  FpCloseAll();
}

int AskStep() {
  if (busy) return errNone;
  busy = true;
  int decision = -1;
  while (decision < 0) {
    std::printf("SINGLE STEP  Y:=STEP,  N:=KEYBOARD CMD,  ESC:=CANCEL");
    const int key = _getch();
    std::printf("\n");
    if (key == keyEnd) {
      InputEnded();
      decision = errnum;
    } else if ((key & 95) == 27) {
      decision = errCancel;
    } else if ((key & 95) == 'Y') {
      decision = errNone;
    } else {
      g_keyboardCommand();
      if (g_ended) decision = errTold;
    }
  }
  busy = false;
  return decision;
}

}  // namespace mox
