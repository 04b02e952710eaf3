// The key expression of an index, as the store sees it: a text that gives the key of the current
// record. How it is compiled and run is handed in, so that an index needs no grammar and no
// machine.
#pragma once

#include <functional>
#include <string>

#include "session/value.h"

namespace mox {

struct Key {
  // Makes ready to run, again and again if need be: 0, or -1 when the text is no expression.
  std::function<int()> compile;
  // Runs on the current record: its value, which holds until the next run, or null. An error is
  // left in the error slot.
  std::function<const Value*()> run;
};

// Makes a key expression of its text. Set once, before an index is opened.
extern Key (*g_makeKey)(const std::string& text);

}  // namespace mox
