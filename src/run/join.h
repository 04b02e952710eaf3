// Runs of steps that are done as one.
//
// What statements compile to repeats a few patterns: a name is read, a number is pushed, the two
// are compared, a jump follows. When a list is cut, the first step of such a run gets a joint; all
// steps stay as they are and where they are. The machine does the run at once, unless a trace shows
// each step. Where a run meets anything but the usual, a name that leads nowhere, a value of
// another kind, it does nothing at all, and its steps run one by one: errors, jumps and step
// numbers are theirs.
#pragma once

#include <vector>

#include "run/run.h"
#include "run/run_var.h"

namespace mox {

// The state of one run of the machine.
struct Run {
  const Program& program;
  Stack& stk;
  int pc = 0;
  int depth = 0;
  std::vector<int> calls;

  // A new slot on top; what it holds is left over.
  Value& push() {
    if (static_cast<size_t>(depth) == stk.size()) stk.emplace_back();
    return stk[static_cast<size_t>(depth++)];
  }
  Value& top() { return stk[static_cast<size_t>(depth - 1)]; }
};

struct Joint {
  // Does the run, and moves the program counter behind it or to where it jumps. False: nothing is
  // done.
  bool (*act)(Run& run, Joint& joint);
  int steps;
  Name name;        // that the steps read or store into
  Value value;      // that they push
  int op = -1;      // of CMP
  int target = -1;  // of JPF
};

// Gives the first step of each run its joint.
void JoinSteps(Program& program);

}  // namespace mox
