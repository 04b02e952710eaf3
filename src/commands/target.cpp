#include "commands/target.h"

#include "session/error.h"
#include "session/session.h"

namespace mox {

bool TargetBegun(const DbfTable& t, int made, const std::string& name) {
  if (!dbfOPEN(t)) FileErr(made, name);
  return dbfOPEN(t);
}

int TargetClose(DbfTable& t, int result) {
  const std::string path = t.name;
  const bool stopped = Interrupted();
  if (result == 0 && !stopped) result = dbfClose(t);
  t = DbfTable{};
  if (result == dbfFull)
    SetErr("TABLE IS FULL", path);
  else if (result != 0)
    FileErr(result, path);
  return result == 0 && !stopped ? 0 : -1;
}

}  // namespace mox
