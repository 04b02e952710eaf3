#include "lang/addrtbl.h"

#include <string>
#include <unordered_map>

namespace mox {

namespace {
std::unordered_map<std::string, int> at;
}

void ATClear() { at.clear(); }

void ATAdd(std::string_view label, int step) { at.emplace(label, step); }

int ATLookup(std::string_view label) {
  const auto found = at.find(std::string(label));
  return found == at.end() ? -1 : found->second;
}

}  // namespace mox
