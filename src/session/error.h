// The error slot: one place in which a run notes that, and why, it must stop.
//
// errnum is also the stop signal of the step machine: a run goes on while it is 0. A nested run
// leaves it set when it failed, so the runs around it stop as well, and only the outermost entry
// (the prompt, or the start with a command file) shows the message.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mox {

enum ErrNum {
  errNone = 0,
  errSet = 1,       // an error; errmsg is its text, or that of an earlier error (CANCEL, labels)
  errTold = 2,      // an error whose message was shown where it arose, or the end of the input
  errCancel = 998,  // the person cancelled at the single-step prompt
  errEnd = 999,     // the run reached its end; the machine turns this back into 0
};

extern int errnum;
// Text of the last error, none before the first. It outlives errnum's return to 0.
extern std::optional<std::string> errmsg;

// Where the machine stands: index and text of the step that is running, for IntErr. Behind a run it
// is the last step of that run.
extern int errpc;
extern std::string_view errstep;

// Notes the error "a b", with the blank also where b is empty. The first error of a run wins:
// returns 0 when it took the error, -1 when one was set already.
int SetErr(std::string_view a, std::string_view b);
int SynErr(std::string_view text);  // "*** SYNTAX ERROR ***" and the text
int ArgErr(std::string_view text);  // "ARG ERROR" and the text
int IntErr(std::string_view text);  // "INTERNAL ERROR", the step that is running, the text

// The error slot set aside. A run, also one of an expression, clears the slot at its start: a
// statement that runs one when something may have failed already keeps its own error here.
struct ErrorSlot {
  int num = errNone;
  std::optional<std::string> msg;
};
ErrorSlot TakeErr();                 // the slot as it stands; it is free then
void PutErr(const ErrorSlot& slot);  // the slot as it was taken

// Sets the slot aside for its own lifetime, in which errors come and go. At its end the error that
// was there is there again; without one the slot is what the lifetime left.
class FirstErr {
 public:
  FirstErr() = default;
  ~FirstErr() {
    if (first_.num != errNone) PutErr(first_);
  }
  FirstErr(const FirstErr&) = delete;
  FirstErr& operator=(const FirstErr&) = delete;

 private:
  const ErrorSlot first_ = TakeErr();
};

// Prints errmsg and a line end; nothing before the first error of the session.
void SayErr2();

}  // namespace mox
