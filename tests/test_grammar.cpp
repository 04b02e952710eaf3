// The grammar and the compile driver: source text in, step text out.
#include <gtest/gtest.h>

#include <set>

#include "lang/compile.h"
#include "lang/mox_gmr.h"
#include "run/run.h"
#include "session/error.h"
#include "session/misc.h"
#include "session/strreplace.h"

namespace mox {

namespace {

// Syntax errors: what is no statement, or has its parts in another order.
constexpr const char* wrong =
    "FROG|-1|5 6|? 1,2|? \"open|? .NOT. .NOT. T|? A = B = C|? LEN(1,)|? Q[1,2,3]|? 1 é|DIS A|"
    "IF A THEN|IF A : ENDIF \"X\"|LOOP|IF A : ENDDO|DO WHILE A : ENDIF|RETURN 1|USE A INDEX B,|"
    "SET INDEX|GO TO 5|FIND|LOCATE ALL|LIST A,|SUM FOR X|APPEND FROM F FOR X=1 SDF|"
    "COPY TO F FOR X=1 ALL|SORT ON A TO B ASC|REPLACE A WITH 1 B WITH 2|@ 1,2 GET X SAY \"A\"|"
    "ACCEPT \"X\" TO DATE|WAIT \"PRESS\"|CLEAR ALL|HELP 1|RELEASE ,A|SET TALK|"
    "INDEX ON N+ TO F|LIST A FOR A>5 NEXT 1";

std::string Joined(const Lines& steps) {
  std::string text;
  for (const std::string& step : steps) text += (text.empty() ? "" : "; ") + step;
  return text;
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
  EXPECT_EQ(GrammarFault({{Rule::go2, {Rule::go2, "TOP"}, "$1"}}, KnownStep),
            "{go2, {go2, \"TOP\"}}: begins with itself");
  for (const char* word : {"Top", "GO TOP", "<=", ""})
    EXPECT_EQ(GrammarFault({{Rule::go2, {word}, "PR\n"}}, KnownStep),
              StrFmt("{go2, {\"%s\"}}: \"%s\" is no token", word, word));
}

TEST(Grammar, SyntaxErrors) {
  for (const std::string& source : split(wrong, "|")) {
    Lines lines{source}, steps;
    const int result = doCompile(false, lines, 1000, steps);
    EXPECT_TRUE(result == cmpFailed || result == cmpLeftOver) << source << ": " << result;
    EXPECT_NE(errnum, errNone) << source;
    EXPECT_TRUE(errmsg && errmsg->ends_with("\nLINE 1: " + source)) << errmsg.value_or("none");
  }
}

TEST(Compile, FilesGetTheirSourceLinesAndStepNumbers) {
  const std::pair<std::string, std::string> files[] = {
      {"IF A|?|ELSE|??1|ENDIF 'x",
       ": IF A; PUSH A; PUSH 1; GETV; JPF 9; : ?; PRLN; : ELSE; JP 14; : ELSE; : ??1; PUSH 1; S2N; "
       "PR; : ENDIF 'x; END"},
      {"DO CASE|CASE T|OTHERWISE|ENDCASE",
       ": DO CASE; JP 4; : CASE T; JP 10; : CASE T; PUSH -1,L,1,0; JPF 9; : OTHERWISE; JP 10; "
       ": OTHERWISE; : ENDCASE; END"},
      // No source line for a statement over several lines, nor for one that ends the list.
      {"? 1 ;|* no end|note this|\t |+ 2|STOP",
       "PUSH 1; S2N; PUSH 2; S2N; ADD; PR; PRLN; STOP; END"},
      {"?|? 1 ;", ": ?; PRLN; END"},
      {"TEXT", "result -2"},
      {"IF A|DO CASE|ENDCASE", "result -2"},
  };
  for (const auto& [source, steps] : files) EXPECT_EQ(File(source), steps) << source;
}

TEST(Compile, Limits) {
  EXPECT_EQ(File("? : ? : ?", 7), ": ? : ? : ?; PRLN; : ? : ? : ?; PRLN; : ? : ? : ?; PRLN; END");
  EXPECT_EQ(File("? : ? : ?", 6), "result 1");
  EXPECT_EQ(errmsg, "OUT OF MEMORY ");
  // Entry labels of a long case block stay apart from its end label: each CASE leads to the next.
  std::string cases = "DO CASE";
  for (int i = 0; i < 1200; ++i) cases += "|CASE F";
  const std::string all = File(cases + "|ENDCASE", 20000);
  for (int i = 1, target = 9; i < 1200; ++i, target += 5)
    EXPECT_NE(all.find("; JPF " + std::to_string(target) + "; "), all.npos) << i;
  std::set<std::string> ends;  // the first CASE, and the end
  for (size_t at = 0; (at = all.find("; JP ", at)) != all.npos; ++at)
    ends.insert(all.substr(at, 9));
  EXPECT_EQ(ends.size(), 2u);
  // Deep nesting and shared heads cost no time.
  std::string subscripts = "1";
  for (int i = 0; i < 30; ++i) subscripts = "A[" + subscripts + "]";
  EXPECT_TRUE(File("? " + subscripts).starts_with(": ? A[A["));
  EXPECT_EQ(File("? " + std::string(98, '(') + "1"), "result -1");
}

}  // namespace mox
