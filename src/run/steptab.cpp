// The language of the machine: every step that has a handler, with what the handler finds on the
// stack and what it leaves there, top at the right. c, d are the counts of what lies below them.
//
// The machine itself decides thirteen more words:
//   PUSH text   -> text             JP n                        LBL label, SETP ..., PUSHA label
//   POP n       a1 .. an ->         JPF n    v ->               are gone before a list runs
//   DUP n       -> copy of the      JPX      t1 .. tn n x ->    STOP, END   the run ends
//               n-th from the top   CALL n, RET                 : text      a statement's source
//   CMP op      a b -> logical

#include <algorithm>

#include "run/handlers.h"

namespace mox {

namespace {

// clang-format off
constexpr StepEntry steps[] = {
    // step       handler          before -> after
    {"=ABS", OpAbs},            // x 1 -> r
    {"=ASC", OpAsc},            // s 1 -> r
    {"=CHR", OpChr},            // x 1 -> r
    {"=COLOR", OpColor},        // x 1 -> r
    {"=DATE", OpDate},          // 0 -> r
    {"=DELETED", OpDELETED},    // 0 -> r
    {"=DIR", OpDir},            // s 1 -> r
    {"=EOF", OpEOF},            // 0 -> r
    {"=EVAL", OpEval},          // s -> r
    {"=INKEY", OpInKey},        // 0 -> r
    {"=INSTR", OpInStr},        // hay needle 2 -> r
    {"=INT", OpInt},            // x 1 -> r
    {"=LCASE", OpLCase},        // s 1 -> r
    {"=LEFT", OpLeft},          // s n 2 -> r
    {"=LEN", OpLen},            // s 1 -> r
    {"=MID", OpMid},            // s start len 3 -> r
    {"=RECNO", OpRECNO},        // 0 -> r
    {"=RIGHT", OpRight},        // s n 2 -> r
    {"=RND", OpRnd},            // [ignored] c -> r
    {"=RUN", OpRun},            // prog args [mode] c -> r
    {"=SDIR", OpSDir},          // s 1 -> r
    {"=SQR", OpSqr},            // x 1 -> r
    {"=STR", OpStr},            // x [width [dec]] c -> r
    {"=TRIM", OpTrim},          // s 1 -> r
    {"=TYPE3", OpType3},        // s 1 -> r
    {"=UCASE", OpUCase},        // s 1 -> r
    {"=VAL", OpVal},            // s 1 -> r
    {"ACCEPT", OpAccept},       // prompt -> text
    {"ADD", OpAdd},             // a b -> r
    {"ADDREC", OpAddRec},       // carry ->
    {"AND", OpAnd},             // a b -> logical
    {"APNDDBF", OpApndDbf},     // file for ->
    {"APNDSDF", OpApndSdf},     // file delimiter for ->
    {"BROWSE", OpBrowse},       // e1 .. ec c ->
    {"CANCEL", OpCancel},       //
    {"CLALL", OpClAll},         //
    {"CLEOL", OpClEol},         // row col ->
    {"CLGETS", OpClGets},       //
    {"CLMEM", OpClMem},         //
    {"CLS", OpCls},             //
    {"CONTINUE", OpContinue},   //
    {"COUNT1", OpCount1},       // start n for var ->
    {"CPYDEF", OpCpyDef},       // file f1 .. fc c ->
    {"CPYMOX", OpCpyMox},       // file start n f1 .. fc c for Y/N delimiter ->
    {"CREATE", OpCreate},       // file ->
    {"DEC", OpDec},             // x -> x-1
    {"DEL", OpDel},             // file ->
    {"DEL1", OpDel1},           // start n for ->
    {"DGOTO", OpDGoto},         // rec ->
    {"DIV", OpDiv},             // a b -> r
    {"DOCMD", OpDoCmd},         // file ->
    {"DSP", OpDsp},             // e1 .. ec c ->
    {"DSPDBF", OpDspDbf},       //
    {"DSPFN", OpDspFn},         // pattern ->
    {"DSPMEM", OpDspMem},       //
    {"DSPSTAT", OpDspStat},     //
    {"DSPSTR", OpDspStr},       //
    {"EDIT", OpEdit},           //
    {"FIND", OpFind},           // text ->
    {"GET", OpGet},             // row col name picture -> row col
    {"GETV", OpGetV},           // name [s1 [s2]] c -> value
    {"HELP", OpHelp},           // topic ->
    {"INC", OpInc},             // x -> x+1
    {"INPUT", OpInput},         // prompt -> text
    {"JOIN", OpJoin},           // file for f1 .. fc c ->
    {"LIST", OpList},           // e1 .. ec c start n for ->
    {"LOCATE", OpLocate},       // next for ->
    {"MDCOMM", OpMdComm},       // file ->
    {"MDSTRU", OpMdStru},       //
    {"MSAVE", OpMSave},         // file pattern flag ->
    {"MUL", OpMul},             // a b -> r
    {"NDX", OpNdx},             // key file ->
    {"NEG", OpNeg},             // a -> r
    {"NOT", OpNot},             // a -> logical
    {"OPT", OpOpt},             // name flag ->, or name text 2 ->
    {"OR", OpOr},               // a b -> logical
    {"PACK", OpPack},           //
    {"POW", OpPow},             // a b -> r
    {"PR", OpPr},               // v ->
    {"PRAT", OpPrAt},           // row col ->
    {"PRLN", OpPrLn},           //
    {"PUTV", OpPutV},           // value name [s1 [s2]] c ->
    {"QUIT", OpQuit},           //
    {"READ", OpRead},           //
    {"RECALL1", OpRecall1},     // start n for ->
    {"REINDEX", OpReNdx},       //
    {"RELEASE", OpRelease},     // p1 f1 .. pc fc c ->
    {"REMOVE", OpRemove},       //
    {"REN", OpRen},             // old new ->
    {"RESET", OpReset},         // name ->
    {"RESTORE", OpRestore},     // file pattern flag ->
    {"RETURN", OpReturn},       //
    {"S2N", OpS2N},             // text -> number
    {"SAY", OpSay},             // row col text -> row col
    {"SELECT", OpSelect},       // area ->
    {"SETFLD", OpSetFld},       // value field ->
    {"SETNDX", OpSetNdx},       // f1 .. fc c ->
    {"SKIP", OpSkip},           // n ->
    {"SORT", OpSort},           // field file order ->
    {"STORE", OpStore},         // value name [s1 [s2]] c ->
    {"SUB", OpSub},             // a b -> r
    {"SUM1", OpSum1},           // e1 .. ec c start n for t1 .. td d ->
    {"TOTAL", OpTotal},         // file key f1 .. fc c ->
    {"UPDATE", OpUpdate},       // file key a1 .. ac c t1 .. td d s1 .. se e ->
    {"UPDREC0", OpUpdRec0},     //
    {"UPDREC2", OpUpdRec2},     //
    {"USE", OpUse},             // file ->
    {"WAIT", OpWait},           // [name] c ->
};
// clang-format on

static_assert(std::is_sorted(std::begin(steps), std::end(steps),
                             [](const StepEntry& a, const StepEntry& b) {
                               return a.word < b.word;
                             }),
              "a word is looked up by binary search");

}  // namespace

const std::span<const StepEntry> g_steps = steps;

}  // namespace mox
