// The programs of a POSIX host: starting one, and where this one stands.
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

#include "host/file.h"
#include "host/host.h"
#include "host/posix.h"

extern char** environ;

namespace mox {

namespace {

// Words of a command line: blanks part them, single and double quotes hold them together, and a
// backslash takes the next byte as it is, between double quotes only a quote or a backslash.
std::vector<std::string> _shellWords(const std::string& text) {
  std::vector<std::string> words;
  bool inWord = false;
  char quote = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (!quote && (c == ' ' || c == '\t' || c == '\n')) {
      inWord = false;
      continue;
    }
    if (!inWord) words.emplace_back();
    inWord = true;
    if (quote ? c == quote : c == '"' || c == '\'') {
      quote = quote ? 0 : c;
      continue;
    }
    const char next = i + 1 < text.size() ? text[i + 1] : 0;
    if (c == '\\' && next && (!quote || (quote == '"' && (next == '"' || next == '\\')))) {
      c = next;
      ++i;
    }
    words.back() += c;
  }
  return words;
}

// While a program runs, the keys that stop one are for it alone. It starts with them as they were
// for this one, or at their default where this one handles them.
class KeysForProgram {
 public:
  KeysForProgram() {
    posix_spawnattr_init(&_start);
    sigset_t handled;
    sigemptyset(&handled);
    struct sigaction ignore = {};
    ignore.sa_handler = SIG_IGN;
    for (size_t i = 0; i < std::size(_signals); ++i) {
      sigaction(_signals[i], &ignore, &_before[i]);
      if (_before[i].sa_handler != SIG_IGN) sigaddset(&handled, _signals[i]);
    }
    posix_spawnattr_setsigdefault(&_start, &handled);
    posix_spawnattr_setflags(&_start, POSIX_SPAWN_SETSIGDEF);
  }
  ~KeysForProgram() {
    for (size_t i = 0; i < std::size(_signals); ++i) sigaction(_signals[i], &_before[i], nullptr);
    posix_spawnattr_destroy(&_start);
  }
  KeysForProgram(const KeysForProgram&) = delete;
  KeysForProgram& operator=(const KeysForProgram&) = delete;
  const posix_spawnattr_t* start() const { return &_start; }

 private:
  static constexpr int _signals[] = {SIGINT, SIGQUIT};
  struct sigaction _before[std::size(_signals)];
  posix_spawnattr_t _start;
};

// Runs the program and gives what waitpid tells of its end; -1 when it can't be started.
int _run(std::vector<char*> argv) {
  const KeysForProgram keys;
  pid_t pid = 0;
  if (posix_spawnp(&pid, argv[0], nullptr, keys.start(), argv.data(), environ) != 0) return -1;
  int status = 0;
  while (waitpid(pid, &status, 0) < 0)
    if (errno != EINTR) return -1;
  return status;
}

}  // namespace

std::vector<std::string> OS_Arguments(int argc, char** argv) { return {argv, argv + argc}; }

int OS_RunProgWait(const std::string& program, const std::string& args, int) {
  std::vector<std::string> words = _shellWords(args);
  std::string name = program;
  std::vector<char*> argv{name.data()};
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  std::fflush(nullptr);
  OS_CountWait();
  PosixLineMode();
  termios found;
  const bool terminal = tcgetattr(STDIN_FILENO, &found) == 0;
  const int status = _run(std::move(argv));
  if (terminal) tcsetattr(STDIN_FILENO, TCSADRAIN, &found);  // whatever the program left
  if (status == -1) return -1;
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGINT) raise(SIGINT);  // Ctrl-C ended both
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::optional<std::string> OS_Variable(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  if (!value) return std::nullopt;
  return value;
}

std::string OS_StateDir() {
  for (const auto& [name, below] :
       {std::pair("XDG_STATE_HOME", ""), std::pair("HOME", "/.local/state")}) {
    const auto folder = OS_Variable(name);
    if (folder && folder->starts_with('/')) return *folder + below;
  }
  return {};
}

std::string OS_GetProgDir() {
  std::error_code ec;
  const auto path = std::filesystem::read_symlink("/proc/self/exe", ec);
  return path.has_parent_path() ? path.parent_path().string() : ".";
}

}  // namespace mox
