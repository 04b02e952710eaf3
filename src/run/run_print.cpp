// The steps that print a value.

#include <algorithm>
#include <cstdio>

#include "run/handlers.h"
#include "run/run_out.h"
#include "session/number.h"
#include "session/value.h"

namespace mox {

void OpPr(Operands& o) {
  SayTxt(-1, " ");
  SayVal(-1, o.value());
  SayTxt(-1, " ");
  if (outcol > outWidth) SayNL();
}

void OpPrAt(Operands& o) {
  const int row = std::clamp(o.integer(), 1, 999);
  const int col = std::clamp(o.integer(), 1, 999);
  std::printf("\033[%d;%dH", row, col);
  outcol = col - 1;
}

void OpPrLn(Operands&) { SayNL(); }

}  // namespace mox
