// Waiting for a key.
#pragma once

namespace mox {

// Prints "WAITING", waits for a key, ends the line, and returns the key; at the end of the input
// the run and the session end and the result is keyEnd.
int AskWait();

}  // namespace mox
