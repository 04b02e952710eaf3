// What the hosts' files have in common.
#include "host/file.h"

namespace mox {

namespace {
unsigned _waits = 0;
}

bool (*g_mayUseFile)(FileOp op, std::size_t& n) = nullptr;

bool OS_MayUseFile(FileOp op) {
  std::size_t n = 0;
  return !g_mayUseFile || g_mayUseFile(op, n);
}

void (*g_beforeWait)() = nullptr;

void OS_CountWait() {
  if (g_beforeWait) g_beforeWait();
  ++_waits;
}

unsigned OS_Waits() { return _waits; }

}  // namespace mox
