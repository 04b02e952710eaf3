// The steps that change records.

#include <cstdio>

#include "run/handlers.h"
#include "run/rundb.h"
#include "session/error.h"
#include "session/options.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

// Copies the record before the new one, deletion mark included, over it.
void _carry() {
  const int recno = dbRECNO(selectedArea);
  dbSkipTo(selectedArea, recno - 1);
  const std::string row = dbRow(selectedArea);
  dbSkipTo(selectedArea, recno);
  dbRepl0(selectedArea);
  dbSetRow(selectedArea, row);
  dbReplace(selectedArea);
}

}  // namespace

int OpAddRec(int depth, Stack& stk) {
  if (!DbChk() || dbAppend(selectedArea) != 0) return -1;
  if (StackInt(stk[depth - 1]) != 0 && g_opt[optCARRY] && dbRECNO(selectedArea) > 1) _carry();
  return -1;
}

int OpUpdRec0(int, Stack&) {
  if (DbChk()) dbRepl0(selectedArea);
  return 0;
}

int OpSetFld(int depth, Stack& stk) {
  constexpr int removed = 2;
  if (!DbChk()) return -removed;
  const int field = dbFno(selectedArea, stk[depth - 1]);
  if (field < 0) return -removed;
  std::string_view value = stk[depth - 2];
  if (dbTyp(selectedArea, field) == 'L' && GetTyp(value).type == 'L')
    value = L_FmVTLD(value) ? "T" : "F";
  dbSetVal(selectedArea, field, value);
  return -removed;
}

int OpUpdRec2(int, Stack&) {
  dbReplace(selectedArea);
  return 0;
}

int OpRemove(int, Stack&) {
  if (DbChk()) dbRemove(selectedArea);
  return 0;
}

// The indexes are built anew also behind a pack that broke off: it may have moved records. When
// one can't be built, all are closed: the old file leads to the wrong records.
int OpPack(int, Stack&) {
  if (!DbChk()) return 0;
  const bool packed = dbPack(selectedArea) == 0;
  const int failed = errnum;
  const auto message = errmsg;
  if (packed && g_opt[optTALK])
    std::printf("PACK COMPLETE, %05d RECORDS COPIED\n", dbRMAX(selectedArea));
  if (dbReindex(g_opt[optTALK]) != 0) dbClrIndex(selectedArea);
  if (packed) return 0;
  errnum = failed;
  errmsg = message;
  return 0;
}

}  // namespace mox
