// What the hosts' files have in common.
#include "host/file.h"

namespace mox {

namespace {
unsigned _waits = 0;
}

bool (*g_mayChangeFile)(FileOp op) = nullptr;

unsigned OS_Waits() { return _waits; }
void OS_CountWait() { ++_waits; }

}  // namespace mox
