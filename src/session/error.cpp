#include "session/error.h"

#include <cstdio>

#include "session/misc.h"

namespace mox {

int errnum = errNone;
std::optional<std::string> errmsg;
int errpc = 0;
std::string_view errstep;

int SetErr(std::string_view a, std::string_view b) {
  if (errnum != errNone) return -1;
  std::string text(a);
  text += ' ';
  text += b;
  errmsg = std::move(text);
  errnum = errSet;
  return 0;
}

int SynErr(std::string_view text) { return SetErr("*** SYNTAX ERROR ***", text); }

int ArgErr(std::string_view text) { return SetErr("ARG ERROR", text); }

int IntErr(std::string_view text) {
  std::string where = StrFmt("PC=%05d STEP=[", errpc);
  where += errstep;
  where += "] ";
  where += text;
  return SetErr("INTERNAL ERROR", where);
}

ErrorSlot TakeErr() {
  ErrorSlot slot{errnum, errnum == errNone ? std::nullopt : errmsg};
  errnum = errNone;
  return slot;
}

void PutErr(const ErrorSlot& slot) {
  errnum = slot.num;
  if (slot.num != errNone) errmsg = slot.msg;
}

void SayErr2() {
  if (errmsg) std::printf("%s\n", errmsg->c_str());
}

}  // namespace mox
