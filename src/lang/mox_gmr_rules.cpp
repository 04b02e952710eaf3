// The language, one row an alternative, in the order in which the rows are tried.

#include "lang/mox_gmr.h"

namespace mox {

namespace {

using enum Rule;

constexpr TokenKind ID = tokIdentifier;
constexpr TokenKind NUM = tokNumber;
constexpr TokenKind STR = tokString;
constexpr TokenKind KW = tokKeyword;

constexpr int many = maxTokens;

Item opt(Item item, const char* absent = "", std::vector<const char*> endWords = {}) {
  item.atLeast = 0;
  item.absent = absent;
  item.endWords = std::move(endWords);
  return item;
}

Item rep(Item item) {
  item.atLeast = 0;
  item.atMost = many;
  return item;
}

Item some(Item item) {
  item.atMost = many;
  return item;
}

}  // namespace

// clang-format off
const std::vector<Alternative> g_grammar = {
    // A line is statements separated by ":".
    {line, {statement, rep(stmnts2)}, "$1$2"},
    {stmnts2, {":", statement}, "$2"},

    // Blocks and control.
    {statement, {"IF", expr, "THEN", statement, rep(stmnts2)},
        "{push if}:*\n$2JPF {BL}1\n$4$5LBL {BL}1\n{pop if}"},
    {statement, {"IF", expr}, "{push if}:*\n$2JPF {BL}1\n"},
    {statement, {"ELSE"}, ":*\nJP {BL}2\nLBL {BL}1\n:*\n{else}"},
    {statement, {"ENDIF", rep(any)}, "{check if}{endthen}LBL {BL}2\n:*\n{pop if}"},
    {statement, {"DO", "WHILE", expr}, "{push loop}LBL {BL}001\n:*\n$3JPF {BL}002\n"},
    {statement, {"LOOP"}, ":*\nJP {loop}001\n"},
    {statement, {"ENDDO", rep(any)}, ":*\nJP {BL}001\nLBL {BL}002\n:*\n{pop loop}"},
    {statement, {"DO", "CASE"}, "{push case}:*\nJP {BL}000\n"},
    {statement, {"CASE", expr}, ":*\nJP {BL}999\nLBL {BL}{LV}\n{next}:*\n$2JPF {BL}{LV}\n"},
    {statement, {"OTHERWISE"}, ":*\nJP {BL}999\nLBL {BL}{LV}\n{next}:*\n"},
    {statement, {"ENDCASE"}, "LBL {BL}{LV}\nLBL {BL}999\n:*\n{pop case}"},
    {statement, {"DO", ID}, ":*\nPUSH $2\nDOCMD\n"},

    {statement, {"?", print2}, ":*\n$2"},
    {statement, {"@", expr, ",", expr, at2}, ":*\n$2$4$5"},
    {statement, {"ACCEPT", opt(expr, "PUSH \n", {"TO"}), "TO", ID},
        ":*\n$2ACCEPT\nPUSH $4\nPUSH 1\nPUTV\n"},
    {statement, {"APPEND", apnd2}, ":*\n$2"},
    {statement, {"BROWSE"}, ":*\nPUSH 0\nBROWSE\n"},
    {statement, {"CANCEL"}, ":*\nCANCEL\n"},
    {statement, {"CLEAR", clr2}, ":*\n$2"},
    {statement, {"CONTINUE"}, ":*\nCONTINUE\n"},
    {statement, {"COPY", "TO", fn, copy2}, ":*\nPUSH $3\n$4"},
    {statement, {"COUNT", scopeA, forexprX, opt(tovar, "PUSH -\n")}, ":*\n$2$3$4COUNT1\n"},
    {statement, {"CREATE", fn}, ":*\nPUSH $2\nCREATE\n"},
    {statement, {"DELETE", "FILE", ID}, ":*\nPUSH $3\nDEL\n"},
    {statement, {"DELETE", opt(scope, "PUSH 0\n=RECNO()\nPUSH 1\n"), forexprX}, ":*\n$2$3DEL1\n"},
    {statement, {"DISPLAY", display2}, ":*\n$2"},
    {statement, {"EDIT", opt(expr, "PUSH -2\n")}, ":*\n$2DGOTO\nEDIT\n"},
    {statement, {"END"}, "END\n"},
    {statement, {"ERASE"}, ":*\nCLS\n"},
    {statement, {"FIND", expr}, ":*\n$2FIND\n"},
    {statement, {"GOTO", go2}, ":*\n$2"},
    {statement, {"GO", go2}, ":*\n$2"},
    {statement, {"HELP", ID, rep(help2)}, ":*\nPUSH $2$3\nHELP\n"},
    {statement, {"HELP", "?", "?"}, ":*\nPUSH ??\nHELP\n"},
    {statement, {"HELP", "?"}, ":*\nPUSH ?\nHELP\n"},
    {statement, {"HELP", "@"}, ":*\nPUSH @\nHELP\n"},
    {statement, {"HELP"}, ":*\nPUSH MAIN\nHELP\n"},
    {statement, {"INDEX", "ON", expr, "TO", fn}, ":*\nPUSH {src 3}\nPUSH $5\nNDX\n"},
    {statement, {"INPUT", opt(expr, "PUSH \n", {"TO"}), "TO", ID},
        ":*\n$2INPUT\nPUSH $4\nPUSH 1\nSTORE\n"},
    {statement, {"JOIN", "TO", fn, "FOR", expr, fieldlst}, ":*\nPUSH $3\nPUSH {src 5}\n$6JOIN\n"},
    {statement, {"LIST", opt(elstX, "PUSH 0\n", {"NEXT", "RECORD", "ALL", "FOR"}), scopeA, forexprX},
        ":*\n$2$3$4LIST\n"},
    {statement, {"LOCATE", opt(next, "PUSH 0\n"), forexprX}, ":*\n$2$3LOCATE\n"},
    {statement, {"MODIFY", "COMMAND", fn}, ":*\nPUSH $3\nMDCOMM\n"},
    {statement, {"MODIFY", "STRUCTURE"}, ":*\nMDSTRU\n"},
    {statement, {"PACK"}, ":*\nPACK\n"},
    {statement, {"QUIT"}, ":*\nQUIT\n"},
    {statement, {"READ"}, ":*\nREAD\n"},
    {statement, {"RECALL", opt(scope, "PUSH 0\n=RECNO()\nPUSH 1\n"), forexprX},
        ":*\n$2$3RECALL1\n"},
    {statement, {"REINDEX"}, ":*\nREINDEX\n"},
    {statement, {"RELEASE", memlst}, ":*\n$2RELEASE\n"},
    {statement, {"RENAME", expr, "TO", expr}, ":*\n$2$4REN\n"},
    {statement, {"REPLACE", fwv, rep(fwvs)}, ":*\nUPDREC0\n$2$3UPDREC2\n"},
    {statement, {"RESET", reset2}, ":*\n$2RESET\n"},
    {statement, {"RESTORE", "FROM", fn, mem}, ":*\nPUSH $3\n$4RESTORE\n"},
    {statement, {"RETURN"}, ":*\nRETURN\n"},
    {statement, {"SAVE", "TO", fn, mem}, ":*\nPUSH $3\n$4MSAVE\n"},
    {statement, {"SELECT", ID}, ":*\nPUSH $2\nSELECT\n"},
    {statement, {"SET", "INDEX", "TO", filelist}, ":*\n$4SETNDX\n"},
    {statement, {"SET", "INDEX", "TO"}, ":*\nPUSH 0\nSETNDX\n"},
    {statement, {"SET", "DATE", opt2}, ":*\nPUSH $2\n$3OPT\n"},
    {statement, {"SET", "DELETED", opt2}, ":*\nPUSH $2\n$3OPT\n"},
    {statement, {"SET", ID, opt2}, ":*\nPUSH $2\n$3OPT\n"},
    {statement, {"SKIP", opt(expr, "PUSH 1\n")}, ":*\n$2SKIP\n"},
    {statement, {"SORT", "ON", ID, "TO", fn, sort2}, ":*\nPUSH $3\nPUSH $5\n$6SORT\n"},
    {statement, {"STOP"}, "STOP\n"},
    {statement, {"STORE", expr, "TO", lval}, ":*\n$2$4STORE\n"},
    {statement, {"SUM", elstX, scopeA, forexprX, opt(tovars, "PUSH 0\n")}, ":*\n$2$3$4$5SUM1\n"},
    {statement, {"TOTAL", "TO", fn, "ON", ID, fieldlst}, ":*\nPUSH $3\nPUSH $5\n$6TOTAL\n"},
    {statement, {"UPDATE", "FROM", fn, "ON", ID, upd2a, upd2b},
        ":*\nPUSH $3\nPUSH $5\n$6$7UPDATE\n"},
    {statement, {"USE", ID, "INDEX", filelist}, ":*\nPUSH $2\nUSE\n$4SETNDX\n"},
    {statement, {"USE", ID}, ":*\nPUSH $2\nUSE\nPUSH 0\nSETNDX\n"},
    {statement, {"USE"}, ":*\nPUSH -\nUSE\n"},
    {statement, {"WAIT", wait2}, ":*\n$2"},
    {statement, {NUM}, ":*\nPUSH $1\nDGOTO\n"},

    // Parts of single statements.
    {print2, {"?", expr}, "$2PR\n"},
    {print2, {expr}, "$1PR\nPRLN\n"},
    {print2, {}, "PRLN\n"},

    {go2, {"TOP"}, "PUSH 0\nDGOTO\n"},
    {go2, {"BOTTOM"}, "PUSH -1\nDGOTO\n"},
    {go2, {expr}, "$1DGOTO\n"},
    {next, {"NEXT"}, "PUSH 1\n"},

    {display2, {"MEMORY"}, "DSPMEM\n"},
    {display2, {"STRUCTURE"}, "DSPSTR\n"},
    {display2, {"STATUS"}, "DSPSTAT\n"},
    {display2, {"FILES", "LIKE", some(patn)}, "PUSH $3\nDSPFN\n"},
    {display2, {"FILES"}, "DSPDBF\n"},
    {display2, {elst}, "$1DSP\n"},
    {display2, {}, "PUSH 0\nDSP\n"},

    {apnd2, {"FROM", fn, "SDF", delimited, forexprX}, "PUSH $2\n$4$5APNDSDF\n"},
    {apnd2, {"FROM", fn, forexprX}, "PUSH $2\n$3APNDDBF\n"},
    {apnd2, {"BLANK"}, "PUSH 0\nADDREC\n"},
    {apnd2, {}, "PUSH 1\nADDREC\nEDIT\n"},
    {fwv, {ID, "WITH", expr}, "$3PUSH $1\nSETFLD\n"},
    {fwvs, {",", fwv}, "$2"},

    {copy2, {"STRUCTURE", fieldlst}, "$2CPYDEF\n"},
    {copy2, {scopeA, fieldlst, forexprX, sdf, delimited}, "$1$2$3$4$5CPYMOX\n"},
    {sort2, {"ASCENDING"}, "PUSH -1\n"},
    {sort2, {"DESCENDING"}, "PUSH 0\n"},
    {sort2, {}, "PUSH -1\n"},
    {upd2a, {"ADD", ids}, "$2"},
    {upd2a, {}, "PUSH 0\n"},
    {upd2b, {"REPLACE", ids, "WITH", ids}, "$2$4"},
    {upd2b, {}, "PUSH 0\nPUSH 0\n"},
    {reset2, {ID}, "PUSH $1\n"},
    {reset2, {}, "PUSH *\n"},

    {at2, {atsay, atget}, "$1$2"},
    {atsay, {"SAY", expr}, "$2SAY\n"},
    {atsay, {}, "PUSH \nSAY\n"},
    {atget, {"GET", ID, picture}, "PUSH $2\n$3GET\nPOP 2\n"},
    {atget, {}, "POP 2\n"},
    {picture, {"PICTURE", STR}, "PUSH $2\n"},
    {picture, {}, "PUSH \n"},
    {wait2, {"TO", ID}, "PUSH $2\nPUSH 1\nWAIT\n"},
    {wait2, {}, "PUSH 0\nWAIT\n"},
    {clr2, {"MEMORY"}, "CLMEM\n"},
    {clr2, {"GETS"}, "CLGETS\n"},
    {clr2, {}, "CLALL\n"},
    {help2, {ID}, "-$1"},
    {help2, {NUM}, "-$1"},

    {opt2, {"ON"}, "PUSH 1\n"},
    {opt2, {"OFF"}, "PUSH 0\n"},
    {opt2, {"TO", STR}, "PUSH $2\nPUSH 2\n"},
    {opt2, {"TO", any, rep(any)}, "PUSH $2$3\nPUSH 2\n"},
    {opt2, {"TO"}, "PUSH \nPUSH 2\n"},

    // Names. A list leaves its elements and, on top, their number.
    {fn, {ID}, "$1"},
    {fn2, {",", fn}, "PUSH $2\n"},
    {filelist, {fn, rep(fn2)}, "PUSH $1\n$2PUSH {count 2}\nINC\n"},
    {ids, {ID, rep(id2)}, "PUSH $1\n$2PUSH {count 2}\nINC\n"},
    {id2, {",", ID}, "PUSH $2\n"},
    {fieldlst, {"FIELDS", ids}, "$2"},
    {fieldlst, {}, "PUSH 0\n"},
    {tovar, {"TO", ID}, "PUSH $2\n"},
    {tovars, {"TO", ids}, "$2"},

    // Scopes leave a start record and a count. 99999 is more records than a table holds.
    {scope, {"NEXT", expr}, "PUSH 0\n=RECNO()\n$2"},
    {scope, {"RECORD", expr}, "$2PUSH 1\n"},
    {scope, {"ALL"}, "PUSH 0\nDGOTO\nPUSH 0\n=RECNO()\nPUSH 99999\n"},
    {scopeA, {scope}, "$1"},
    {scopeA, {}, "PUSH 0\nDGOTO\nPUSH 0\n=RECNO()\nPUSH 99999\n"},

    // A condition stays source text; the handler compiles it.
    {forexprX, {"FOR", expr}, "PUSH {src 2}\n"},
    {forexprX, {}, "PUSH 1=1\n"},

    // Lists of values, evaluated at once, and of sources, evaluated for each record.
    {elst, {expr, rep(elst2)}, "$1$2PUSH {count 2}\nINC\n"},
    {elst2, {",", expr}, "$2"},
    {elstX, {exprX, rep(elstX2)}, "$1$2PUSH {count 2}\nINC\n"},
    {elstX2, {",", exprX}, "$2"},
    {exprX, {expr}, "PUSH {src 1}\n"},

    // Patterns of names: each a pattern and a flag, -1 for the names that fit, 0 for the others.
    // Nothing at all means every name, but not behind or ahead of a comma.
    {patn, {ID}, "$1"},
    {patn, {NUM}, "$1"},
    {patn, {"*"}, "$1"},
    {patn, {"?"}, "$1"},
    {patn, {"."}, "$1"},
    {patn, {":"}, "$1"},
    {patn, {"-"}, "$1"},
    {memPatn, {"ALL", "LIKE", some(patn)}, "PUSH $3\nPUSH -1\n"},
    {memPatn, {"ALL", "EXCEPT", some(patn)}, "PUSH $3\nPUSH 0\n"},
    {memPatn, {"ALL"}, "PUSH *\nPUSH -1\n"},
    {memPatn, {some(patn)}, "PUSH $1\nPUSH -1\n"},
    {mem, {memPatn}, "$1"},
    {mem, {}, "PUSH *\nPUSH -1\n"},
    {memlst, {memPatn, rep(cmem)}, "$1$2PUSH {count 2}\nINC\n"},
    {memlst, {}, "PUSH *\nPUSH -1\nPUSH 0\nINC\n"},
    {cmem, {",", memPatn}, "$2"},

    // Text file clauses.
    {sdf, {"SDF"}, "PUSH Y\n"},
    {sdf, {}, "PUSH N\n"},
    {delimited, {"DELIMITED", "WITH", expr}, "$3"},
    {delimited, {"DELIMITED"}, "PUSH ,\n"},
    {delimited, {}, "PUSH \n"},

    // Expressions, lowest precedence first.
    {expr, {cmp, rep(expr2)}, "$1$2"},
    {expr2, {".AND.", cmp}, "$2AND\n"},
    {expr2, {".OR.", cmp}, "$2OR\n"},
    {cmp, {addsub, opt(cmp2)}, "$1$2"},
    {cmp2, {"<", "=", addsub}, "$3CMP LE\n"},
    {cmp2, {">", "=", addsub}, "$3CMP GE\n"},
    {cmp2, {"<", ">", addsub}, "$3CMP NE\n"},
    {cmp2, {"<", addsub}, "$2CMP LT\n"},
    {cmp2, {">", addsub}, "$2CMP GT\n"},
    {cmp2, {"=", addsub}, "$2CMP EQ\n"},
    {addsub, {muldiv, rep(addsub2)}, "$1$2"},
    {addsub2, {"+", muldiv}, "$2ADD\n"},
    {addsub2, {"-", muldiv}, "$2SUB\n"},
    {muldiv, {power, rep(muldiv2)}, "$1$2"},
    {muldiv2, {"*", power}, "$2MUL\n"},
    {muldiv2, {"/", power}, "$2DIV\n"},
    {power, {unary, "^", power}, "$1$3POW\n"},
    {power, {unary}, "$1"},
    {unary, {".NOT.", factor}, "$2NOT\n"},
    {unary, {"-", factor}, "$2NEG\n"},
    {unary, {"+", factor}, "$2"},
    {unary, {factor}, "$1"},

    {factor, {NUM}, "PUSH $1\nS2N\n"},
    {factor, {STR}, "PUSH $1\n"},
    {factor, {"(", expr, ")"}, "$2"},
    {factor, {"$", "(", expr, ",", expr, ",", expr, ")"}, "$3$5$7PUSH 3\n=MID\n"},
    {factor, {"@", "(", expr, ",", expr, ")"}, "$5$3PUSH 2\n=INSTR\n"},
    {factor, {"!", "(", expr, ")"}, "$3PUSH 1\n=UCASE\n"},
    {factor, {"*"}, "PUSH 0\n=DELETED()\n"},
    {factor, {"#"}, "PUSH 0\n=RECNO()\n"},
    {factor, {"T"}, "PUSH -1,L,1,0\n"},
    {factor, {"F"}, "PUSH 0,L,1,0\n"},
    {factor, {KW, "(", ")"}, "PUSH 0\n=$1\n"},
    {factor, {KW, "(", expr, rep(fun2), ")"}, "$3$4PUSH {count 4}\nPUSH 1\nADD\n=$1\n"},
    {factor, {"EOF"}, "PUSH 0\n=EOF\n"},
    {factor, {"&", ID}, "PUSH $2\nPUSH 1\nGETV\n=EVAL()\n"},
    {factor, {lval}, "$1GETV\n"},
    {fun2, {",", expr}, "$2"},
    {lval, {ID, "[", expr, ",", expr, "]"}, "PUSH $1\n$3$5PUSH 3\n"},
    {lval, {ID, "[", expr, "]"}, "PUSH $1\n$3PUSH 2\n"},
    {lval, {ID}, "PUSH $1\nPUSH 1\n"},
    {lval, {KW}, "PUSH $1\nPUSH 1\n"},

    // Bare words of file names, option values, and of remarks behind ENDIF and ENDDO.
    {any, {ID}, "$1"},
    {any, {NUM}, "$1"},
    {any, {KW}, "$1"},
    {any, {"-"}, "$1"},
    {any, {"/"}, "$1"},
};
// clang-format on

}  // namespace mox
