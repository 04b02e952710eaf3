// The grammar and the compile driver: source text in, step text out.
//
// A row of a table is "source -> steps", the steps joined by "; "; short rows share a line, with
// " | " between them. ":*" is the marker at which a command file gets its source line. In the
// steps <X> stands for the reading of a variable X, <1> for the number 1, <here> for the current
// record number, and <all> for the scope of all records.
#include <gtest/gtest.h>

#include <regex>

#include "lang/compile.h"
#include "lang/mox_gmr.h"
#include "run/run.h"
#include "session/error.h"
#include "session/misc.h"
#include "session/strreplace.h"

namespace mox {

namespace {

constexpr const char* statements = R"(
IF A THEN ? 1 : ?? 2 -> :*; <A>; JPF B00011; :*; <1>; PR; PRLN; :*; <2>; PR; LBL B00011
IF A THEN IF B THEN ? -> :*; <A>; JPF B00021; :*; <B>; JPF B00011; :*; PRLN; LBL B00011; LBL B00021
IF A -> :*; <A>; JPF B00011 | ELSE -> :*; JP B00002; LBL B00001; :* | DO a.b -> :*; PUSH a.b; DOCMD
IF A : ELSE : ENDIF -> :*; <A>; JPF B00011; :*; JP B00012; LBL B00011; :*; LBL B00012; :*
if A : endif ALL DONE 2-1/x -> :*; <A>; JPF B00011; LBL B00011; LBL B00012; :* | ? -> :*; PRLN
DO WHIL A -> LBL B0001001; :*; <A>; JPF B0001002 | DO WHILE -> :*; PUSH WHILE; DOCMD
DO WHILE A : ENDDO X-1 -> LBL B0001001; :*; <A>; JPF B0001002; :*; JP B0001001; LBL B0001002; :*
DO WHILE A : IF B THEN LOOP -> LBL B0001001; :*; <A>; JPF B0001002; :*; <B>; JPF B00021; :*; JP B0001001; LBL B00021
DO CASE : ENDCASE -> :*; JP B0001000; LBL B0001000; LBL B0001999; :*
DO CASE : CASE A -> :*; JP B0001000; :*; JP B0001999; LBL B0001000; :*; <A>; JPF B0001001
DO CASE : OTHERWISE : CASE B -> :*; JP B0001000; :*; JP B0001999; LBL B0001000; :*; :*; JP B0001999; LBL B0001001; :*; <B>; JPF B0001002
DO CASE : CASE A : ENDCASE -> :*; JP B0001000; :*; JP B0001999; LBL B0001000; :*; <A>; JPF B0001001; LBL B0001001; LBL B0001999; :*
@ 1,2 SAY "N" GET X PICTURE "99" -> :*; <1>; <2>; PUSH "N"; SAY; PUSH X; PUSH "99"; GET; POP 2
@ 3,4 -> :*; <3>; <4>; PUSH ; SAY; POP 2 | ACCEPT TO X -> :*; PUSH ; ACCEPT; PUSH X; PUSH 1; PUTV
@ 1,2 GET X -> :*; <1>; <2>; PUSH ; SAY; PUSH X; PUSH ; GET; POP 2 | BROWSE -> :*; PUSH 0; BROWSE
ACCEPT "N" TO X -> :*; PUSH "N"; ACCEPT; PUSH X; PUSH 1; PUTV | APPEND -> :*; PUSH 1; ADDREC; EDIT
APPEND BLANK -> :*; PUSH 0; ADDREC | APPEND FROM F FOR A=1 -> :*; PUSH F; PUSH A=1; APNDDBF
APPEND FROM F SDF -> :*; PUSH F; PUSH ; PUSH 1=1; APNDSDF | CANCEL -> :*; CANCEL
APPEND FROM F SDF DELIMITED FOR A -> :*; PUSH F; PUSH ,; PUSH A; APNDSDF | CLEAR -> :*; CLALL
APPEND FROM F SDF DELI WITH "|" -> :*; PUSH F; PUSH "|"; PUSH 1=1; APNDSDF | CLEA GETS -> :*; CLGETS
CLEAR MEMO -> :*; CLMEM | CONTINUE -> :*; CONTINUE | CREATE F -> :*; PUSH F; CREATE
COPY TO X STRUCTURE -> :*; PUSH X; PUSH 0; CPYDEF | DELETE FILE A.B -> :*; PUSH A.B; DEL
COPY TO X STRU FIELDS A,B -> :*; PUSH X; PUSH A; PUSH B; PUSH 1; INC; CPYDEF
COPY TO X -> :*; PUSH X; <all>; PUSH 0; PUSH 1=1; PUSH N; PUSH ; CPYMOX | DISP STRU -> :*; DSPSTR
COPY TO X NEXT 3 FIELDS A,B FOR C=1 SDF DELIMITED WITH ";" -> :*; PUSH X; <here>; <3>; PUSH A; PUSH B; PUSH 1; INC; PUSH C=1; PUSH Y; PUSH ";"; CPYMOX
COPY TO X DELIMITED -> :*; PUSH X; <all>; PUSH 0; PUSH 1=1; PUSH N; PUSH ,; CPYMOX
COUNT FOR A=1 TO N -> :*; <all>; PUSH A=1; PUSH N; COUNT1 | DISPLAY MEMORY -> :*; DSPMEM
COUNT NEXT 5 -> :*; <here>; <5>; PUSH 1=1; PUSH -; COUNT1 | DISPLAY STATUS -> :*; DSPSTAT
DELETE -> :*; <here>; PUSH 1; PUSH 1=1; DEL1 | DELETE ALL FOR X=1 -> :*; <all>; PUSH X=1; DEL1
DISPLAY FILES LIKE *.D?F-1:x -> :*; PUSH *.D?F-1:x; DSPFN | DISPLAY FILES -> :*; DSPDBF | END -> END
DISPLAY -> :*; PUSH 0; DSP | DISPLAY A,1 -> :*; <A>; <1>; PUSH 1; INC; DSP | ERASE -> :*; CLS
EDIT -> :*; PUSH -2; DGOTO; EDIT | EDIT 5 -> :*; <5>; DGOTO; EDIT | FIND ABC -> :*; <ABC>; FIND
GOTO TOP -> :*; PUSH 0; DGOTO | GO BOTT -> :*; PUSH -1; DGOTO | GO N+1 -> :*; <N>; <1>; ADD; DGOTO
HELP A 1 x -> :*; PUSH A-1-x; HELP | HELP ? ? -> :*; PUSH ??; HELP | HELP ? -> :*; PUSH ?; HELP
HELP @ -> :*; PUSH @; HELP | HELP -> :*; PUSH MAIN; HELP | LIST -> :*; PUSH 0; <all>; PUSH 1=1; LIST
INDEX ON LAST + FIRST TO N -> :*; PUSH LAST+FIRST; PUSH N; NDX | MODIFY STRUCTURE -> :*; MDSTRU
INPUT "N" TO X -> :*; PUSH "N"; INPUT; PUSH X; PUSH 1; STORE | PACK -> :*; PACK | QUIT -> :*; QUIT
INPUT TO X -> :*; PUSH ; INPUT; PUSH X; PUSH 1; STORE | LOCATE NEXT -> :*; PUSH 1; PUSH 1=1; LOCATE
JOIN TO F FOR A = B FIELDS C -> :*; PUSH F; PUSH A=B; PUSH C; PUSH 0; INC; JOIN | READ -> :*; READ
LIST NAME,date() NEXT 5 FOR AGE>21 .AND. NAME="X" -> :*; PUSH NAME; PUSH DATE(); PUSH 1; INC; <here>; <5>; PUSH AGE>21 .AND.NAME="X"; LIST
LIST RECO,nextone RECO 1 -> :*; PUSH RECO; PUSH nextone; PUSH 1; INC; <1>; PUSH 1; PUSH 1=1; LIST
LIST RECORD 3 -> :*; PUSH 0; <3>; PUSH 1; PUSH 1=1; LIST | MODIFY COMMAND F -> :*; PUSH F; MDCOMM
LIST NEXT 2 FOR A .OR. .NOT. B -> :*; PUSH 0; <here>; <2>; PUSH A .OR..NOT.B; LIST
LIST ALL FOR NAME="X" .AND. AGE>21 -> :*; PUSH 0; <all>; PUSH NAME="X".AND.AGE>21; LIST
LOCATE FOR A=1 -> :*; PUSH 0; PUSH A=1; LOCATE | RECALL FOR A -> :*; <here>; PUSH 1; PUSH A; RECALL1
RECALL RECORD 2 -> :*; <2>; PUSH 1; PUSH 1=1; RECALL1 | REINDEX -> :*; REINDEX
RELEASE -> :*; PUSH *; PUSH -1; PUSH 0; INC; RELEASE | RENAME "A" TO B -> :*; PUSH "A"; <B>; REN
RELEASE A*, ALL EXCEPT B?, ALL -> :*; PUSH A*; PUSH -1; PUSH B?; PUSH 0; PUSH *; PUSH -1; PUSH 2; INC; RELEASE
REPLACE A WITH 1, B WITH "X" -> :*; UPDREC0; <1>; PUSH A; SETFLD; PUSH "X"; PUSH B; SETFLD; UPDREC2
RESET -> :*; PUSH *; RESET | RESET X -> :*; PUSH X; RESET | RETURN -> :*; RETURN
RESTORE FROM F ALL LIKE A* -> :*; PUSH F; PUSH A*; PUSH -1; RESTORE | SELECT B -> :*; PUSH B; SELECT
SAVE TO F -> :*; PUSH F; PUSH *; PUSH -1; MSAVE | SET INDEX TO -> :*; PUSH 0; SETNDX | STOP -> STOP
SAVE TO F ALL EXCEPT A* -> :*; PUSH F; PUSH A*; PUSH 0; MSAVE | SKIP -> :*; PUSH 1; SKIP
SET INDEX TO A,B -> :*; PUSH A; PUSH B; PUSH 1; INC; SETNDX | SKIP -2 -> :*; <2>; NEG; SKIP
SET date TO DD/MM-10 next -> :*; PUSH DATE; PUSH DD/MM-10NEXT; PUSH 2; OPT
SET DELE ON -> :*; PUSH DELE; PUSH 1; OPT | SET talk OFF -> :*; PUSH talk; PUSH 0; OPT
SET DEFAULT TO "B:" -> :*; PUSH DEFAULT; PUSH "B:"; PUSH 2; OPT
SET ALTERNATE TO -> :*; PUSH ALTERNATE; PUSH ; PUSH 2; OPT | USE -> :*; PUSH -; USE
SORT ON A TO B -> :*; PUSH A; PUSH B; PUSH -1; SORT | USE A -> :*; PUSH A; USE; PUSH 0; SETNDX
SORT ON A TO B DESC -> :*; PUSH A; PUSH B; PUSH 0; SORT | WAIT -> :*; PUSH 0; WAIT
STORE 1 TO A[2] -> :*; <1>; PUSH A; <2>; PUSH 2; STORE | WAIT TO K -> :*; PUSH K; PUSH 1; WAIT
STORE "a""b" TO DATE -> :*; PUSH "a""b"; PUSH DATE; PUSH 1; STORE | 5 -> :*; PUSH 5; DGOTO
SUM A,B TO C,D -> :*; PUSH A; PUSH B; PUSH 1; INC; <all>; PUSH 1=1; PUSH C; PUSH D; PUSH 1; INC; SUM1
SUM A NEXT N -> :*; PUSH A; PUSH 0; INC; <here>; <N>; PUSH 1=1; PUSH 0; SUM1
TOTAL TO F ON K FIELDS A -> :*; PUSH F; PUSH K; PUSH A; PUSH 0; INC; TOTAL
UPDATE FROM F ON K -> :*; PUSH F; PUSH K; PUSH 0; PUSH 0; PUSH 0; UPDATE
UPDATE FROM F ON K ADD A REPLACE B,C WITH D -> :*; PUSH F; PUSH K; PUSH A; PUSH 0; INC; PUSH B; PUSH C; PUSH 1; INC; PUSH D; PUSH 0; INC; UPDATE
USE A INDEX B,C -> :*; PUSH A; USE; PUSH B; PUSH C; PUSH 1; INC; SETNDX
)";

constexpr const char* expressions = R"(
1+2*3 -> <1>; <2>; <3>; MUL; ADD | 8-4-2 -> <8>; <4>; SUB; <2>; SUB | -2^2 -> <2>; NEG; <2>; POW
8/4/2 -> <8>; <4>; DIV; <2>; DIV | 2^3^-2 -> <2>; <3>; <2>; NEG; POW; POW | A<>B -> <A>; <B>; CMP NE
(1+2)*3 -> <1>; <2>; ADD; <3>; MUL | A .OR. B .AND. f -> <A>; <B>; OR; PUSH 0,L,1,0; AND
1 + 2 = 3 .and. T -> <1>; <2>; ADD; <3>; CMP EQ; PUSH -1,L,1,0; AND | A > = B -> <A>; <B>; CMP GE
.NOT. A < = B -> <A>; NOT; <B>; CMP LE | A<B -> <A>; <B>; CMP LT | A>+B -> <A>; <B>; CMP GT
A.AND.B -> <A.AND.B> | LEN("abc") -> PUSH "abc"; PUSH 0; PUSH 1; ADD; =LEN | DATE() -> PUSH 0; =DATE
mid(S,2,3) -> <S>; <2>; <3>; PUSH 2; PUSH 1; ADD; =MID | date -> <DATE> | # -> PUSH 0; =RECNO()
$("abc",1,2) -> PUSH "abc"; <1>; <2>; PUSH 3; =MID | @("a",S) -> <S>; PUSH "a"; PUSH 2; =INSTR
!(S) -> <S>; PUSH 1; =UCASE | 2 * * -> <2>; PUSH 0; =DELETED(); MUL | eof -> PUSH 0; =EOF
EOF() -> PUSH 0; =EOF | &x+1 -> PUSH x; PUSH 1; GETV; =EVAL(); <1>; ADD
Q[1,2] -> PUSH Q; <1>; <2>; PUSH 3; GETV | Q[I] -> PUSH Q; <I>; PUSH 2; GETV
12.+1.5e-3 -> <12.>; <1.5e-3>; ADD
)";

// Lines that are a syntax error, separated by "|" where they share a line here.
constexpr const char* wrong = R"(
FROG | -1 | 5 6 | ?? | ? 1,2 | ? "open | ? - - 1 | ? .NOT. .NOT. T | ? A = B = C | ? .5 | ? .T.
? "a" $ "abc" | ? A # B | ? ABS( | ? LEN(1,) | ? &1 | ? (1 | ? Q[1,2,3] | ? 1 é | DIS A | DISPLAYS
IF A THEN | IF A THEN 5 6 | IF | IF A : ENDIF "X" | DO CASE : ENDCASE X | END X | LOOP | ENDIF
ENDDO | IF A : ENDDO | DO WHILE A : ENDIF | DO "A" | DO CASE : ENDIF | ENDCASE | RETURN 1 | CASE
DO DATE | USE A INDEX | USE A INDEX B, | USE "A" | SELECT 1 | SET INDEX | SET TALK | SET TALK O
SET A TO "x | GO TO 5 | GOTO | FIND | CONTINUE 1 | LOCATE ALL | INDEX ON A | LIST A, | LIST NEXT
DISPLAY FILES X | COUNT FOR | COUNT TO | COUNT FOR A=1 FOR B=2 | COUNT TO DATE | SUM | SUM FOR X
SUM A TO | DELETE FILE | RECALL A | APPEND FROM F DELIMITED | APPEND FROM F FOR X=1 SDF | JOIN TO F
COPY TO X FIELDS | COPY TO X FIELDS A B | COPY TO F FOR X=1 ALL | SORT ON A TO B ASC | UPDATE FROM F
CREATE | MODIFY | RENAME A | REPLACE A WITH 1 B WITH 2 | REPLACE A WITH 1, | REPLACE A | @ 1 2 | @ 1
@ 1,2 GET DATE | @ 1,2 GET X PICTURE Y | @ 1,2 GET X SAY "A" | ACCEPT "X" TO DATE | ACCEPT | INPUT X
WAIT "PRESS" | CLEAR ALL | ERASE F | HELP 1 | STORE 1 | STORE TO X | RELEASE A, | RELEASE ,A
RELEASE "A" | SAVE F
)";

// The table's short forms, written out.
std::string Expand(std::string steps) {
  static const std::regex variable("<([A-Za-z_][A-Za-z_.]*)>"), number("<([^>]*)>");
  steps = std::regex_replace(steps, std::regex("<here>"), "PUSH 0; =RECNO()");
  steps =
      std::regex_replace(steps, std::regex("<all>"), "PUSH 0; DGOTO; PUSH 0; =RECNO(); PUSH 99999");
  steps = std::regex_replace(steps, variable, "PUSH $1; PUSH 1; GETV");
  return std::regex_replace(steps, number, "PUSH $1; S2N");
}

std::string Joined(const Lines& steps) {
  std::string text;
  for (const std::string& step : steps) text += (text.empty() ? "" : "; ") + step;
  return text;
}

// What one line compiles to, or why not.
std::string Line(const std::string& source) {
  Tokens tokens;
  prog2tkn(source, maxTokens, tokens);
  CompileState state;
  errnum = errNone;
  int cursor = 0;
  std::string text;
  if (!lrline(state, cursor, tokens, text)) return "no rule matches";
  if (errnum != errNone) return *errmsg;
  if (cursor < tokens.count()) return "left over: " + tokens.texts[cursor];
  return Joined(split(rm_nl(text), "\n"));
}

std::string Expression(const std::string& source) {
  Lines steps;
  const int result = doEval(source, 100, steps);
  return result == cmpDone ? Joined(steps) : "result " + std::to_string(result);
}

void CheckRows(const char* table, std::string (*compile)(const std::string&), const char* tail) {
  for (const std::string& row : split(str_replace(table, " | ", "\n"), "\n")) {
    if (row.empty()) continue;
    const size_t arrow = row.find(" -> ");
    ASSERT_NE(arrow, row.npos) << row;
    EXPECT_EQ(compile(row.substr(0, arrow)), Expand(row.substr(arrow + 4)) + tail) << row;
  }
}

// The result and the steps of a source whose lines are separated by "|".
std::string File(const std::string& source, size_t limit = 1000) {
  Lines lines = split(source, "|"), steps;
  const int result = doCompile(true, lines, limit, steps);
  return result == cmpDone ? Joined(steps) : "result " + std::to_string(result);
}

}  // namespace

TEST(Grammar, TheTableIsSoundAndWrongRowsAreTold) {
  EXPECT_EQ(GrammarFault(g_grammar, KnownStep), "");
  const auto fault = [](const char* text, const char* absent = "PUSH 1\n") {
    Item optional(Rule::expr);
    optional.atLeast = 0;
    optional.absent = absent;
    const std::string told = GrammarFault({{Rule::expr, {tokNumber}, "PUSH $1\n"},
                                           {Rule::fn, {tokIdentifier}, "-$1"},
                                           {Rule::statement, {"TALLY", optional, Rule::fn}, text}},
                                          KnownStep);
    const std::string row = "{statement, {\"TALLY\", opt(expr), fn}}: ";
    EXPECT_TRUE(told.empty() || told.starts_with(row)) << told;
    return told.substr(std::min(told.size(), row.size()));
  };
  EXPECT_EQ(fault("{push if}:*\n$2PUSH A$3{src 2}\nJPF {BL}1\n{endthen}{pop if}"), "");
  for (const char* piece : {"$4", "$0", "$12", "$", "{src 4}", "{count x}", "{count}", "{push 1}",
                            "{pop iff}", "{check}", "{BL 1}", "{LB}", "{else", "{"})
    EXPECT_EQ(fault(("$2PR\n" + std::string(piece)).c_str()),
              std::string(piece) + " means nothing");
  for (const char* step :
       {"LISST", "PRLN2 $", "EXPRESSIONS", "CMP LS", "CMP $", "PUSH$", "$PR", ""})
    EXPECT_EQ(fault(("$2" + str_replace(step, "$", "$3") + "\n").c_str()),
              std::string(step) + " is no step");
  EXPECT_EQ(fault("PUSH $2\nPR\n"), "PUSH $ is no step");
  EXPECT_EQ(fault("$2PR"), "PR has no line feed behind it");
  EXPECT_EQ(fault("$2PR\n", "PUSH 1"), "PUSH 1 has no line feed behind it");
  EXPECT_EQ(GrammarFault({{Rule::go2, {Rule::expr}, "$1"}}, KnownStep),
            "{go2, {expr}}: expr has no row");
}

TEST(Grammar, Statements) { CheckRows(statements, Line, ""); }

TEST(Grammar, Expressions) { CheckRows(expressions, Expression, "; END"); }

TEST(Grammar, SyntaxErrors) {
  for (const std::string& source : split(str_replace(wrong, " | ", "\n"), "\n")) {
    if (source.empty()) continue;
    Lines lines{source}, steps;
    const int result = doCompile(false, lines, 1000, steps);
    EXPECT_TRUE(result == cmpFailed || result == cmpLeftOver) << source << ": " << result;
    EXPECT_NE(errnum, errNone) << source;
    EXPECT_TRUE(errmsg && errmsg->ends_with("\nLINE 1: " + source)) << errmsg.value_or("none");
  }
}

TEST(Compile, FilesGetTheirSourceLinesAndStepNumbers) {
  const std::pair<std::string, std::string> files[] = {
      {"? 1 : ?", ": ? 1 : ?; PUSH 1; S2N; PR; PRLN; : ? 1 : ?; PRLN; END"},
      {"IF A|?|ELSE|??1|ENDIF 'x",
       ": IF A; PUSH A; PUSH 1; GETV; JPF 9; : ?; PRLN; : ELSE; JP 14; : ELSE; : ??1; PUSH 1; S2N; "
       "PR; : ENDIF 'x; END"},
      {"DO WHILE F|LOOP|ENDDO",
       ": DO WHILE F; PUSH 0,L,1,0; JPF 7; : LOOP; JP 0; : ENDDO; JP 0; : ENDDO; END"},
      {"DO CASE|CASE T|OTHERWISE|ENDCASE",
       ": DO CASE; JP 4; : CASE T; JP 10; : CASE T; PUSH -1,L,1,0; JPF 9; : OTHERWISE; JP 10; "
       ": OTHERWISE; : ENDCASE; END"},
      // No source line for a statement over several lines, nor for one that ends the list.
      {"? 1 ;|* no end|note this|\t |+ 2|STOP",
       "PUSH 1; S2N; PUSH 2; S2N; ADD; PR; PRLN; STOP; END"},
      {"?|? 1 ;", ": ?; PRLN; END"},
      {"TEXTURE|it's \"x\" ;|* TEXT|  endtexts",
       ": ? \"it's \"\"x\"\" ;\"; PUSH \"it's \"\"x\"\" ;\"; PR; PRLN; : ? \"* TEXT\"; PUSH \"* "
       "TEXT\"; PR; PRLN; END"},
      {"RELEASE ALL LIKE A:*",
       ": RELEASE ALL LIKE A:*; PUSH A:*; PUSH -1; PUSH 0; INC; RELEASE; END"},
      {"*", "END"},
      {"TEXT", "result -2"},
      {"IF A|DO CASE|ENDCASE", "result -2"},
      {"ENDTEXT", "result 1"},
      {"? 1 2", "result -1"},
      {"ELSE", "result 1"},
  };
  for (const auto& [source, steps] : files) EXPECT_EQ(File(source), steps) << source;
}

TEST(Compile, Limits) {
  EXPECT_EQ(File("? : ? : ?", 7), ": ? : ? : ?; PRLN; : ? : ? : ?; PRLN; : ? : ? : ?; PRLN; END");
  EXPECT_EQ(File("? : ? : ?", 6), "result 1");
  EXPECT_EQ(errmsg, "OUT OF MEMORY ");
  Lines steps;
  EXPECT_EQ(doEval("1+1", 6, steps), cmpDone);
  EXPECT_EQ(doEval("1+1", 5, steps), cmpFailed);
  EXPECT_EQ(doEval(" \t", 5, steps), cmpDone);
  std::string ifs = "IF A", cases = "DO CASE";
  for (int i = 1; i < maxBlocks; ++i) ifs += "|IF A";
  EXPECT_EQ(File(ifs), "result -2");
  EXPECT_EQ(File(ifs + "|IF A THEN ?"), "result 1");
  EXPECT_EQ(errmsg, "*** SYNTAX ERROR *** nesting error - too deep\nLINE 21: IF A THEN ?");
  // Entry labels of a long case block stay apart from its end label.
  for (int i = 0; i < 1200; ++i) cases += "|CASE F";
  EXPECT_TRUE(File(cases + "|ENDCASE", 20000).ends_with("JPF 6002; : ENDCASE; END"));

  // A hundred tokens count, over all lines; deep nesting and shared heads cost no time.
  std::string sum = "1";
  for (int i = 0; i < 48; ++i) sum += "+1";
  EXPECT_NE(File("? ;|" + sum + "+1"), "result 1");     // 100: the last number is there
  EXPECT_EQ(File("? ;|" + sum + "+(1)"), "result -1");  // the closing parenthesis isn't
  std::string subscripts = "1";
  for (int i = 0; i < 30; ++i) subscripts = "A[" + subscripts + "]";
  EXPECT_TRUE(Expression(subscripts).starts_with("PUSH A; PUSH A; "));
  EXPECT_EQ(Expression(std::string(49, '(') + "1" + std::string(49, ')')), "PUSH 1; S2N; END");
  EXPECT_EQ(Expression(std::string(99, '(') + "1"), "result 1");
}

TEST(Compile, AnyBytesAreTakenOrRefused) {
  unsigned random = 1;
  const std::string alphabet = "AN1.\"':;,*?()[]<>=&@#$!+-^/ \t\x80\xFF\r~_eT";
  for (int i = 0; i < 20000; ++i) {
    std::string source;
    for (int length = (random >> 8) % 40; length > 0; --length)
      source += alphabet[((random = random * 1103515245 + 12345) >> 16) % alphabet.size()];
    Lines lines{source}, steps;
    const int result = doCompile(false, lines, 100, steps);
    EXPECT_EQ(result == cmpDone, !steps.empty() && steps.back() == "END" && errnum == errNone);
    random = random * 1103515245 + 12345;
  }
}

}  // namespace mox
