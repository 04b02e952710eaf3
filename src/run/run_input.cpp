// The steps that stop a program to ask the keyboard.

#include "run/run_input.h"

#include <cstdio>

#include "host/host.h"
#include "run/handlers.h"
#include "run/run_out.h"
#include "run/run_var.h"
#include "screen/scr_line.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "session/session.h"
#include "session/value.h"

namespace mox {

namespace {

// Asks, and gives what the console shows of the question.
std::string _askFor(const std::string& prompt) {
  const std::string question = qs2s(prompt) + ":";
  PrTxt(question);
  return g_opt[optCONSOLE] ? question : "";
}

// Reads what is typed: false when the run ends here, by the end of the input or by Ctrl-C.
bool _readTyped(std::string_view question, std::string& line) {
  if (ScrReadAnswer(question, line)) {
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
  const FirstErr first;
  const Typ typ = GetTyp(line);
  return errnum == errNone && (typ.type == 'N' || typ.type == 'L');
}

}  // namespace

int AskWait() {
  std::printf("WAITING");
  const int key = _getch();
  std::printf("\n");
  if (key == keyEnd) InputEnded();
  return key;
}

void OpAccept(Operands& o) {
  std::string line;
  if (_readTyped(_askFor(o.text()), line)) o.result(s2qs(line));
}

void OpInput(Operands& o) {
  std::string line, question = _askFor(o.text());
  while (_readTyped(question, line)) {
    if (_isInput(line)) return o.result(line);
    question = "INPUT ERROR, RE-ENTER:";
    std::printf("%s", question.c_str());
  }
}

void OpWait(Operands& o) {
  const int key = g_opt[optTALK] ? AskWait() : _getch();
  if (key == keyEnd)
    InputEnded();
  else if (o.more())
    PutV(strUpper(o.text()), 0, 0,
         s2qs(std::string(1, key < 32 || key > 126 ? ' ' : static_cast<char>(key))));
}

}  // namespace mox
