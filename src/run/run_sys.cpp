// The steps of the session itself: options, files, what CLEAR clears, listings.

#include <cstdio>

#include "host/host.h"
#include "run/handlers.h"
#include "run/run_out.h"
#include "run/run_var.h"
#include "screen/moxread.h"
#include "session/error.h"
#include "session/files.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"
#include "vars/vars.h"

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

// The bytes that a variable counts in the listing.
int _bytesUsed(int number) {
  switch (VarGetProp(number, propType)) {
    case 'L': return 2;
    case 'N': return 7;
    default: return VarGetProp(number, propLength) + 1;
  }
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

int OpReset(int, Stack&) { return -1; }

int OpQuit(int, Stack&) {
  g_quit = 1;
  return 0;
}

int OpDel(int depth, Stack& stk) {
  const std::string path = FnFind(qs2s(stk[depth - 1]));
  if (dbInUse(path) || !FileDelete(path)) SetErr("DELETE FILE FAILED", "");
  return -1;
}

int OpRen(int depth, Stack& stk) {
  const std::string from = FnFind(qs2s(stk[depth - 2]));
  if (dbInUse(from) || !FileRename(from, qs2s(stk[depth - 1]))) SetErr("RENAME FAILED", "");
  return -2;
}

int OpClMem(int, Stack&) {
  VarClear();
  return 0;
}

int OpClAll(int, Stack&) {
  VarClear();
  AtClear();
  dbReset();
  return 0;
}

int OpDspMem(int, Stack&) {
  int bytes = 0;
  for (int i = 0; i < VarCount(); ++i) {
    const std::string& name = *VarName(i);
    SayTxt(0, StrFmt("%-10.10s  (%c)  ", name.c_str(), VarGetProp(i, propType)));
    SayVal(-1, GetV(name, 0, 0));
    SayNL();
    bytes += _bytesUsed(i);
  }
  SayTxt(0, StrFmt("** TOTAL **     %02d VARIABLES USED  %05d BYTES USED", VarCount(), bytes));
  SayNL();
  return 0;
}

int OpDspFn(int depth, Stack& stk) {
  constexpr int namesInLine = 4;
  int shown = 0;
  for (const std::string& name : OS_GetFileList(stk[depth - 1]))
    std::printf("%s%-18s ", shown++ % namesInLine == 0 ? "\n" : "", name.c_str());
  std::printf("\n\n");
  return -1;
}

}  // namespace mox
