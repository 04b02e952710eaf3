// What reads bytes that anybody may have made, each tried in a session of its own in the current
// folder, in which it may leave files. Keys come from typed.h's pipe.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct FuzzTarget {
  const char* name;
  std::function<void(const std::string& bytes)> run;
  std::vector<std::string> (*seeds)();
};
extern const std::vector<FuzzTarget> fuzzTargets;
