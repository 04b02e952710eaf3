// The functions of numbers, and those that ask the host or the machine.

#include <cmath>
#include <random>

#include "host/host.h"
#include "run/handlers.h"
#include "run/run_expr.h"
#include "session/error.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/value.h"

namespace mox {

namespace {

constexpr size_t maxTypeText = 200;  // characters of a value whose type is asked for
constexpr int rndBits = 15;

// A directory that is being listed, one name a call.
struct Listing {
  Lines names;
  size_t next = 0;
};
Listing _dirlist, _sdirlist;

// A pattern begins a new listing; an empty one goes on with the last.
void _nextName(Operands& o, Listing& listing, Lines (*list)(const std::string&)) {
  const std::string pattern(o.content());
  if (!pattern.empty()) listing = {list(pattern), 0};
  const bool more = listing.next < listing.names.size();
  o.result(Value::ofContent(more ? listing.names[listing.next++] : ""));
}

}  // namespace

void OpAbs(Operands& o) {
  int length = 0, decimals = 0;
  const double x = N_FmVTLD(o.value(), length, decimals);
  o.result(N_ToVTLD(std::fabs(x), length, decimals));
}

void OpInt(Operands& o) {
  o.result(N_ToVTLD(std::trunc(o.number()) + 0.0, -1, 0));  // the sum turns -0 into 0
}

void OpSqr(Operands& o) {
  constexpr int sqrLength = 11;
  int length = 0, decimals = 0;
  const double x = N_FmVTLD(o.value(), length, decimals);
  if (x < 0) {
    SetErr("SQR()", "OUT OF BOUNDS");
    return o.keep();
  }
  o.result(N_ToVTLD(std::sqrt(x), sqrLength, decimals));
}

void OpRnd(Operands& o) {
  // Never seeded: each session, on every host, gives the same sequence.
  static std::mt19937 generator;
  constexpr int most = (1 << rndBits) - 1;
  o.result(N_ToVTLD(static_cast<double>(generator() >> (32 - rndBits)) / most, 8, 6));
}

void OpInKey(Operands& o) {
  const int key = _kbhit() ? _getch() : keyEnd;
  o.result(Value::ofContent(key > 0 ? std::string(1, static_cast<char>(key)) : ""));
}

void OpDir(Operands& o) { _nextName(o, _dirlist, OS_GetFileList); }

void OpSDir(Operands& o) { _nextName(o, _sdirlist, OS_GetDirList); }

void OpRun(Operands& o) {
  constexpr int windowNormal = 1;
  const std::string program(o.content()), args(o.content());
  const int mode = o.more() ? o.integer() : windowNormal;
  o.result(N_ToVTLD(OS_RunProgWait(program, args, mode), 6, 0));
}

void OpType3(Operands& o) {
  const ErrorSlot before = TakeErr();
  Value value;
  char type = 'U';
  if (EvalExpr(o.content(), maxTypeText, value) == 0 && errnum == errNone) {
    type = value.typ().type;
    if (type != 'C' && type != 'N') type = 'L';
  }
  PutErr(before);
  o.result(Value::ofContent(std::string(1, type)));
}

}  // namespace mox
