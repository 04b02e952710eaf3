// The handlers of the steps, by source file. steptab.cpp tells what each finds on the stack.
#pragma once

#include "run/run.h"

namespace mox {

// run_ops
int OpS2N(int depth, Stack& stk);
int OpAdd(int depth, Stack& stk);
int OpSub(int depth, Stack& stk);
int OpMul(int depth, Stack& stk);
int OpDiv(int depth, Stack& stk);
int OpNeg(int depth, Stack& stk);
int OpPow(int depth, Stack& stk);
int OpAnd(int depth, Stack& stk);
int OpOr(int depth, Stack& stk);
int OpNot(int depth, Stack& stk);
int OpInc(int depth, Stack& stk);
int OpDec(int depth, Stack& stk);

// run_var
int OpGetV(int depth, Stack& stk);
int OpPutV(int depth, Stack& stk);
int OpStore(int depth, Stack& stk);
int OpRelease(int depth, Stack& stk);

// run_nest
int OpDoCmd(int depth, Stack& stk);
int OpReturn(int depth, Stack& stk);
int OpCancel(int depth, Stack& stk);

// run_expr
int OpEval(int depth, Stack& stk);

// run_print
int OpPr(int depth, Stack& stk);
int OpPrAt(int depth, Stack& stk);
int OpPrLn(int depth, Stack& stk);

// run_input
int OpAccept(int depth, Stack& stk);
int OpInput(int depth, Stack& stk);
int OpWait(int depth, Stack& stk);

// run_func
int OpAbs(int depth, Stack& stk);
int OpInt(int depth, Stack& stk);
int OpSqr(int depth, Stack& stk);
int OpRnd(int depth, Stack& stk);
int OpInKey(int depth, Stack& stk);
int OpDir(int depth, Stack& stk);
int OpSDir(int depth, Stack& stk);
int OpRun(int depth, Stack& stk);
int OpType3(int depth, Stack& stk);

// run_func_text
int OpLen(int depth, Stack& stk);
int OpMid(int depth, Stack& stk);
int OpLeft(int depth, Stack& stk);
int OpRight(int depth, Stack& stk);
int OpInStr(int depth, Stack& stk);
int OpTrim(int depth, Stack& stk);
int OpUCase(int depth, Stack& stk);
int OpLCase(int depth, Stack& stk);
int OpChr(int depth, Stack& stk);
int OpAsc(int depth, Stack& stk);
int OpVal(int depth, Stack& stk);
int OpStr(int depth, Stack& stk);
int OpColor(int depth, Stack& stk);
int OpDate(int depth, Stack& stk);

// run_sys
int OpOpt(int depth, Stack& stk);
int OpReset(int depth, Stack& stk);
int OpQuit(int depth, Stack& stk);
int OpDel(int depth, Stack& stk);
int OpRen(int depth, Stack& stk);
int OpClMem(int depth, Stack& stk);
int OpClAll(int depth, Stack& stk);
int OpDspMem(int depth, Stack& stk);
int OpDspFn(int depth, Stack& stk);

// run_help
int OpHelp(int depth, Stack& stk);

// run_mem
int OpMSave(int depth, Stack& stk);
int OpRestore(int depth, Stack& stk);

// rundb
int OpUse(int depth, Stack& stk);
int OpSelect(int depth, Stack& stk);
int OpDGoto(int depth, Stack& stk);
int OpSkip(int depth, Stack& stk);
int OpEOF(int depth, Stack& stk);
int OpDELETED(int depth, Stack& stk);
int OpRECNO(int depth, Stack& stk);
int OpDsp(int depth, Stack& stk);
int OpDspStr(int depth, Stack& stk);
int OpDspDbf(int depth, Stack& stk);
int OpDspStat(int depth, Stack& stk);

// rundb_scan
int OpList(int depth, Stack& stk);
int OpDel1(int depth, Stack& stk);
int OpRecall1(int depth, Stack& stk);
int OpLocate(int depth, Stack& stk);
int OpContinue(int depth, Stack& stk);
int OpCount1(int depth, Stack& stk);
int OpSum1(int depth, Stack& stk);

// rundb_upd
int OpAddRec(int depth, Stack& stk);
int OpUpdRec0(int depth, Stack& stk);
int OpSetFld(int depth, Stack& stk);
int OpUpdRec2(int depth, Stack& stk);
int OpRemove(int depth, Stack& stk);
int OpPack(int depth, Stack& stk);

// rundb_index
int OpSetNdx(int depth, Stack& stk);
int OpNdx(int depth, Stack& stk);
int OpReNdx(int depth, Stack& stk);
int OpFind(int depth, Stack& stk);

// moxcopy, sdf
int OpCpyMox(int depth, Stack& stk);
int OpCpyDef(int depth, Stack& stk);
int OpApndDbf(int depth, Stack& stk);
int OpApndSdf(int depth, Stack& stk);

// moxsort, moxjoin, moxtotal, moxupdate
int OpSort(int depth, Stack& stk);
int OpJoin(int depth, Stack& stk);
int OpTotal(int depth, Stack& stk);
int OpUpdate(int depth, Stack& stk);

// runscr
int OpSay(int depth, Stack& stk);
int OpGet(int depth, Stack& stk);
int OpRead(int depth, Stack& stk);
int OpClGets(int depth, Stack& stk);
int OpCls(int depth, Stack& stk);
int OpClEol(int depth, Stack& stk);
int OpEdit(int depth, Stack& stk);
int OpBrowse(int depth, Stack& stk);
int OpCreate(int depth, Stack& stk);
int OpMdStru(int depth, Stack& stk);
int OpMdComm(int depth, Stack& stk);

}  // namespace mox
