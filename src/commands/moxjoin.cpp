// The condition runs once for each pair. The commonest one, a field of one area equal to a field of
// the other, needs no run: the records of area 1 are noted by their value once, and each record of
// area 0 finds its partners there. The pairs, their order and the areas' places are the same.

#include "commands/moxjoin.h"

#include <optional>
#include <unordered_map>
#include <vector>

#include "commands/target.h"
#include "run/handlers.h"
#include "run/rundb_scan.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"
#include "store/db.h"

namespace mox {

namespace {

constexpr int primary = 0, secondary = 1;
constexpr int exactDigits = 16;  // behind the point of a number that must stay what it is

// Where a field of the target comes from.
struct JoinField {
  int area;
  int field;
};

void _addNames(int area, Lines& names) {
  for (int i = 0; i < dbCOLS(area); ++i) names.push_back(af(area, dbName(area, i)));
}

Lines _joinNames(const Lines& fields) {
  Lines names;
  for (const std::string& name : fields) names.push_back(strUpper(name));
  if (!names.empty()) return names;
  _addNames(primary, names);
  _addNames(secondary, names);
  return names;
}

// The fields of the names, at most as many as a table holds: false after a report.
bool _joinFields(const Lines& names, std::vector<JoinField>& fields) {
  for (const std::string& name : names) {
    const int area = af2a(name);
    if (area < 0) {
      SynErr("AREA");
      return false;
    }
    const int field = dbFno(area, af2f(name));
    if (field < 0) {
      SetErr("FIELD CANNOT BE FOUND", name);
      return false;
    }
    if (fields.size() < maxFields) fields.push_back({area, field});
  }
  return true;
}

// Begins the target: 0, or what refused it.
int createDbf(const std::string& path, const std::vector<JoinField>& fields, DbfTable& t) {
  if (const int made = dbfCreate(t, path); made != 0) return made;
  int number = 0;
  for (const JoinField& f : fields)
    dbfFld(t, ++number, dbName(f.area, f.field), dbTyp(f.area, f.field), dbLen(f.area, f.field),
           dbDec(f.area, f.field));
  return dbfFld(t, 0, "", ' ', 0, 0);
}

int _addPair(DbfTable& t, const std::vector<JoinField>& fields) {
  if (const int result = dbfBegin(t); result != 0) return result;
  int to = 0;
  for (const JoinField& f : fields) fldput(t, to++, dbVal(f.area, f.field));
  return dbfAdd(t);
}

// The fields of a condition "field of one area = field of the other"; a text when the left one is.
struct Equality {
  int fields[2];  // by area
  bool isText;
};

// The field that the three steps from a place on read, or nothing.
std::optional<JoinField> _fieldRead(const Program& p, size_t at) {
  if (p[at].core != Core::PUSH || p[at + 1].core != Core::PUSH || p[at + 1].operand() != "1" ||
      !p[at + 2].entry || p[at + 2].entry->handler != OpGetV)
    return std::nullopt;
  const std::string_view name = p[at].operand();
  const std::string_view bare = af2f(name);
  const int area = bare.size() == name.size() ? primary : af2a(name);
  const int field = area < 0 ? -1 : dbFno(area, bare);
  return field < 0 ? std::nullopt : std::optional(JoinField{area, field});
}

bool _isText(int area, int field) { return dbTyp(area, field) != 'N' && dbTyp(area, field) != 'L'; }

std::optional<Equality> _equality(const Program& p) {
  constexpr size_t steps = 8;  // two fields, CMP, END
  if (p.size() != steps || p[6].core != Core::CMP || p[6].operand() != "EQ" || g_opt[optR1])
    return std::nullopt;
  const std::optional<JoinField> left = _fieldRead(p, 0);
  const std::optional<JoinField> right = _fieldRead(p, 3);
  if (!left || !right || left->area + right->area != primary + secondary ||
      left->area == right->area)
    return std::nullopt;
  Equality e{{}, _isText(left->area, left->field)};
  e.fields[left->area] = left->field;
  e.fields[right->area] = right->field;
  return e;
}

// What two records must have in common, as the comparison of their values sees it.
std::string _common(const Equality& e, int area) {
  if (_isText(primary, e.fields[primary]) && _isText(secondary, e.fields[secondary]))
    return std::string(dbVal(area, e.fields[area]));
  const std::string name = af(area, dbName(area, e.fields[area]));
  const std::string value = GetDb(name).value_or(Value()).text();
  const std::string_view bare = std::string_view(value).substr(value.starts_with('"') ? 1 : 0);
  if (e.isText) return std::string(bare);
  return FmtSci(TxtToDbl(bare) + 0.0, exactDigits);  // + 0.0: no minus zero
}

// True on a record, until Ctrl-C ends the statement.
bool _goesOn(int area) { return !dbEOF(area) && !Interrupted(); }

int _joinEqual(DbfTable& t, const std::vector<JoinField>& fields, const Equality& e) {
  dbSkipTo(primary, 0);
  if (dbEOF(primary)) return 0;
  std::unordered_map<std::string, std::vector<int>> partners;
  for (dbSkipTo(secondary, 0); _goesOn(secondary); dbSkip(secondary, 1))
    partners[_common(e, secondary)].push_back(dbRECNO(secondary));
  const int last = dbRECNO(secondary);
  for (; _goesOn(primary); dbSkip(primary, 1)) {
    const auto found = partners.find(_common(e, primary));
    if (found == partners.end()) continue;
    for (const int recno : found->second) {
      dbSkipTo(secondary, recno);
      if (const int result = _addPair(t, fields); result != 0) return result;
    }
  }
  if (last > 0) dbSkipTo(secondary, last);  // where the walk of each pair would leave it
  dbSkip(secondary, 1);
  return 0;
}

int _joinPairs(DbfTable& t, const std::vector<JoinField>& fields, Expr& condition) {
  for (dbSkipTo(primary, 0); _goesOn(primary); dbSkip(primary, 1)) {
    for (dbSkipTo(secondary, 0); _goesOn(secondary); dbSkip(secondary, 1)) {
      if (!Qualifies(condition)) continue;
      if (const int result = _addPair(t, fields); result != 0) return result;
    }
  }
  return 0;
}

int _joinRecords(DbfTable& t, const std::vector<JoinField>& fields, Expr& condition) {
  if (const std::optional<Equality> e = _equality(*condition.program))
    return _joinEqual(t, fields, *e);
  for (const int area : {primary, secondary}) dbKeepNumbers(area, true);
  const int result = _joinPairs(t, fields, condition);
  for (const int area : {primary, secondary}) dbKeepNumbers(area, false);
  return result;
}

}  // namespace

bool JoinsEqualFields(Expr& condition) {
  return ScanCompile(condition) == 0 && _equality(*condition.program);
}

int moxJoin(const std::string& filename, const std::string& condition, const Lines& fields) {
  if (!dbOPEN(secondary)) {
    SetErr("NO SECONDARY DATABASE FILE IN USE", "");
    return -1;
  }
  std::vector<JoinField> joined;
  Expr test(condition, scanSteps);
  if (!_joinFields(_joinNames(fields), joined) || ScanCompile(test) != 0) return -1;
  const std::string name = FnExtDflt(filename, ".dbf");
  DbfTable t;
  if (const int made = createDbf(name, joined, t); made != 0) {
    if (made == dbfCantCreate)
      SetErr("CANNOT CREATE FILE", "");
    else
      FileErr(made, name);
    return -1;
  }
  return TargetClose(t, _joinRecords(t, joined, test));
}

void OpJoin(Operands& o) {
  if (!DbChk()) return;
  const std::string& filename = o.text();
  const std::string& condition = o.text();
  moxJoin(filename, condition, o.list());
}

}  // namespace mox
