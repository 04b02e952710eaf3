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

int OpSetNdx(int depth, Stack& stk) {
  const int n = StackInt(stk[depth - 1]);
  const int removed = n + 1;
  dbClrIndex(selectedArea);
  if (!DbChk()) return -removed;
  for (int i = 0; i < n; ++i) {
    if (dbSetIndex(selectedArea, i, stk[depth - removed + i]) == 0) continue;
    SetErr("INDEX FILE CANNOT BE OPENED", "");
    break;
  }
  return -removed;
}

int OpNdx(int depth, Stack& stk) {
  if (DbChk()) dbIndexOnTo(SourceText(stk[depth - 2]), qs2s(stk[depth - 1]), g_opt[optTALK]);
  return -2;
}

int OpReNdx(int, Stack&) {
  if (DbChk()) dbReindex(g_opt[optTALK]);
  return 0;
}

int OpFind(int depth, Stack& stk) {
  if (!DbChk()) return -1;
  if (!dbINDEXED(selectedArea)) {
    SetErr("DATABASE IN USE IS NOT INDEXED", "");
    return -1;
  }
  const std::string text = qs2s(stk[depth - 1]);
  const int length = g_opt[optEXACT] ? maxKeyLen : static_cast<int>(text.size());
  if (dbFind(selectedArea, length, text) < 1 && g_opt[optTALK] && errnum == errNone)
    std::printf("NO FIND\n");
  return -1;
}

}  // namespace mox
