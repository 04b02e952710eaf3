#include "lang/source.h"

#include "session/error.h"
#include "session/misc.h"

namespace mox {

std::string curline;
int curlineno = 0;

void fail(std::string_view text) {
  SynErr(std::string(text) + StrFmt("\nLINE %d: ", curlineno + 1) + curline);
}

}  // namespace mox
