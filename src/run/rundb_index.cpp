// The steps that choose, build and search indexes.

#include <cstdio>

#include "run/handlers.h"
#include "run/rundb.h"
#include "session/error.h"
#include "session/options.h"
#include "session/value.h"
#include "store/db.h"
#include "store/ndx.h"

namespace mox {

void OpSetNdx(Operands& o) {
  dbClrIndex(selectedArea);
  if (!DbChk()) return;
  int slot = 0;
  for (const std::string& name : o.list()) {
    const int result = dbSetIndex(selectedArea, slot, name);
    if (result == ndxInUse)
      FileErr(result, FnExt(name, ".ndx"));
    else if (result != 0)
      SetErr("INDEX FILE CANNOT BE OPENED", "");
    if (result != 0) return;
    if (dbOutOfStep(selectedArea, slot++))
      SetErr("REINDEX IS NEEDED", dbNdxFn(selectedArea, slot - 1));
  }
}

void OpNdx(Operands& o) {
  if (!DbChk()) return;
  const std::string key = SourceText(o.text());
  dbIndexOnTo(key, o.content(), g_opt[optTALK]);
}

void OpReNdx(Operands&) {
  if (DbChk()) dbReindex(g_opt[optTALK]);
}

void OpFind(Operands& o) {
  if (!DbChk()) return;
  if (!dbINDEXED(selectedArea)) {
    SetErr("DATABASE IN USE IS NOT INDEXED", "");
    return;
  }
  const std::string_view text = o.content();
  const int length = g_opt[optEXACT] ? maxKeyLen : static_cast<int>(text.size());
  if (dbFind(selectedArea, length, text) < 1 && g_opt[optTALK] && errnum == errNone)
    std::printf("NO FIND\n");
}

}  // namespace mox
