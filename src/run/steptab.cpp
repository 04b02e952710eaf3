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

constexpr StepEntry steps[] = {
    // step       handler          before -> after
    {"=DELETED", OpDELETED},    // 0 -> r
    {"=EOF", OpEOF},            // 0 -> r
    {"=EVAL", OpEval},          // s -> r
    {"=RECNO", OpRECNO},        // 0 -> r
    {"ADD", OpAdd},             // a b -> r
    {"ADDREC", OpAddRec},       // carry ->
    {"AND", OpAnd},             // a b -> logical
    {"BROWSE", OpBrowse},       // e1 .. ec c ->
    {"CANCEL", OpCancel},       //
    {"CLEOL", OpClEol},         // row col ->
    {"CLGETS", OpClGets},       //
    {"CLS", OpCls},             //
    {"CONTINUE", OpContinue},   //
    {"COUNT1", OpCount1},       // start n for var ->
    {"CREATE", OpCreate},       // file ->
    {"DEC", OpDec},             // x -> x-1
    {"DEL1", OpDel1},           // start n for ->
    {"DGOTO", OpDGoto},         // rec ->
    {"DIV", OpDiv},             // a b -> r
    {"DOCMD", OpDoCmd},         // file ->
    {"DSP", OpDsp},             // e1 .. ec c ->
    {"DSPDBF", OpDspDbf},       //
    {"DSPSTAT", OpDspStat},     //
    {"DSPSTR", OpDspStr},       //
    {"EDIT", OpEdit},           //
    {"GET", OpGet},             // row col name picture -> row col
    {"GETV", OpGetV},           // name [s1 [s2]] c -> value
    {"INC", OpInc},             // x -> x+1
    {"LIST", OpList},           // e1 .. ec c start n for ->
    {"LOCATE", OpLocate},       // next for ->
    {"MDCOMM", OpMdComm},       // file ->
    {"MDSTRU", OpMdStru},       //
    {"MUL", OpMul},             // a b -> r
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
    {"RELEASE", OpRelease},     // p1 f1 .. pc fc c ->
    {"REMOVE", OpRemove},       //
    {"RETURN", OpReturn},       //
    {"S2N", OpS2N},             // text -> number
    {"SAY", OpSay},             // row col text -> row col
    {"SELECT", OpSelect},       // area ->
    {"SETFLD", OpSetFld},       // value field ->
    {"SETNDX", OpSetNdx},       // f1 .. fc c ->
    {"SKIP", OpSkip},           // n ->
    {"STORE", OpStore},         // value name [s1 [s2]] c ->
    {"SUB", OpSub},             // a b -> r
    {"SUM1", OpSum1},           // e1 .. ec c start n for t1 .. td d ->
    {"UPDREC0", OpUpdRec0},     //
    {"UPDREC2", OpUpdRec2},     //
    {"USE", OpUse},             // file ->
};

static_assert(std::is_sorted(std::begin(steps), std::end(steps),
                             [](const StepEntry& a, const StepEntry& b) { return a.word < b.word; }),
              "a word is looked up by binary search");

}  // namespace

const std::span<const StepEntry> g_steps = steps;

}  // namespace mox
