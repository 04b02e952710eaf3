// The steps that print a value.

#include <algorithm>
#include <cstdio>

#include "run/handlers.h"
#include "run/run_out.h"
#include "session/number.h"
#include "session/value.h"

namespace mox {

int OpPr(int depth, Stack& stk) {
  SayTxt(-1, " ");
  SayVal(-1, stk[depth - 1]);
  SayTxt(-1, " ");
  if (outcol > outWidth) SayNL();
  return -1;
}

int OpPrAt(int depth, Stack& stk) {
  const int row = std::clamp(DblToInt(TxtToDbl(stk[depth - 2])), 1, 999);
  const int col = std::clamp(DblToInt(TxtToDbl(stk[depth - 1])), 1, 999);
  std::printf("\033[%d;%dH", row, col);
  outcol = col - 1;
  return -2;
}

int OpPrLn(int, Stack&) {
  SayNL();
  return 0;
}

}  // namespace mox
