#include "session/session.h"

#include "host/host.h"
#include "session/error.h"

namespace mox {

int g_quit = 0;
bool g_ended = false;
unsigned g_names = 1;

void InputEnded() {
  if (Interrupted()) return;
  g_quit = 1;
  g_ended = true;
  errnum = errTold;
}

bool Interrupted() {
  if (!OS_Interrupted()) return false;
  SetErr("*** INTERRUPTED", "");
  return true;
}

}  // namespace mox
