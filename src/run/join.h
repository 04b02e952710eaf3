// Runs of steps that are done as one.
//
// What statements compile to repeats a few patterns: a name is read, a number is pushed, the two
// are compared, a jump follows. When a list is cut, the first step of such a run gets a joint; all
// steps stay as they are and where they are. The machine does the run at once, unless a trace shows
// each step. Where a run meets anything but the usual, a name that leads nowhere, a value of
// another kind, it does nothing at all, and its steps run one by one: errors, jumps and step
// numbers are theirs.
#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "run/run.h"
#include "run/run_var.h"

namespace mox {

struct Joint;

// A row of the table of such runs: a letter for each step (join.cpp tells them), and what does them
// all and moves the program counter behind them or to where they jump; false when it did nothing.
struct JoinRow {
  std::string_view steps;
  bool (*act)(Run& run, Joint& joint);
};
extern const std::span<const JoinRow> g_joins;

struct Joint {
  const JoinRow* row;
  Name name;        // the last that the steps read or store into
  Name other;       // one before it
  Value value;      // that they push
  int op = -1;      // of CMP
  int target = -1;  // of JPF
};

// Gives the first step of each run its joint.
void JoinSteps(Program& program);

}  // namespace mox
