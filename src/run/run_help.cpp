// The help browser.
//
// The help file is text. A line "#TOPIC", in upper case, heads the lines of a topic; the first
// byte of each of these is a column of its own that isn't shown: a blank, or W for a pause before
// the line.

#include <cstdio>
#include <string>

#include "host/host.h"
#include "host/path.h"
#include "run/handlers.h"
#include "run/run_input.h"
#include "session/files.h"

namespace mox {

namespace {

constexpr char helpFile[] = "moxhelp.txt";
// The folder of the installed one, from the program's folder on or absolute: the build tells it.
constexpr char installed[] = MOX_DATA;
constexpr int pageLines = 21;

// The help file of the current directory, else the installed one; null when there is neither.
File _openHelp() {
  File f = FileOpen(FnFind(helpFile), "rb");
  return f ? std::move(f) : FileOpen(TextOf(PathOf(OS_GetProgDir()) / installed / helpFile), "rb");
}

// Waits for a key: false when it ends the help.
bool _nextPage() {
  constexpr int keyEsc = 27;
  std::printf("\n");
  const int key = AskWait();
  if (key == keyEsc || key == keyEnd) return false;
  std::printf("\n");
  return true;
}

// Shows the lines up to the next head or the end of the file.
void _showTopic(TextReader& text) {
  std::string line;
  for (int shown = 0; text.read(maxLine, line) && line[0] != '#'; ++shown) {
    trim(rm_nl(line));
    if (shown >= pageLines || line[0] == 'W') {
      if (!_nextPage()) return;
      shown = 0;
    }
    std::printf("%s\n", line.empty() ? "" : line.c_str() + 1);
  }
}

}  // namespace

void OpHelp(Operands& o) {
  std::string head = "#";
  head += strUpper(o.content());
  const File f = _openHelp();
  if (!f) {
    std::printf("  %s file missing.\n", helpFile);
    return;
  }
  TextReader text(f.get());
  for (std::string line; text.read(maxLine, line);)
    if (trim(rm_nl(line)) == head) return _showTopic(text);
  std::printf("NO HELP MESSAGES FOUND\n");
}

}  // namespace mox
