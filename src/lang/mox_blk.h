// The block stack: the control blocks that are open while a list is compiled.
//
// A block may span source lines; what joins the steps of its statements are labels built from the
// block's number. Blocks are numbered from 1 in each compile, in the order in which they open.
//
//   type  block      labels (BL is "B%04d" of the number, LV "%03d" of the counter)
//   1     IF         BL 1   the false path: behind ELSE, or at ENDIF when there is no ELSE
//                    BL 2   ENDIF
//   3     loop       BL 001 the head, ahead of the condition
//                    BL 002 behind ENDDO
//   5     DO CASE    BL 000 the first branch; BL LV the branch behind the n-th
//                    BL 999 ENDCASE
//
// Labels stay distinct without a limit: a block number above 9999 is closed by a dot, and a
// counter of 999 and above takes at least four digits.
#pragma once

#include <string>

#include "lang/compile_state.h"

namespace mox {

enum BlockType { blkIf = 1, blkLoop = 3, blkCase = 5 };

int BlkDepth(const CompileState& state);
// Number of the nearest open loop, from the top down; without one it reports and returns 0.
int BlkLoop(const CompileState& state);

// The actions of the grammar. A wrong one reports through fail and does what it can.
void BlkPush(CompileState& state, BlockType type);
void BlkPop(CompileState& state, BlockType type);
void BlkCheck(const CompileState& state, BlockType type);  // reports unless such a block is on top
void BlkElse(CompileState& state);           // notes that the top block's false path has its label
void BlkNext(CompileState& state);           // counts a branch of the top block
bool BlkHasElse(const CompileState& state);  // also true with no block open

std::string BlkBL(const CompileState& state);  // of the top block, or of number 0
std::string BlkBL(int number);
std::string BlkLV(const CompileState& state);

}  // namespace mox
