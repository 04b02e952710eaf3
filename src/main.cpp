#include <string>

#include "host/host.h"
#include "run/prompt.h"
#include "session/misc.h"

int main(int argc, char** argv) {
  if (argc == 2 && mox::ArgGet(argc, argv, "-ver")) {
    mox::AppVersion();
    return 0;
  }
  mox::ansi_on();
  const std::string program = argc == 2 ? argv[1] : "";
  return mox::moxmain(argc == 2 ? &program : nullptr);
}
