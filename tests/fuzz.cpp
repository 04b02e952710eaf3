// The targets, and a coverage-guided run of the one whose name is in MOX_TARGET (tools/fuzz starts
// it). With MOX_SEEDS it writes the target's seeds into that folder and ends.
#include "fuzz.h"

#include <algorithm>
#include <cstdint>

#include "run/run_expr.h"
#include "temp_dir.h"
#include "typed.h"

using namespace mox;

namespace {

// Each statement for itself, whatever the ones before reported.
void RunEach(const std::string& statements) {
  for (const std::string& s : split(statements, "\n")) Do(s);
}

// T.dbf with a field of each type and three records, indexed by N and A.
void Table() {
  SessionInit();
  PutBytes("in.txt", "ann,30,T,x\nbob,-1.5,F,\neve,0,,zz\n");
  Do("CREATE T", "N,C,5\nA,N,6,2\nL,L\nC,C,90\n\n");
  Do("SET TALK OFF : USE T : APPEND FROM in SDF DELIMITED : INDEX ON N TO N : INDEX ON A TO A : "
     "STORE 1 TO X : STORE \"text\" TO Y");
}

void Expression(const std::string& bytes) {
  Value value;
  errnum = errNone;
  EvalExpr(bytes.substr(0, bytes.find('\0')), 1000, value);
}
// Bytes become a file, which the statements read.
std::function<void(const std::string&)> OnFile(const char* file, const std::string& statements) {
  return [=](const std::string& bytes) {
    SessionInit();
    PutBytes(file, bytes);
    RunEach("SET TALK OFF\n" + statements);
  };
}
void TableFile(const std::string& bytes) {
  OnFile("F.dbf",
         "USE F\nDISPLAY STRUCTURE\nLIST NEXT 20\nGOTO 2\nREPLACE N WITH \"abc\"\nDELETE\n"
         "APPEND BLANK\nGOTO BOTTOM\nLOCATE FOR N=\"a\"")(bytes);
  if (bytes.size() > 2 && bytes[2] != 0) return;  // up to 255 records
  RunEach(
      "COPY TO G\nSORT ON N TO G\nTOTAL TO G ON N\nINDEX ON N TO G\nUSE F INDEX G\nFIND \"a\"\n"
      "APPEND FROM F\nPACK\nUPDATE FROM F ON N ADD A\nSELECT B\nUSE F\nJOIN TO G FOR N=S.N");
}
const std::string throughText = "USE T\nCOPY TO E STRUCTURE\nUSE E\n";
void Keys(const std::string& bytes) {
  static const Lines screens = split(
      "EDIT 2|BROWSE|MODIFY COMMAND P|MODIFY STRUCTURE|APPEND|CREATE E|"
      "@ 1,1 GET N : @ 2,1 GET A : @ 3,1 GET Y PICTURE \"A9!X\" : READ",
      "|");
  Table();
  PutBytes("P.cmd", "? 1\n? 2\n");
  Do("USE T INDEX N,A");
  std::string typed = bytes.substr(std::min<size_t>(1, bytes.size()), 2000);
  std::replace(typed.begin(), typed.end(), '\x1A', 'x');    // a line that ends the input for good
  for (int i = 0; i < 300; ++i) typed += "\x17\n\n\x1B\n";  // ends whatever still asks
  Do(screens[bytes.empty() ? 0 : (bytes[0] & 255) % screens.size()], typed);
}

using Seeds = std::vector<std::string>;
Seeds SourceSeeds() {
  return {"* note\nSTORE 1 TO A\nDO WHILE A<3\n? A\nSTORE A+1 TO A\nENDDO\nRETURN",
          "IF X=1 .AND. \"a\"$Y\nTEXT\nhello\nENDTEXT\nELSE\nDO CASE\nCASE T\n? 1\nOTHERWISE\n? 2\n"
          "ENDCASE\nENDIF",
          "REPLACE N WITH \"x\", A WITH 1 : LIST N, A FOR # > 2\nJOIN TO G FOR P.N=S.N FIELDS N",
          "@ 1,2 SAY \"a\" GET N PICTURE \"99\"\nREAD\nSET INDEX TO A,B ;\n,C"};
}
Seeds ExpressionSeeds() {
  return split(
      "1+2*(3-4)/5|\"a\"+\"b\"-\"c\"|X>1 .AND. .NOT. Y=\"t\"|STR(12.5,6,2)+CHR(65)|VAL(\"1e9\")|"
      "INT(-1.5)|$(Y,2,2)|@(\"x\",Y)|LEN(TRIM(Y))|DATE()|!(Y)",
      "|");
}
Seeds Files(const Lines& names) {
  Table();
  Do("STORE T TO L : SAVE TO M : USE T : COPY TO F.txt SDF");
  Seeds seeds;
  for (const std::string& name : names) seeds.push_back(Bytes(name));
  return seeds;
}
Seeds TextSeeds() {
  return PutBytes("t", "\"a\"\"b\" , 1e99,T\r\n\x1A"), Files({"in.txt", "F.txt", "t"});
}
Seeds KeySeeds() {
  Seeds seeds;
  for (char screen = 0; screen < 7; ++screen)
    for (const char* text :
         {"abc\r12\rT\rY\x17", "\x1B[A\x1B[B\x1B[C\x1B[D\x16x\x07\x08\x15\x18\x05",
          "Yx\r\r\x1BOP\x1B[3~\xE0H\n1\n\x11"})
      seeds.push_back(screen + std::string(text));
  return seeds;
}

const FuzzTarget& Target() {
  const char* const name = std::getenv("MOX_TARGET");
  const auto is = [&](const FuzzTarget& t) { return name && t.name == std::string(name); };
  static const auto found = std::find_if(fuzzTargets.begin(), fuzzTargets.end(), is);
  if (found == fuzzTargets.end()) std::abort();
  return *found;
}

}  // namespace

const std::vector<FuzzTarget> fuzzTargets = {
    {"source", [](const std::string& bytes) { Compiled(bytes, true); }, SourceSeeds},
    {"expression", Expression, ExpressionSeeds},
    {"table", TableFile, [] { return Files({"T.dbf"}); }},
    {"index",
     OnFile("I.ndx",
            "USE T INDEX I\nLIST\nFIND \"bob\"\nSKIP -1\nGOTO BOTTOM\nREPLACE N WITH \"new\"\n"
            "REPLACE A WITH 7\nAPPEND BLANK\nREPLACE N WITH \"x\"\nGOTO 2\nLIST NEXT 9\n"
            "REINDEX\nLIST"),
     [] {
       return Files({"N.ndx", "A.ndx"});
     }},
    {"memory", OnFile("M.mem", "RESTORE FROM M\nDISPLAY MEMORY\nSAVE TO M\nRESTORE FROM M"),
     [] { return Files({"M.mem"}); }},
    {"fixed", OnFile("X.txt", throughText + "APPEND FROM X SDF\nLIST\nCOPY TO Y SDF"), TextSeeds},
    {"delimited",
     OnFile("X.txt", throughText + "APPEND FROM X SDF DELIMITED\nLIST\nCOPY TO Y SDF DELIMITED"),
     TextSeeds},
    {"keys", Keys, KeySeeds},
};

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  TypeFromPipe();
  SessionInit();
  const Seeds seeds = Target().seeds();  // the files that a target starts from
  if (const char* const folder = std::getenv("MOX_SEEDS")) {
    for (size_t i = 0; i < seeds.size(); ++i)
      PutBytes(fs::path(folder) / std::to_string(i), seeds[i]);
    std::exit(0);
  }
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t n) {
  Target().run({reinterpret_cast<const char*>(bytes), n});
  return 0;
}
