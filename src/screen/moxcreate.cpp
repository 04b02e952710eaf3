#include "screen/moxcreate.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
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

namespace fs = std::filesystem;

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

// Makes the table beside its place and moves it there when it is whole, so that what stood there
// is lost to no half-made table: null, or what failed.
const char* _writeTable(const std::string& path, const std::vector<FieldDef>& fields) {
  const std::string fresh = path + ".$$$";
  DbfTable t;
  if (dbfCreate(t, fresh) != 0) {
    std::remove(fresh.c_str());
    return "CANNOT CREATE FILE";
  }
  int number = 0;
  for (const FieldDef& f : fields) dbfFld(t, ++number, f.name, f.type, f.width, f.decimals);
  const int written = dbfFld(t, 0, "", ' ', 0, 0);
  const int closed = dbfClose(t);
  std::error_code unmoved;
  if (written == 0 && closed == 0) fs::rename(fresh, path, unmoved);
  if (written == 0 && closed == 0 && !unmoved) return nullptr;
  std::remove(fresh.c_str());
  return unmoved ? "CANNOT CREATE FILE" : "CANNOT WRITE FILE";
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
  const char* const failed = _writeTable(path, fields);
  if (!failed) return 0;
  SetErr(failed, path);
  return -1;
}

int OpCreate(int depth, Stack& stk) {
  MoxCreate(stk[depth - 1]);
  return -1;
}

}  // namespace mox
