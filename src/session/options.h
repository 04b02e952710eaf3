// The options of the session: what SET changes.
//
// An option is a slot of two parallel arrays, a flag and a text; the slot is the option's place
// in the table of names. Every option has both, whichever of them anything reads.
#pragma once

#include <string>
#include <string_view>

namespace mox {

// clang-format off
enum OptSlot {
  optC0, optC1, optC2, optR1, optALTERNATE, optBELL, optCARRY, optCOLON, optCONFIRM, optCONSOLE,
  optDATE, optDEFAULT, optDELETED, optDEBUG, optECHO, optEJECT, optESCAPE, optEXACT, optFORMAT,
  optHEADING, optINTENSITY, optLINKAGE, optMARGIN, optPRINT, optRAW, optSCREEN, optSTEP, optTALK,
  optNamed,       // number of slots that a name reaches
  optINSERT = 29, // insert mode of field entry; no name reaches it
  optSlots = 40,
};
// clang-format on

extern int g_opt[optSlots];
extern std::string g_optval[optSlots];  // an unset text is empty

void OptDefaults();

std::string_view OptName(int slot);  // of one of the named

// Slot of a name, compared ignoring case and otherwise whole; -1 when there is none.
int OptFind(std::string_view name);

}  // namespace mox
