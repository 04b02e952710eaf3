#include "screen/moxcreate.h"

#include <cstdio>
#include <vector>

#include "host/host.h"
#include "run/handlers.h"
#include "session/error.h"
#include "session/files.h"
#include "session/number.h"
#include "session/session.h"
#include "store/db.h"
#include "store/dbf.h"

namespace mox {

namespace {

constexpr size_t maxFirstWord = 254;

int _refuse(const char* message, int result) {
  std::printf("%s\n", message);
  return result;
}

// Reads the fields: false at the end of the input.
bool _askFields(std::vector<FieldDef>& fields) {
  std::printf("ENTER RECORD STRUCTURE AS FOLLOWS:\n FIELD   NAME,TYPE,WIDTH,DECIMAL PLACES\n");
  while (fields.size() < static_cast<size_t>(maxFields)) {
    std::printf(" %03d     ", static_cast<int>(fields.size()) + 1);
    std::string line;
    if (!OS_ReadLine(maxLine, line)) {
      std::printf("\n");
      return false;
    }
    if (isBlank(rm_nl(line))) return true;
    FieldDef field;
    if (_CrFld(split(line, ","), field) == 0) fields.push_back(field);
  }
  return true;
}

}  // namespace

int _CrFld(const Lines& words, FieldDef& field) {
  const auto number = [&](size_t i) { return i < words.size() ? TxtToInt(words[i]) : 0; };
  if (words.size() < 2 || words[0].empty() || words[0].size() > maxFirstWord)
    return _refuse("BAD NAME FIELD", -1);
  field.name = strUpper(words[0].substr(0, maxFieldName));
  field.type = words[1].empty() ? ' ' : UpperChr(words[1][0]);
  if (std::string_view("CNL").find(field.type) == std::string_view::npos)
    return _refuse("BAD TYPE FIELD", -2);
  field.width = field.type == 'L' ? 1 : number(2);
  field.decimals = field.type == 'C' ? 0 : number(3);
  if (field.width < 1 || field.width > maxFieldWidth) return _refuse("BAD WIDTH FIELD", -3);
  return 0;
}

int MoxCreate(const std::string& filename) {
  const std::string path = FnExt(filename, ".dbf");
  if (dbInUse(path) >= 0) {
    SetErr("FILE IS IN USE", path);
    return -1;
  }
  std::vector<FieldDef> fields;
  if (!_askFields(fields)) {
    InputEnded();
    return -1;
  }
  DbfTable t;
  if (dbfCreate(t, path) != 0) {
    SetErr("CANNOT CREATE FILE", path);
    return -1;
  }
  int number = 0;
  for (const FieldDef& f : fields) dbfFld(t, ++number, f.name, f.type, f.width, f.decimals);
  int result = dbfFld(t, 0, "", ' ', 0, 0);
  if (int closed = dbfClose(t); result == 0) result = closed;
  if (result != 0) SetErr("CANNOT WRITE FILE", path);
  return result == 0 ? 0 : -1;
}

int OpCreate(int depth, Stack& stk) {
  MoxCreate(stk[depth - 1]);
  return -1;
}

}  // namespace mox
