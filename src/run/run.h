// The step machine: interprets step lists.
//
// A step is a word and an operand. The machine cuts each step and looks its word up once, when it
// gets the list (CutSteps); the step's text stays for the trace. It decides thirteen words itself;
// every other word is a row of the step table (steptab.cpp), the only place that knows all
// handlers.
//
// Values travel on an operand stack of texts (session/value.h tells their forms). A handler takes
// its operands through operands.h and reports an error through the error slot; the machine stops
// behind the step, whose effect on the stack still counts. Slots at or above the depth hold nothing
// that anyone may read.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "run/operands.h"
#include "session/misc.h"

namespace mox {

// All steps with a handler, sorted by word.
extern const std::span<const StepEntry> g_steps;
// Of these, those that print nothing while TALK is off and leave alone all files but tables:
// changes of records are held over them (store/db.h: dbReplaceLater).
extern const std::span<const std::string_view> g_quietSteps;

enum class Core { none, PUSH, STOP, END, LBL, JP, JPF, JPX, CMP, CALL, RET, DUP, POP, source };

struct Joint;

struct Step {
  std::string text;
  size_t word = 0;  // where the operand begins
  Core core = Core::none;
  int number = 0;                    // the operand's integer; of CMP the place of its operator
  const StepEntry* entry = nullptr;  // with Core::none; null for a word that no one knows
  const Effect* effect = nullptr;    // of the entry
  bool quiet = false;                // nothing of what the entry does can be seen
  std::shared_ptr<Joint> joint;      // of the run that begins here (join.h)

  std::string_view operand() const { return std::string_view(text).substr(word); }
};
using Program = std::vector<Step>;

// Cuts a finished list.
Program CutSteps(Lines steps);
// True when the machine knows the step's word, uncut, and of CMP the operator.
bool KnownStep(std::string_view step);

// Statements leave nothing on the stack and an expression one value: a run that ended without an
// error and left anything else is an internal error. Ctrl-C ends a run of statements before its
// next step. Expressions, which are short, go on: a key that is computed while an index follows a
// record must come out whole.
enum class RunOf { statements, expression };

// The state of a run of a program, which must outlive it, or of its runs one after the other.
struct Run {
  explicit Run(const Program& program) : steps(program.data()), size(program.size()) {}
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  const Step* const steps;
  const size_t size;
  int pc = 0;
  int depth = 0;
  Stack stk;
  std::vector<int> calls;
  Operands operands{stk};  // of the step that is running

  // A new slot on top; what it holds is left over.
  Value& push() {
    if (depth == room_) grow();
    return slots_[depth++];
  }
  Value& top() { return slots_[depth - 1]; }

 private:
  void grow() {
    stk.emplace_back();
    slots_ = stk.data();
    ++room_;
  }
  Value* slots_ = nullptr;
  int room_ = 0;
};

// Runs statements from depth 0 on a stack of their own and closes the numbered files at their end.
void doRun(const Program& program);
// Runs from depth 0 and returns the final depth; the values stay on the stack. A negative depth is
// that of a POP that asked for too much.
int doRun1(Run& run, RunOf what);

// The single-step question: errNone to go on, errCancel, or errTold at the end of the input.
int AskStep();
// The prompt cycle that a key of the single-step question runs; the session sets it.
extern void (*g_keyboardCommand)();

// Counts the runs that are under way. Beyond maxNest the guard reports an error and isn't ok.
constexpr int maxNest = 300;
class NestGuard {
 public:
  NestGuard();
  ~NestGuard() { --nesting_; }
  NestGuard(const NestGuard&) = delete;
  NestGuard& operator=(const NestGuard&) = delete;
  bool ok() const { return ok_; }

 private:
  static int nesting_;
  bool ok_;
};
// The error of too much nesting, of runs, files or calls.
void NestErr();

}  // namespace mox
