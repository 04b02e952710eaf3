#include "session/options.h"

#include "session/misc.h"

namespace mox {

int g_opt[optSlots];
std::string g_optval[optSlots];

namespace {

const char* const optNames[optNamed] = {
    "C0",      "C1",      "C2",      "R1",    "ALTERNATE", "BELL",    "CARRY",
    "COLON",   "CONFIRM", "CONSOLE", "DATE",  "DEFAULT",   "DELETED", "DEBUG",
    "ECHO",    "EJECT",   "ESCAPE",  "EXACT", "FORMAT",    "HEADING", "INTENSITY",
    "LINKAGE", "MARGIN",  "PRINT",   "RAW",   "SCREEN",    "STEP",    "TALK",
};

}  // namespace

void OptDefaults() {
  for (int i = 0; i < optSlots; ++i) {
    g_opt[i] = 0;
    g_optval[i].clear();
  }
  for (OptSlot on : {optCOLON, optCONSOLE, optINTENSITY, optSCREEN, optTALK}) g_opt[on] = 1;
}

std::string_view OptName(int slot) { return optNames[slot]; }

int OptFind(std::string_view name) {
  for (int i = 0; i < optNamed; ++i)
    if (StrICmp(name, optNames[i]) == 0) return i;
  return -1;
}

}  // namespace mox
