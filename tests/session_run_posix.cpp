#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "session_run.h"

namespace {

constexpr unsigned kSeconds = 20;
constexpr rlim_t kFileBytes = 256u << 20;  // a run that never stops printing stops here

bool Redirect(const std::string& path, int mode, int stream) {
  const int file = open(path.c_str(), mode, 0600);
  return file == stream || (file >= 0 && dup2(file, stream) >= 0 && close(file) == 0);
}

}  // namespace

std::string RunProgram(std::string program, std::vector<std::string> args,
                       const std::filesystem::path& dir, const std::filesystem::path& streams) {
  std::vector<char*> argv{program.data()};
  for (auto& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);
  const pid_t pid = fork();
  if (pid < 0) return "the program can't be started";
  if (pid == 0) {
    const rlimit limit{kFileBytes, kFileBytes};
    const int made = O_WRONLY | O_CREAT | O_TRUNC;
    if (!Redirect(streams / "in", O_RDONLY, 0) || !Redirect(streams / "out", made, 1) ||
        !Redirect(streams / "err", made, 2) || chdir(dir.c_str()) < 0 ||
        setrlimit(RLIMIT_FSIZE, &limit) < 0)
      _exit(126);
    alarm(kSeconds);  // goes on in the program
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0)
    if (errno != EINTR) return "the program can't be waited for";
  if (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM) return "time limit passed";
  if (WIFSIGNALED(status)) return "ended by signal " + std::to_string(WTERMSIG(status));
  if (WEXITSTATUS(status) != 0) return "ended with status " + std::to_string(WEXITSTATUS(status));
  return {};
}
