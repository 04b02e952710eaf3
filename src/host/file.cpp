// What the hosts' files have in common.
#include "host/file.h"

namespace mox {

namespace {
unsigned _waits = 0;
}

bool (*g_mayChangeFile)(FileOp op) = nullptr;

void (*g_beforeWait)() = nullptr;

void OS_CountWait() {
  if (g_beforeWait) g_beforeWait();
  ++_waits;
}

unsigned OS_Waits() { return _waits; }

}  // namespace mox
