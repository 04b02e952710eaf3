// The functions of numbers, and those that ask the host or the machine.

#include "run/run_func.h"

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
int _nextName(int depth, Stack& stk, Listing& listing, Lines (*list)(const std::string&),
              const char* usage) {
  std::string* const arg = Args(depth, stk, 1, 1, usage);
  if (!arg) return 0;
  const std::string pattern = qs2s(arg[0]);
  if (!pattern.empty()) listing = {list(pattern), 0};
  const bool more = listing.next < listing.names.size();
  arg[0] = s2qs(more ? std::string_view(listing.names[listing.next++]) : "");
  return -1;
}

}  // namespace

int ArgCount(int depth, const Stack& stk) { return StackInt(stk[depth - 1]); }

std::string* Args(int depth, Stack& stk, int least, int most, const char* usage) {
  const int count = ArgCount(depth, stk);
  if (count >= least && count <= most && count < depth) return &stk[depth - 1 - count];
  ArgErr(usage);
  return nullptr;
}

int OpAbs(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "ABS(n)");
  if (!arg) return 0;
  int length = 0, decimals = 0;
  const double x = N_FmVTLD(arg[0], length, decimals);
  arg[0] = N_ToVTLD(std::fabs(x), length, decimals);
  return -1;
}

int OpInt(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "INT(n)");
  if (!arg) return 0;
  arg[0] = N_ToVTLD(std::trunc(TxtToDbl(arg[0])) + 0.0, -1, 0);  // the sum turns -0 into 0
  return -1;
}

int OpSqr(int depth, Stack& stk) {
  constexpr int sqrLength = 11;
  std::string* const arg = Args(depth, stk, 1, 1, "SQR(n)");
  if (!arg) return 0;
  int length = 0, decimals = 0;
  const double x = N_FmVTLD(arg[0], length, decimals);
  if (x < 0) {
    SetErr("SQR()", "OUT OF BOUNDS");
    return 0;
  }
  arg[0] = N_ToVTLD(std::sqrt(x), sqrLength, decimals);
  return -1;
}

int OpRnd(int depth, Stack& stk) {
  // Never seeded: each session, on every host, gives the same sequence.
  static std::mt19937 generator;
  constexpr int most = (1 << rndBits) - 1;
  std::string* const arg = Args(depth, stk, 0, 1, "RND([ignored])");
  if (!arg) return 0;
  const int count = ArgCount(depth, stk);
  arg[0] = N_ToVTLD(static_cast<double>(generator() >> (32 - rndBits)) / most, 8, 6);
  return -count;
}

int OpInKey(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 0, 0, "INKEY()");
  if (!arg) return 0;
  const int key = _kbhit() ? _getch() : keyEnd;
  arg[0] = s2qs(key > 0 ? std::string(1, static_cast<char>(key)) : "");
  return 0;
}

int OpDir(int depth, Stack& stk) {
  return _nextName(depth, stk, _dirlist, OS_GetFileList, "DIR(afn)");
}

int OpSDir(int depth, Stack& stk) {
  return _nextName(depth, stk, _sdirlist, OS_GetDirList, "SDIR(afn)");
}

int OpRun(int depth, Stack& stk) {
  constexpr int windowNormal = 1;
  std::string* const arg = Args(depth, stk, 2, 3, "RUN(prog,args[,mode])");
  if (!arg) return 0;
  const int count = ArgCount(depth, stk);
  const int mode = count == 3 ? StackInt(arg[2]) : windowNormal;
  arg[0] = N_ToVTLD(OS_RunProgWait(qs2s(arg[0]), qs2s(arg[1]), mode), 6, 0);
  return -count;
}

int OpType3(int depth, Stack& stk) {
  std::string* const arg = Args(depth, stk, 1, 1, "TEST3(str)");
  if (!arg) return 0;
  const int before = errnum;
  std::string value;
  char type = 'U';
  if (EvalExpr(qs2s(arg[0]), maxTypeText, value) == 0 && errnum == errNone) {
    type = GetTyp(value).type;
    if (type != 'C' && type != 'N') type = 'L';
  }
  errnum = before;
  arg[0] = s2qs(std::string(1, type));
  return -1;
}

}  // namespace mox
