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

void OpSay(Operands& o) {
  const int row = o.integer(), col = o.integer();
  const Value& value = o.value();
  // Without a SAY clause the text is empty, and no number.
  const bool none = !value.isKnown() && value.text().empty();
  AtSay(row, col, none ? "" : fmtExpr(value));
}

void OpGet(Operands& o) {
  const int row = std::clamp(o.integer(), 0, scrRows - 1);
  const int col = std::clamp(o.integer(), 0, scrCols - 1);
  const std::string name = strUpper(o.text());
  AtGet(row, col, name, o.content());
}

void OpRead(Operands&) {
  if (!g_optval[optFORMAT].empty()) {
    const std::string file = FnExt(g_optval[optFORMAT], ".fmt");
    if (DoFile(file) != 0) SetErr("FORMAT FILE CANNOT BE OPENED", file);
  }
  const FirstErr format;
  MoxRead();
}

void OpClGets(Operands&) { AtClear(); }

void OpCls(Operands&) {
  AtClear();
  ScrClear();
}

void OpClEol(Operands& o) {
  const int row = o.integer();
  ScrClrEol(row, o.integer());
}

void OpEdit(Operands&) {
  if (DbChk() && dbHasRecord(selectedArea)) MoxEdit();
}

void OpBrowse(Operands&) {
  if (DbChk() && dbHasRecord(selectedArea)) MoxBrowse();
}

void OpCreate(Operands& o) { MoxCreate(o.text()); }

void OpMdStru(Operands&) {
  if (!DbChk()) return;
  std::printf("MODIFY ERASES ALL DATA RECORDS ... PROCEED? (Y/N) ");
  const int key = ScrGetKey();
  const bool yes = key == 'Y' || key == 'y';
  std::printf("%c\n", yes ? 'Y' : 'N');
  if (yes) MoxModiStru();
}

void OpMdComm(Operands& o) {
  std::printf("%s", std::string(scrRows + 1, '\n').c_str());
  MoxEd(FnExt(o.content(), ".cmd"));
}

}  // namespace mox
