#include "lang/compile_state.h"

#include "session/error.h"
#include "session/misc.h"

namespace mox {

void fail(const CompileState& state, std::string_view text) {
  SynErr(std::string(text) + StrFmt("\nLINE %d: ", state.curlineno + 1) +
         std::string(state.curline));
}

}  // namespace mox
