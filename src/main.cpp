#include <cstdio>
#include <filesystem>
#include <string>

#include "host/host.h"
#include "host/path.h"
#include "run/prompt.h"
#include "session/error.h"
#include "session/misc.h"

namespace {

constexpr char usage[] = R"(Usage: mox [FILE]
       mox --version | -ver
       mox --help

Without FILE the prompt, a dot, takes statements from the standard input, a line
each. HELP lists the topics of the help, HELP MOX is the first of them, and QUIT
leaves.

With FILE that command file is run, and MOX ends. ".cmd" is added when the name
has no dot. The name is one word: a letter or underline, then letters, digits,
underlines, dots or colons. A folder in front of it is entered first, so that
the file finds its tables there.

The exit status is 0, also when the file ended with an error: the error is shown
on the standard output.
)";

// Enters the folder in front of a command file's name and takes it off: false when it can't.
bool enterFolder(std::string& file) {
  const std::filesystem::path path = mox::PathOf(file);
  if (!path.has_parent_path()) return true;
  std::error_code ec;
  std::filesystem::current_path(path.parent_path(), ec);
  file = mox::NameOf(path);
  return !ec;
}

}  // namespace

int main(int argc, char** argv) {
  mox::Lines arguments = mox::OS_Arguments(argc, argv);
  const bool single = arguments.size() == 2;
  if (single && (mox::ArgGet(arguments, "-ver") || mox::ArgGet(arguments, "--version"))) {
    mox::AppVersion();
    return 0;
  }
  if (single && mox::ArgGet(arguments, "--help")) {
    std::fputs(usage, stdout);
    return 0;
  }
  mox::ansi_on();
  std::string program = single ? arguments[1] : "";
  if (!enterFolder(program)) {
    mox::SetErr("COMMAND FILE CANNOT BE FOUND\n", "DO CANCELLED");
    mox::SayErr2();
    return 0;
  }
  return mox::moxmain(single ? &program : nullptr);
}
