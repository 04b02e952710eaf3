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
#include "session/newfile.h"
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

void OpOpt(Operands& o) {
  const std::string& name = o.text();
  const int slot = OptFind(name);
  const bool withText = o.more();
  const std::string& value = o.text();
  if (slot < 0)
    SynErr("");
  else if (slot == optFORMAT)
    _setFormat(withText ? value : name);
  else if (withText && slot == optALTERNATE && !FileIsFree(FnFind(qs2s(value))))
    SetErr("FILE IS IN USE", qs2s(value));
  else if (withText)
    g_optval[slot] = qs2s(value);
  else
    g_opt[slot] = TxtToInt(value);
}

void OpReset(Operands&) {}

void OpQuit(Operands&) { g_quit = 1; }

void OpDel(Operands& o) {
  const std::string path = FnFind(std::string(o.content()));
  if (!FileIsFree(path) || !FileDelete(path)) SetErr("DELETE FILE FAILED", "");
}

void OpRen(Operands& o) {
  const std::string from = FnFind(std::string(o.content()));
  std::string to(o.content());
  if (const std::string found = FnFind(to); !SameFile(found, from)) to = found;
  if (!FileIsFree(from) || !FileRename(from, to)) SetErr("RENAME FAILED", "");
}

void OpClMem(Operands&) { VarClear(); }

void OpClAll(Operands&) {
  VarClear();
  AtClear();
  dbReset();
}

void OpDspMem(Operands&) {
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
}

void OpDspFn(Operands& o) {
  constexpr int namesInLine = 4;
  int shown = 0;
  for (const std::string& name : OS_GetFileList(o.text()))
    std::printf("%s%-18s ", shown++ % namesInLine == 0 ? "\n" : "", name.c_str());
  std::printf("\n\n");
}

}  // namespace mox
