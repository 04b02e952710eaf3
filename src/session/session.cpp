#include "session/session.h"

#include "session/error.h"

namespace mox {

int g_quit = 0;
bool g_ended = false;

void InputEnded() {
  g_quit = 1;
  g_ended = true;
  errnum = errTold;
}

}  // namespace mox
