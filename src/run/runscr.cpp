// The steps of forms, editors and the screen.

#include <algorithm>
#include <cstdio>

#include "run/handlers.h"
#include "run/run_nest.h"
#include "screen/moxbrowse.h"
#include "screen/moxcreate.h"
#include "screen/moxed.h"
#include "screen/moxedit.h"
#include "screen/moxread.h"
#include "screen/scr.h"
#include "session/error.h"
#include "session/options.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

int OpSay(int depth, Stack& stk) {
  const std::string& value = stk[depth - 1];
  // Without a SAY clause the text is empty, and no number.
  AtSay(StackInt(stk[depth - 3]), StackInt(stk[depth - 2]), value.empty() ? "" : fmtExpr(value));
  return -1;
}

int OpGet(int depth, Stack& stk) {
  const int row = std::clamp(StackInt(stk[depth - 4]), 0, scrRows - 1);
  const int col = std::clamp(StackInt(stk[depth - 3]), 0, scrCols - 1);
  AtGet(row, col, strUpper(stk[depth - 2]), qs2s(stk[depth - 1]));
  return -2;
}

int OpRead(int, Stack&) {
  if (!g_optval[optFORMAT].empty()) {
    const std::string file = FnExt(g_optval[optFORMAT], ".fmt");
    if (DoFile(file) != 0) SetErr("FORMAT FILE CANNOT BE OPENED", file);
  }
  // The error of the format file outlives the key expressions that run when the record is written.
  const int failed = errnum;
  MoxRead();
  if (errnum == errNone) errnum = failed;
  return 0;
}

int OpClGets(int, Stack&) {
  AtClear();
  return 0;
}

int OpCls(int, Stack&) {
  AtClear();
  ScrClear();
  return 0;
}

int OpClEol(int depth, Stack& stk) {
  ScrClrEol(StackInt(stk[depth - 2]), StackInt(stk[depth - 1]));
  return -2;
}

int OpEdit(int, Stack&) {
  MoxEdit();
  return 0;
}

int OpBrowse(int depth, Stack& stk) {
  MoxBrowse();
  return -(StackInt(stk[depth - 1]) + 1);
}

int OpCreate(int depth, Stack& stk) {
  MoxCreate(stk[depth - 1]);
  return -1;
}

int OpMdStru(int, Stack&) {
  if (!DbChk()) return 0;
  std::printf("MODIFY ERASES ALL DATA RECORDS ... PROCEED? (Y/N) ");
  const int key = ScrGetKey();
  const bool yes = key == 'Y' || key == 'y';
  std::printf("%c\n", yes ? 'Y' : 'N');
  if (yes) MoxModiStru();
  return 0;
}

int OpMdComm(int depth, Stack& stk) {
  std::printf("%s", std::string(scrRows + 1, '\n').c_str());
  MoxEd(FnExt(qs2s(stk[depth - 1]), ".cmd"));
  return -1;
}

}  // namespace mox
