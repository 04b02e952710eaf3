// Statements in the test's process at which keys are typed; what they print goes nowhere.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "host/host.h"
#include "statements.h"

namespace mox {

inline int g_keys[2];  // a pipe in place of the keyboard

inline void TypeFromPipe() {
  if (pipe(g_keys) != 0 || dup2(g_keys[0], STDIN_FILENO) < 0) std::abort();
}

// The error of the statements, or nothing. What they leave of the keys is thrown away.
inline std::string Do(const std::string& source, const std::string& typed = "") {
  static const int out = dup(STDOUT_FILENO), nowhere = open("/dev/null", O_WRONLY);
  if (write(g_keys[1], typed.data(), typed.size()) != static_cast<ssize_t>(typed.size()))
    return "the keys don't fit";
  std::fflush(stdout), dup2(nowhere, STDOUT_FILENO);
  const std::string told = RunSource(source);
  while (_kbhit()) _getch();
  std::fflush(stdout), dup2(out, STDOUT_FILENO);
  return told;
}

// The status of the body, which is run in a process of its own: the host's console keeps in mind
// what its input is.
template <class Body>
int InChild(Body body) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) {
    TypeFromPipe();
    const bool failed = body();
    std::fflush(stdout);
    _exit(failed);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

}  // namespace mox
