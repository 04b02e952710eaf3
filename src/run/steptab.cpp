// The language of the machine: every step that has a handler, with its effect on the operand stack,
// in the form that operands.h tells, and what is said when the operands aren't there.
//
// The machine itself decides thirteen more words:
//   PUSH text   -> text             JP n                        LBL label, SETP ..., PUSHA label
//   POP n       a1 .. an ->         JPF n    v ->               are gone before a list runs
//   DUP n       -> copy of the      JPX      t1 .. tn n x ->    STOP, END   the run ends
//               n-th from the top   CALL n, RET                 : text      a statement's source
//   CMP op      a b -> logical
//
// No statement makes JPX, CALL, RET, DUP, CLEOL, DEC, PRAT and REMOVE.

#include <algorithm>

#include "run/handlers.h"
#include "run/run.h"

namespace mox {

namespace {

// clang-format off
constexpr StepEntry steps[] = {
    // step      handler      before -> after                                refusal
    {"=ABS",     OpAbs,       "(x) 1 -> r",                                 "ABS(n)"},
    {"=ASC",     OpAsc,       "(s) 1 -> r",                                 "ASC(str)"},
    {"=CHR",     OpChr,       "(x) 1 -> r",                                 "CHR(n)"},
    {"=COLOR",   OpColor,     "(x) 1 -> r",                                 "COLOR(n)"},
    {"=DATE",    OpDate,      "() 0 -> r",                                  "DATE()"},
    {"=DELETED", OpDELETED,   "() 0 -> r",                                  "DELETED()"},
    {"=DIR",     OpDir,       "(s) 1 -> r",                                 "DIR(afn)"},
    {"=EOF",     OpEOF,       "() 0 -> r",                                  "EOF()"},
    {"=EVAL",    OpEval,      "s -> r"},
    {"=INKEY",   OpInKey,     "() 0 -> r",                                  "INKEY()"},
    {"=INSTR",   OpInStr,     "(hay needle) 2 -> r",                        "INSTR(hay,needle)"},
    {"=INT",     OpInt,       "(x) 1 -> r",                                 "INT(n)"},
    {"=LCASE",   OpLCase,     "(s) 1 -> r",                                 "LCASE(str)"},
    {"=LEFT",    OpLeft,      "(s n) 2 -> r",                               "LEFT(str,len)"},
    {"=LEN",     OpLen,       "(s) 1 -> r",                                 "LEN(str)"},
    {"=MID",     OpMid,       "(s start len) 3 -> r",                       "MID(str,start,len)"},
    {"=RECNO",   OpRECNO,     "a* c -> r"},
    {"=RIGHT",   OpRight,     "(s n) 2 -> r",                               "RIGHT(str,len)"},
    {"=RND",     OpRnd,       "([ignored]) c -> r",                         "RND([ignored])"},
    {"=RUN",     OpRun,       "(prog args [mode]) c -> r",                  "RUN(prog,args[,mode])"},
    {"=SDIR",    OpSDir,      "(s) 1 -> r",                                 "SDIR(afn)"},
    {"=SQR",     OpSqr,       "(x) 1 -> r",                                 "SQR(n)"},
    {"=STR",     OpStr,       "(x [width] [dec]) c -> r",                   "STR(n[,width[,dec]])"},
    {"=TRIM",    OpTrim,      "(s) 1 -> r",                                 "TRIM(str)"},
    {"=TYPE3",   OpType3,     "(s) 1 -> r",                                 "TEST3(str)"},
    {"=UCASE",   OpUCase,     "(s) 1 -> r",                                 "UCASE(str)"},
    {"=VAL",     OpVal,       "(s) 1 -> r",                                 "VAL(str)"},
    {"ACCEPT",   OpAccept,    "prompt -> text"},
    {"ADD",      OpAdd,       "a b -> r",                                   "1"},
    {"ADDREC",   OpAddRec,    "carry ->"},
    {"AND",      OpAnd,       "a b -> logical",                             "1"},
    {"APNDDBF",  OpApndDbf,   "file for ->"},
    {"APNDSDF",  OpApndSdf,   "file delimiter for ->"},
    {"BROWSE",   OpBrowse,    "e* c ->"},
    {"CANCEL",   OpCancel,    "->"},
    {"CLALL",    OpClAll,     "->"},
    {"CLEOL",    OpClEol,     "row col ->"},
    {"CLGETS",   OpClGets,    "->"},
    {"CLMEM",    OpClMem,     "->"},
    {"CLS",      OpCls,       "->"},
    {"CONTINUE", OpContinue,  "->"},
    {"COUNT1",   OpCount1,    "start n for var ->"},
    {"CPYDEF",   OpCpyDef,    "file f* c ->"},
    {"CPYMOX",   OpCpyMox,    "file start n f* c for Y/N delimiter ->"},
    {"CREATE",   OpCreate,    "file ->"},
    {"DEC",      OpDec,       "x -> r"},
    {"DEL",      OpDel,       "file ->"},
    {"DEL1",     OpDel1,      "start n for ->"},
    {"DGOTO",    OpDGoto,     "rec ->"},
    {"DIV",      OpDiv,       "a b -> r",                                   "1"},
    {"DOCMD",    OpDoCmd,     "file ->"},
    {"DSP",      OpDsp,       "e* c ->"},
    {"DSPDBF",   OpDspDbf,    "->"},
    {"DSPFN",    OpDspFn,     "pattern ->"},
    {"DSPMEM",   OpDspMem,    "->"},
    {"DSPSTAT",  OpDspStat,   "->"},
    {"DSPSTR",   OpDspStr,    "->"},
    {"EDIT",     OpEdit,      "->"},
    {"FIND",     OpFind,      "text ->"},
    {"GET",      OpGet,       "row col name picture -> row col"},
    {"GETV",     OpGetV,      "(name [s1] [s2]) c -> value",                "2"},
    {"HELP",     OpHelp,      "topic ->"},
    {"INC",      OpInc,       "x -> r"},
    {"INPUT",    OpInput,     "prompt -> text"},
    {"JOIN",     OpJoin,      "file for f* c ->"},
    {"LIST",     OpList,      "e* c start n for ->"},
    {"LOCATE",   OpLocate,    "next for ->"},
    {"MDCOMM",   OpMdComm,    "file ->"},
    {"MDSTRU",   OpMdStru,    "->"},
    {"MSAVE",    OpMSave,     "file pattern flag ->"},
    {"MUL",      OpMul,       "a b -> r",                                   "1"},
    {"NDX",      OpNdx,       "key file ->"},
    {"NEG",      OpNeg,       "a -> r",                                     "1"},
    {"NOT",      OpNot,       "a -> logical",                               "1"},
    {"OPT",      OpOpt,       "name text? mode ->"},
    {"OR",       OpOr,        "a b -> logical",                             "1"},
    {"PACK",     OpPack,      "->"},
    {"POW",      OpPow,       "a b -> r",                                   "1"},
    {"PR",       OpPr,        "v ->"},
    {"PRAT",     OpPrAt,      "row col ->"},
    {"PRLN",     OpPrLn,      "->"},
    {"PUTV",     OpPutV,      "value (name [s1] [s2]) c ->",                "2"},
    {"QUIT",     OpQuit,      "->"},
    {"READ",     OpRead,      "->"},
    {"RECALL1",  OpRecall1,   "start n for ->"},
    {"REINDEX",  OpReNdx,     "->"},
    {"RELEASE",  OpRelease,   "pattern,flag* c ->"},
    {"REMOVE",   OpRemove,    "->"},
    {"REN",      OpRen,       "old new ->"},
    {"RESET",    OpReset,     "name ->"},
    {"RESTORE",  OpRestore,   "file pattern flag ->"},
    {"RETURN",   OpReturn,    "->"},
    {"S2N",      OpS2N,       "text -> number",                             "1"},
    {"SAY",      OpSay,       "row col text -> row col"},
    {"SELECT",   OpSelect,    "area ->"},
    {"SETFLD",   OpSetFld,    "value field ->"},
    {"SETNDX",   OpSetNdx,    "f* c ->"},
    {"SKIP",     OpSkip,      "n ->"},
    {"SORT",     OpSort,      "field file order ->"},
    {"STORE",    OpStore,     "value (name [s1] [s2]) c ->",                "2"},
    {"SUB",      OpSub,       "a b -> r",                                   "1"},
    {"SUM1",     OpSum1,      "e* c start n for t* d ->"},
    {"TOTAL",    OpTotal,     "file key f* c ->"},
    {"UPDATE",   OpUpdate,    "file key a* c t* d s* e ->"},
    {"UPDREC0",  OpUpdRec0,   "->"},
    {"UPDREC2",  OpUpdRec2,   "->"},
    {"USE",      OpUse,       "file ->"},
    {"WAIT",     OpWait,      "([name]) c ->"},
};
// clang-format on

static_assert(std::is_sorted(std::begin(steps), std::end(steps),
                             [](const StepEntry& a, const StepEntry& b) {
                               return a.word < b.word;
                             }),
              "a word is looked up by binary search");

constexpr std::string_view quietSteps[] = {
    "=ABS",  "=ASC",  "=CHR", "=DELETED", "=EOF",   "=INSTR", "=INT",   "=LCASE",
    "=LEFT", "=LEN",  "=MID", "=RECNO",   "=RIGHT", "=STR",   "=TRIM",  "=UCASE",
    "=VAL",  "ADD",   "AND",  "DGOTO",    "DIV",    "GETV",   "INC",    "MUL",
    "NEG",   "NOT",   "OR",   "POW",      "PUTV",   "S2N",    "SELECT", "SETFLD",
    "SKIP",  "STORE", "SUB",  "UPDREC0",  "UPDREC2"};

static_assert(std::is_sorted(std::begin(quietSteps), std::end(quietSteps)) &&
                  std::all_of(std::begin(quietSteps), std::end(quietSteps),
                              [](std::string_view word) {
                                return std::any_of(
                                    std::begin(steps), std::end(steps),
                                    [word](const StepEntry& e) { return e.word == word; });
                              }),
              "each is the word of a row, and is looked up by binary search");

}  // namespace

const std::span<const StepEntry> g_steps = steps;
const std::span<const std::string_view> g_quietSteps = quietSteps;

}  // namespace mox
