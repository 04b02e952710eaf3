#include "session/session.h"

#include "host/host.h"
#include "session/error.h"

namespace mox {

int g_quit = 0;
bool g_ended = false;
unsigned g_names = 1;

namespace {
std::string _unread;  // name of the file that couldn't be read
}

void InputEnded() {
  if (Interrupted()) return;
  g_quit = 1;
  g_ended = true;
  errnum = errTold;
}

void ReadFailed(const std::string& name) {
  if (_unread.empty()) _unread = name;
  ReadHasFailed();
}

bool ReadHasFailed() {
  if (_unread.empty()) return false;
  SetErr("CANNOT READ FILE", _unread);
  return true;
}

bool Interrupted() {
  if (!OS_Interrupted()) return ReadHasFailed();
  SetErr("*** INTERRUPTED", "");
  return true;
}

void ForgetInterrupt() {
  OS_ForgetInterrupt();
  _unread.clear();
}

}  // namespace mox
