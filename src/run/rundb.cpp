// The steps that open a table, choose an area, move, ask about the position, and show records,
// structure and status.

#include "run/rundb.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "host/host.h"
#include "lang/mox_lex.h"
#include "run/handlers.h"
#include "run/run_input.h"
#include "run/run_out.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

// A message on the console that ends the run: nothing is left for the prompt to tell.
void _tell(const char* message) {
  std::printf("%s\n", message);
  errnum = errTold;
}

struct AreaName {
  const char* name;
  int area;
};

// Answers with a fact about the selected table.
void _answer(Operands& o, int (*fact)()) {
  if (DbChk()) o.result(Value::ofCount(fact()));
}

// The tables in use: true when there are any.
bool _sayTables() {
  static constexpr const char* use[maxAreas] = {"PRIMARY USE", "SECONDARY USE", "AREA C", "AREA D"};
  bool any = false;
  if (dbOPEN(selectedArea)) {
    any = true;
    std::printf("DATABASE SELECTED - %s\n%s DATABASE\n\n", dbFn(selectedArea).c_str(),
                use[dbSelected()]);
  }
  for (int area = 0; area < maxAreas; ++area) {
    if (area == dbSelected() || !dbOPEN(area)) continue;
    any = true;
    std::printf("AREA %c DATABASE   - %s\n", 'A' + area, dbFn(area).c_str());
  }
  return any;
}

void _sayIndexes() {
  if (!dbINDEXED(selectedArea)) return;
  std::printf("INDEXES:          KEY EXPRESSION:\n");
  for (int slot = 0; slot < dbNdxs(selectedArea); ++slot)
    std::printf(" %-14s   %s\n", dbNdxFn(selectedArea, slot).c_str(),
                dbNdxExpr(selectedArea, slot).c_str());
}

void _saySettings() {
  struct Shown {
    const char* name;
    OptSlot slot;
  };
  static constexpr Shown shown[] = {
      {"ALTERNATE", optALTERNATE}, {"BELL", optBELL},
      {"CARRY", optCARRY},         {"COLON", optCOLON},
      {"CONFIRM", optCONFIRM},     {"CONSOLE", optCONSOLE},
      {"DEBUG", optDEBUG},         {"DELETE", optDELETED},
      {"ECHO", optECHO},           {"EJECT", optEJECT},
      {"ESCAPE", optESCAPE},       {"EXACT", optEXACT},
      {"INTENSITY", optINTENSITY}, {"LINKAGE", optLINKAGE},
      {"PRINT", optPRINT},         {"RAW", optRAW},
      {"STEP", optSTEP},           {"TALK", optTALK},
  };
  for (size_t i = 0; i < std::size(shown); ++i)
    std::printf("%-9s - %-3s%s", shown[i].name, g_opt[shown[i].slot] ? "ON" : "OFF",
                i % 2 == 0 ? "    " : "\n");
}

}  // namespace

bool validRno() {
  const int recno = dbRECNO(selectedArea);
  return recno >= 1 && recno <= dbRMAX(selectedArea);
}

void dspRnoDel() {
  constexpr size_t width = 5;
  std::string text = std::to_string(dbRECNO(selectedArea));
  text.insert(0, width - std::min(text.size(), width), '0');
  SayTxt(0, "");
  SayTxt(-1, text += dbDELETED(selectedArea) ? " *" : "  ");
}

void dspFlds() {
  for (int field = 0; field < dbCOLS(selectedArea); ++field) {
    SayTxt(-1, dbVal(selectedArea, field));
    SayTxt(-1, " ");
  }
}

std::string SourceText(const std::string& source) {
  std::string content = qs2s(source);
  return s2qs(content) == source ? content : source;
}

int dspExpr(Expr& e) {
  if (ScanCompile(e) != 0) return -1;
  SayVal(-1, RunExpr(e));
  return 0;
}

void OpUse(Operands& o) {
  const std::string& name = o.text();
  if (dbOPEN(selectedArea)) dbClose(selectedArea);
  if (name == "-") return;
  const int result = dbOpen(selectedArea, name + ".dbf");
  if (result == dbfInUse)
    FileErr(result, name + ".dbf");
  else if (result == dbfClosed)
    _tell("FILE DOES NOT EXIST");
  else if (result < 0 && !ReadHasFailed())
    _tell("NOT A dBASE II DATABASE");
}

void OpSelect(Operands& o) {
  static constexpr AreaName names[] = {{"A", 0}, {"B", 1},       {"C", 2},
                                       {"D", 3}, {"PRIMARY", 0}, {"SECONDARY", 1}};
  const std::string word = strUpper(o.text());
  for (const AreaName& n : names) {
    if (!Match4(word, n.name)) continue;
    dbSelect(n.area);
    return;
  }
  ArgErr("SELECT {PRIMARY|SECONDARY|A-D}");
}

void OpDGoto(Operands& o) {
  if (DbChk() && dbSkipTo(selectedArea, o.integer()) != 0) SetErr("RECORD NOT IN INDEX", "");
}

void OpSkip(Operands& o) {
  if (!DbChk()) return;
  dbSkip(selectedArea, o.integer());
  if (g_opt[optTALK]) std::printf("RECORD: %05d\n", dbRECNO(selectedArea));
}

void OpEOF(Operands& o) {
  _answer(o, [] { return dbEOF(selectedArea) ? -1 : 0; });
}

void OpDELETED(Operands& o) {
  _answer(o, [] { return dbDELETED(selectedArea) ? -1 : 0; });
}

void OpRECNO(Operands& o) {
  if (!DbChk()) return o.keep();
  if (!o.list().empty()) {
    ArgErr("RECNO()");
    return o.keep();
  }
  o.result(Value::ofCount(dbRECNO(selectedArea)));
}

void OpDsp(Operands& o) {
  if (!DbChk() || !validRno()) return;
  const Lines values = o.list();
  dspRnoDel();
  for (const std::string& value : values) {
    SayVal(-1, value);
    SayTxt(-1, " ");
  }
  if (values.empty()) dspFlds();
  std::putchar('\n');
}

void OpDspStr(Operands&) {
  if (DbChk()) dbDispStruc(selectedArea);
}

void OpDspDbf(Operands&) {
  std::printf("\nDATABASE FILES   # RCDS    LAST UPDATE\n");
  for (const std::string& name : OS_GetFileList("*.DBF")) {
    int records = 0;
    std::string date;
    if (dbFileInfo(name, records, date) == 0)
      std::printf("%-16s %05d     %s\n", name.c_str(), records, date.c_str());
  }
  std::printf("\n\n");
}

void OpDspStat(Operands&) {
  constexpr int keyEsc = 27;
  std::printf("\n");
  const bool any = _sayTables();
  std::printf("\n");
  _sayIndexes();
  std::printf("\n");
  if (any && AskWait() == keyEsc) return;
  if (errnum) return;
  std::printf("\nTODAYS DATE        - %s\n", DateNow().c_str());
  if (!g_optval[optDEFAULT].empty())
    std::printf("DEFAULT DISK DRIVE - %s\n", g_optval[optDEFAULT].c_str());
  if (!g_optval[optALTERNATE].empty())
    std::printf("ALTERNATE FILE     - %s\n", g_optval[optALTERNATE].c_str());
  _saySettings();
  std::printf("\n");
}

}  // namespace mox
