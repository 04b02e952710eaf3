// What reads bytes that anybody may have made, each tried in a session of its own in the current
// folder, in which it may leave files.
#pragma once

#include <string>
#include <vector>

struct FuzzTarget {
  const char* name;
  void (*run)(const std::string& bytes);
  std::vector<std::string> (*seeds)();
};
extern const std::vector<FuzzTarget> fuzzTargets;

// To be called once, before the first: input comes from a pipe, output goes nowhere.
void FuzzBegin();
