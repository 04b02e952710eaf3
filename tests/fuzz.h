// What reads bytes that anybody may have made, each tried in a session of its own in the current
// folder, in which it may leave files. Keys come from typed.h's pipe.
#pragma once

#include <string>
#include <vector>

struct FuzzTarget {
  const char* name;
  void (*run)(const std::string& bytes);
  std::vector<std::string> (*seeds)();
};
extern const std::vector<FuzzTarget> fuzzTargets;
