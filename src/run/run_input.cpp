// The steps that stop a program to ask the keyboard.

#include "run/run_input.h"

#include <cstdio>

#include "host/host.h"
#include "run/handlers.h"
#include "run/run_out.h"
#include "run/run_var.h"
#include "session/error.h"
#include "session/files.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"

namespace mox {

namespace {

void _askFor(const std::string& prompt) {
  PrTxt(qs2s(prompt));
  PrTxt(":");
}

// Reads what is typed: false when the run ends here, by the end of the input or by Ctrl-C.
bool _readTyped(std::string& line) {
  if (OS_ReadLine(maxLine, line)) {
    rm_nl(line);
    return true;
  }
  InputEnded();
  if (g_ended) std::printf("\n");
  return false;
}

// True when the line can stand for a number or a logical value. The error that a malformed value
// leaves stays while further lines are judged.
bool _isInput(std::string_view line) {
  const int before = errnum;
  errnum = errNone;
  const Typ typ = GetTyp(line);
  const bool accepted = errnum == errNone && (typ.type == 'N' || typ.type == 'L');
  if (before != errNone) errnum = before;
  return accepted;
}

}  // namespace

int AskWait() {
  std::printf("WAITING");
  const int key = _getch();
  std::printf("\n");
  if (key == keyEnd) InputEnded();
  return key;
}

int OpAccept(int depth, Stack& stk) {
  std::string line;
  _askFor(stk[depth - 1]);
  if (_readTyped(line)) stk[depth - 1] = s2qs(line);
  return 0;
}

int OpInput(int depth, Stack& stk) {
  std::string line;
  _askFor(stk[depth - 1]);
  while (_readTyped(line)) {
    if (_isInput(line)) {
      stk[depth - 1] = line;
      break;
    }
    std::printf("INPUT ERROR, RE-ENTER:");
  }
  return 0;
}

int OpWait(int depth, Stack& stk) {
  const int count = TxtToInt(stk[depth - 1]);
  const int key = g_opt[optTALK] ? AskWait() : _getch();
  if (key == keyEnd)
    InputEnded();
  else if (count == 1)
    PutV(strUpper(stk[depth - 2]), 0, 0,
         s2qs(std::string(1, key < 32 || key > 126 ? ' ' : static_cast<char>(key))));
  return -(count + 1);
}

}  // namespace mox
