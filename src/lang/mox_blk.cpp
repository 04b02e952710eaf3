#include "lang/mox_blk.h"

#include "session/misc.h"

namespace mox {

int BlkDepth(const CompileState& state) { return state.lvl; }

int BlkLoop(const CompileState& state) {
  for (int i = state.lvl - 1; i >= 0; --i)
    if (state.btyp[i] == blkLoop) return state.bnum[i];
  fail(state, "no outer loop");
  return 0;
}

void BlkPush(CompileState& state, BlockType type) {
  if (state.lvl == maxBlocks) {
    fail(state, "nesting error - too deep");
    return;
  }
  state.btyp[state.lvl] = type;
  state.bnum[state.lvl] = state.bno++;
  state.bval[state.lvl] = 0;
  ++state.lvl;
}

void BlkCheck(const CompileState& state, BlockType type) {
  if (state.lvl == 0 || state.btyp[state.lvl - 1] != type) fail(state, "nesting error");
}

void BlkPop(CompileState& state, BlockType type) {
  BlkCheck(state, type);
  if (state.lvl > 0) --state.lvl;
}

void BlkElse(CompileState& state) {
  if (state.lvl > 0) state.bval[state.lvl - 1] = 2;
}

void BlkNext(CompileState& state) {
  if (state.lvl > 0) ++state.bval[state.lvl - 1];
}

bool BlkHasElse(const CompileState& state) {
  return state.lvl == 0 || state.bval[state.lvl - 1] != 0;
}

std::string BlkBL(const CompileState& state) {
  return BlkBL(state.lvl > 0 ? state.bnum[state.lvl - 1] : 0);
}

std::string BlkBL(int number) { return StrFmt(number > 9999 ? "B%d." : "B%04d", number); }

std::string BlkLV(const CompileState& state) {
  const int n = state.lvl > 0 ? state.bval[state.lvl - 1] : 0;
  return StrFmt(n < 999 ? "%03d" : "%04d", n);
}

}  // namespace mox
