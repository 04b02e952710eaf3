// A coverage-guided run of one target, whose name is in MOX_TARGET (tools/fuzz starts it). With
// MOX_SEEDS it writes the target's seeds into that folder and ends.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "../temp_dir.h"
#include "targets.h"

namespace {

const FuzzTarget& Target() {
  static const FuzzTarget& target = []() -> const FuzzTarget& {
    const char* const name = std::getenv("MOX_TARGET");
    for (const FuzzTarget& t : fuzzTargets)
      if (name && std::strcmp(name, t.name) == 0) return t;
    std::abort();
  }();
  return target;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  FuzzBegin();
  const std::vector<std::string> seeds = Target().seeds();  // the files that a target starts from
  if (const char* const folder = std::getenv("MOX_SEEDS")) {
    for (size_t i = 0; i < seeds.size(); ++i)
      PutBytes(fs::path(folder) / std::to_string(i), seeds[i]);
    std::exit(0);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t n) {
  Target().run({reinterpret_cast<const char*>(bytes), n});
  return 0;
}
