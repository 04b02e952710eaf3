#include "commands/target.h"

#include "session/error.h"
#include "session/session.h"

namespace mox {

bool TargetFree(int made, const std::string& name) {
  if (made != dbfInUse && made != dbfCantWrite) return true;
  FileErr(made, name);
  return false;
}

int TargetClose(DbfTable& t, int result) {
  if (!dbfOPEN(t)) return 0;
  const std::string path = t.name;
  if (result == 0 && !Interrupted()) result = dbfClose(t);
  t = DbfTable{};
  if (result == dbfFull)
    SetErr("TABLE IS FULL", path);
  else if (result != 0)
    FileErr(dbfCantWrite, path);
  return result == 0 && !Interrupted() ? 0 : -1;
}

}  // namespace mox
