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

// Adds a record that is a copy of the last one, deletion mark included.
void _carry() {
  dbSkipTo(selectedArea, dbRMAX(selectedArea));
  const std::string row = dbRow(selectedArea);
  if (dbBegin(selectedArea) != 0) return;
  dbSetRow(selectedArea, row);
  dbReplace(selectedArea);
}

}  // namespace

void OpAddRec(Operands& o) {
  if (!DbChk()) return;
  if (o.integer() != 0 && g_opt[optCARRY] && dbRMAX(selectedArea) > 0)
    _carry();
  else
    dbAppend(selectedArea);
}

void OpUpdRec0(Operands&) {
  if (DbChk() && dbHasRecord(selectedArea)) dbRepl0(selectedArea);
}

void OpSetFld(Operands& o) {
  if (!DbChk()) return;
  const Value& value = o.value();
  const int field = dbFno(selectedArea, o.text());
  if (field >= 0) dbSetFieldValue(selectedArea, field, value);
}

void OpUpdRec2(Operands&) {
  const bool shown = g_opt[optTALK] || g_opt[optECHO] || g_opt[optSTEP] || g_opt[optR1];
  if (shown)
    dbReplace(selectedArea);
  else
    dbReplaceLater(selectedArea);
}

void OpRemove(Operands&) {
  if (DbChk()) dbRemove(selectedArea);
}

// When an index can't be built, all are closed: the old file leads to the wrong records. The others
// then miss what changes next, so all stay marked.
void OpPack(Operands&) {
  if (!DbChk() || dbPack(selectedArea) != 0) return;
  if (g_opt[optTALK]) std::printf("PACK COMPLETE, %05d RECORDS COPIED\n", dbRMAX(selectedArea));
  if (dbReindex(g_opt[optTALK], true) == 0) return;
  dbStale(selectedArea);
  dbClrShared(selectedArea);
}

}  // namespace mox
