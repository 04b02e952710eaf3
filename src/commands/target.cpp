#include "commands/target.h"

#include "session/error.h"
#include "store/db.h"

namespace mox {

bool TargetPath(const std::string& name, std::string& path) {
  path = FnFind(name);
  if (!dbInUse(path)) return true;
  SetErr("FILE IS IN USE", path);
  return false;
}

int TargetOpen(DbfTable& t, const std::string& path) {
  const int result = dbfOpen(t, path);
  dbfBuffer(t);
  return result;
}

int TargetClose(DbfTable& t, int result) {
  if (!dbfOPEN(t)) return 0;
  const std::string path = t.name;
  const int closed = dbfClose(t);
  if (closed != 0 || (result != 0 && result != dbfFull)) {
    TargetLost(path);
    return -1;
  }
  if (result == 0) return 0;
  SetErr("TABLE IS FULL", path);
  return -1;
}

void TargetLost(const std::string& path) {
  FileDrop(path);
  SetErr("CANNOT WRITE FILE", path);
}

}  // namespace mox
