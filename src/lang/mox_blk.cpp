#include "lang/mox_blk.h"

#include "lang/source.h"
#include "session/misc.h"

namespace mox {

namespace {

int lvl = 0;          // open blocks
int btyp[maxBlocks];  // type of each
int bnum[maxBlocks];  // number of each
int bval[maxBlocks];  // IF: 2 behind an ELSE; DO CASE: branches so far
int bno = 1;          // number of the next block

}  // namespace

void BlkInit() {
  lvl = 0;
  bno = 1;
}

int BlkDepth() { return lvl; }

int BlkLoop() {
  for (int i = lvl - 1; i >= 0; --i)
    if (btyp[i] == blkLoop) return bnum[i];
  fail("no outer loop");
  return 0;
}

void BlkPush(int type) {
  if (lvl == maxBlocks) {
    fail("nesting error - too deep");
    return;
  }
  btyp[lvl] = type;
  bnum[lvl] = bno++;
  bval[lvl] = 0;
  ++lvl;
}

void BlkCheck(int type) {
  if (lvl == 0 || btyp[lvl - 1] != type) fail("nesting error");
}

void BlkPop(int type) {
  BlkCheck(type);
  if (lvl > 0) --lvl;
}

void BlkElse() {
  if (lvl > 0) bval[lvl - 1] = 2;
}

void BlkNext() {
  if (lvl > 0) ++bval[lvl - 1];
}

bool BlkHasElse() { return lvl == 0 || bval[lvl - 1] != 0; }

std::string BlkBL() { return BlkBL(lvl > 0 ? bnum[lvl - 1] : 0); }

std::string BlkBL(int number) { return StrFmt(number > 9999 ? "B%d." : "B%04d", number); }

std::string BlkLV() {
  const int n = lvl > 0 ? bval[lvl - 1] : 0;
  return StrFmt(n < 999 ? "%03d" : "%04d", n);
}

}  // namespace mox
