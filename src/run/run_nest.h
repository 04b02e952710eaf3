// Command files that run inside a run.
//
// Each has its own step list and operand stack. What nested runs share is the error slot, the
// output column, the variables, the work areas and the options.
#pragma once

#include <string>

namespace mox {

constexpr int maxDoLevels = 100;  // command files that run inside each other

// Compiles and runs a command file: 0 if it could be read, whatever became of it, else -1. A file
// that doesn't compile leaves its error; one whose last block is open does nothing.
int DoFile(const std::string& path);

}  // namespace mox
