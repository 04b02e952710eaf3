#include "lang/addrtbl.h"

namespace mox {

void ATClear(CompileState& state) { state.at.clear(); }

void ATAdd(CompileState& state, std::string_view label, int step) { state.at.emplace(label, step); }

int ATLookup(const CompileState& state, std::string_view label) {
  const auto found = state.at.find(std::string(label));
  return found == state.at.end() ? -1 : found->second;
}

}  // namespace mox
