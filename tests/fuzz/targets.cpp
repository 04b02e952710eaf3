#include "targets.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "../temp_dir.h"
#include "host/host.h"
#include "lang/compile.h"
#include "run/prompt.h"
#include "run/run.h"
#include "run/run_expr.h"
#include "session/error.h"
#include "session/session.h"

using namespace mox;

namespace {

int keys[2];

void Run(const std::string& statements) {
  errnum = errNone;
  Lines lines = split(statements, "\n"), steps;
  if (doCompile(false, lines, maxPromptSteps, steps) == cmpDone) doRun(CutSteps(std::move(steps)));
}
// Each statement for itself, whatever the ones before reported.
void RunEach(const std::string& statements) {
  for (const std::string& s : split(statements, "\n")) Run(s);
}
void Type(const std::string& bytes) {
  const size_t most = 4096;  // what the pipe surely holds
  const ssize_t n = write(keys[1], bytes.data(), std::min(bytes.size(), most));
  static_cast<void>(n);
}
void Drain() {
  while (_kbhit()) _getch();
}

// T.dbf with a field of each type and three records, indexed by N and A.
void Table() {
  SessionInit();
  PutBytes("in.txt", "ann,30,T,x\nbob,-1.5,F,\neve,0,,zz\n");
  Type("N,C,5\nA,N,6,2\nL,L\nC,C,90\n\n");
  RunEach(
      "SET TALK OFF\nCREATE T\nUSE T\nAPPEND FROM in SDF DELIMITED\nINDEX ON N TO N\n"
      "INDEX ON A TO A\nSTORE 1 TO X\nSTORE \"text\" TO Y");
  Drain();
}

void Source(const std::string& bytes) {
  Lines lines = split(bytes, "\n"), steps;
  errnum = errNone;
  doCompile(true, lines, maxPromptSteps, steps);
}
void Expression(const std::string& bytes) {
  Value value;
  errnum = errNone;
  EvalExpr(bytes.substr(0, bytes.find('\0')), 1000, value);
}
void TableFile(const std::string& bytes) {
  SessionInit();
  PutBytes("F.dbf", bytes);
  RunEach(
      "SET TALK OFF\nUSE F\nDISPLAY STRUCTURE\nLIST NEXT 20\nGOTO 2\nREPLACE N WITH "
      "\"abc\"\nDELETE\n"
      "APPEND BLANK\nGOTO BOTTOM\nLOCATE FOR N=\"a\"");
  if (bytes.size() > 2 && bytes[2] != 0) return;  // up to 255 records
  RunEach(
      "COPY TO G\nSORT ON N TO G\nTOTAL TO G ON N\nINDEX ON N TO G\nUSE F INDEX G\nFIND \"a\"\n"
      "APPEND FROM F\nPACK\nUPDATE FROM F ON N ADD A\nSELECT B\nUSE F\nJOIN TO G FOR N=S.N");
}
void IndexFile(const std::string& bytes) {
  SessionInit();
  PutBytes("I.ndx", bytes);
  RunEach(
      "SET TALK OFF\nUSE T INDEX I\nLIST\nFIND \"bob\"\nSKIP -1\nGOTO BOTTOM\nREPLACE N WITH "
      "\"new\"\n"
      "REPLACE A WITH 7\nAPPEND BLANK\nREPLACE N WITH \"x\"\nGOTO 2\nLIST NEXT 9\nREINDEX\nLIST");
}
void MemoryFile(const std::string& bytes) {
  SessionInit();
  PutBytes("M.mem", bytes);
  RunEach("RESTORE FROM M\nDISPLAY MEMORY\nSAVE TO M\nRESTORE FROM M");
}
void Text(const std::string& bytes, const char* form) {
  SessionInit();
  PutBytes("X.txt", bytes);
  RunEach(std::string("SET TALK OFF\nUSE T\nCOPY TO E STRUCTURE\nUSE E\nAPPEND FROM X SDF") + form +
          "\nLIST\nCOPY TO Y SDF" + form);
}
void FixedText(const std::string& bytes) { Text(bytes, ""); }
void DelimitedText(const std::string& bytes) { Text(bytes, " DELIMITED"); }
void Keys(const std::string& bytes) {
  static const char* const screens[] = {
      "EDIT 2",
      "BROWSE",
      "MODIFY COMMAND P",
      "MODIFY STRUCTURE",
      "APPEND",
      "CREATE E",
      "@ 1,1 GET N\n@ 2,1 GET A\n@ 3,1 GET Y PICTURE \"A9!X\"\nREAD"};
  Table();
  PutBytes("P.cmd", "? 1\n? 2\n");
  Run("USE T INDEX N,A");
  std::string typed = bytes.substr(std::min<size_t>(1, bytes.size()), 2000);
  std::replace(typed.begin(), typed.end(), '\x1A', 'x');    // a line that ends the input for good
  for (int i = 0; i < 300; ++i) typed += "\x17\n\n\x1B\n";  // ends whatever still asks
  Type(typed);
  RunEach(screens[bytes.empty() ? 0 : (bytes[0] & 255) % std::size(screens)]);
  Drain();
}

std::vector<std::string> SourceSeeds() {
  return {"* note\nSTORE 1 TO A\nDO WHILE A<3\n? A\nSTORE A+1 TO A\nENDDO\nRETURN",
          "IF X=1 .AND. \"a\"$Y\nTEXT\nhello\nENDTEXT\nELSE\nDO CASE\nCASE T\n? 1\nOTHERWISE\n? 2\n"
          "ENDCASE\nENDIF",
          "REPLACE N WITH \"x\", A WITH 1 : LIST N, A FOR # > 2\nJOIN TO G FOR P.N=S.N FIELDS N",
          "@ 1,2 SAY \"a\" GET N PICTURE \"99\"\nREAD\nSET INDEX TO A,B ;\n,C"};
}
std::vector<std::string> ExpressionSeeds() {
  return {"1+2*(3-4)/5",
          "\"a\"+\"b\"-\"c\"",
          "X>1 .AND. .NOT. Y=\"t\"",
          "STR(12.5,6,2)+CHR(65)",
          "VAL(\"1e9\")",
          "INT(-1.5)",
          "$(Y,2,2)",
          "@(\"x\",Y)",
          "LEN(TRIM(Y))",
          "DATE()",
          "!(Y)"};
}
std::vector<std::string> TableSeeds() { return Table(), std::vector{Bytes("T.dbf")}; }
std::vector<std::string> IndexSeeds() {
  return Table(), std::vector{Bytes("N.ndx"), Bytes("A.ndx")};
}
std::vector<std::string> MemorySeeds() {
  Table();
  Run("STORE T TO L\nSAVE TO M");
  return {Bytes("M.mem")};
}
std::vector<std::string> TextSeeds() {
  Table();
  Run("USE T\nCOPY TO F.txt SDF");
  return {Bytes("in.txt"), Bytes("F.txt"), "\"a\"\"b\" , 1e99,T\r\n\x1A"};
}
std::vector<std::string> KeySeeds() {
  std::vector<std::string> seeds;
  for (char screen = 0; screen < 7; ++screen)
    for (const char* text :
         {"abc\r12\rT\rY\x17", "\x1B[A\x1B[B\x1B[C\x1B[D\x16x\x07\x08\x15\x18\x05",
          "Yx\r\r\x1BOP\x1B[3~\xE0H\n1\n\x11"})
      seeds.push_back(screen + std::string(text));
  return seeds;
}

}  // namespace

const std::vector<FuzzTarget> fuzzTargets = {
    {"source", Source, SourceSeeds},         {"expression", Expression, ExpressionSeeds},
    {"table", TableFile, TableSeeds},        {"index", IndexFile, IndexSeeds},
    {"memory", MemoryFile, MemorySeeds},     {"fixed", FixedText, TextSeeds},
    {"delimited", DelimitedText, TextSeeds}, {"keys", Keys, KeySeeds},
};

void FuzzBegin() {
  if (pipe(keys) != 0 || dup2(keys[0], STDIN_FILENO) < 0 ||
      fcntl(keys[1], F_SETFL, O_NONBLOCK) != 0 ||
      dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO) < 0)
    std::abort();
  SessionInit();
}
