// The handlers of the steps, by source file. steptab.cpp tells what each finds on the stack.
#pragma once

#include "run/operands.h"

namespace mox {

// run_ops
void OpS2N(Operands& o);
void OpAdd(Operands& o);
void OpSub(Operands& o);
void OpMul(Operands& o);
void OpDiv(Operands& o);
void OpNeg(Operands& o);
void OpPow(Operands& o);
void OpAnd(Operands& o);
void OpOr(Operands& o);
void OpNot(Operands& o);
void OpInc(Operands& o);
void OpDec(Operands& o);

// run_var
void OpGetV(Operands& o);
void OpPutV(Operands& o);
void OpStore(Operands& o);
void OpRelease(Operands& o);

// run_nest
void OpDoCmd(Operands& o);
void OpReturn(Operands& o);
void OpCancel(Operands& o);

// run_expr
void OpEval(Operands& o);

// run_print
void OpPr(Operands& o);
void OpPrAt(Operands& o);
void OpPrLn(Operands& o);

// run_input
void OpAccept(Operands& o);
void OpInput(Operands& o);
void OpWait(Operands& o);

// run_func
void OpAbs(Operands& o);
void OpInt(Operands& o);
void OpSqr(Operands& o);
void OpRnd(Operands& o);
void OpInKey(Operands& o);
void OpDir(Operands& o);
void OpSDir(Operands& o);
void OpRun(Operands& o);
void OpType3(Operands& o);

// run_func_text
void OpLen(Operands& o);
void OpMid(Operands& o);
void OpLeft(Operands& o);
void OpRight(Operands& o);
void OpInStr(Operands& o);
void OpTrim(Operands& o);
void OpUCase(Operands& o);
void OpLCase(Operands& o);
void OpChr(Operands& o);
void OpAsc(Operands& o);
void OpVal(Operands& o);
void OpStr(Operands& o);
void OpColor(Operands& o);
void OpDate(Operands& o);

// run_sys
void OpOpt(Operands& o);
void OpReset(Operands& o);
void OpQuit(Operands& o);
void OpDel(Operands& o);
void OpRen(Operands& o);
void OpClMem(Operands& o);
void OpClAll(Operands& o);
void OpDspMem(Operands& o);
void OpDspFn(Operands& o);

// run_help
void OpHelp(Operands& o);

// run_mem
void OpMSave(Operands& o);
void OpRestore(Operands& o);

// rundb
void OpUse(Operands& o);
void OpSelect(Operands& o);
void OpDGoto(Operands& o);
void OpSkip(Operands& o);
void OpEOF(Operands& o);
void OpDELETED(Operands& o);
void OpRECNO(Operands& o);
void OpDsp(Operands& o);
void OpDspStr(Operands& o);
void OpDspDbf(Operands& o);
void OpDspStat(Operands& o);

// rundb_scan
void OpList(Operands& o);
void OpDel1(Operands& o);
void OpRecall1(Operands& o);
void OpLocate(Operands& o);
void OpContinue(Operands& o);
void OpCount1(Operands& o);
void OpSum1(Operands& o);

// rundb_upd
void OpAddRec(Operands& o);
void OpUpdRec0(Operands& o);
void OpSetFld(Operands& o);
void OpUpdRec2(Operands& o);
void OpRemove(Operands& o);
void OpPack(Operands& o);

// rundb_index
void OpSetNdx(Operands& o);
void OpNdx(Operands& o);
void OpReNdx(Operands& o);
void OpFind(Operands& o);

// moxcopy, sdf
void OpCpyMox(Operands& o);
void OpCpyDef(Operands& o);
void OpApndDbf(Operands& o);
void OpApndSdf(Operands& o);

// moxsort, moxjoin, moxtotal, moxupdate
void OpSort(Operands& o);
void OpJoin(Operands& o);
void OpTotal(Operands& o);
void OpUpdate(Operands& o);

// runscr
void OpSay(Operands& o);
void OpGet(Operands& o);
void OpRead(Operands& o);
void OpClGets(Operands& o);
void OpCls(Operands& o);
void OpClEol(Operands& o);
void OpEdit(Operands& o);
void OpBrowse(Operands& o);
void OpCreate(Operands& o);
void OpMdStru(Operands& o);
void OpMdComm(Operands& o);

}  // namespace mox
