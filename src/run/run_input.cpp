#include "run/run_input.h"

#include <cstdio>

#include "host/host.h"
#include "session/session.h"

namespace mox {

int AskWait() {
  std::printf("WAITING");
  const int key = _getch();
  std::printf("\n");
  if (key == keyEnd) InputEnded();
  return key;
}

}  // namespace mox
