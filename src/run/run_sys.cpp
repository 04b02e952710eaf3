// The steps of the session itself.

#include "run/handlers.h"
#include "session/error.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"

namespace mox {

namespace {

// SET FORMAT: PRINT and SCREEN are the flag, every other word names the format file.
void _setFormat(const std::string& operand) {
  if (StrICmp(operand, "PRINT") == 0)
    g_opt[optFORMAT] = 1;
  else if (StrICmp(operand, "SCREEN") == 0)
    g_opt[optFORMAT] = 0;
  else
    g_optval[optFORMAT] = qs2s(operand);
}

}  // namespace

int OpOpt(int depth, Stack& stk) {
  constexpr int withText = 2;
  const int mode = TxtToInt(stk[depth - 1]);
  const int used = mode == withText ? 3 : 2;
  const int slot = OptFind(stk[depth - used]);
  if (slot < 0)
    SynErr("");
  else if (slot == optFORMAT)
    _setFormat(stk[depth - 2]);
  else if (mode == withText)
    g_optval[slot] = qs2s(stk[depth - 2]);
  else
    g_opt[slot] = mode;
  return -used;
}

int OpQuit(int, Stack&) {
  g_quit = 1;
  return 0;
}

}  // namespace mox
