// The host's keys and lines, its modes and signals, on a pseudo-terminal.
#include <gtest/gtest.h>

#if __has_include(<pty.h>)
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

#include "host/host.h"
#include "temp_dir.h"

namespace mox {

namespace {

constexpr int kPatience = 20000;  // ms

// A program on a terminal of its own; no pid where no pseudo-terminal can be had.
struct Terminal {
  pid_t pid;
  int fd = -1;
  std::string seen;
  std::string all;    // that was ever seen
  std::string found;  // the mode in which the program finds the terminal

  explicit Terminal(const std::function<void()>& program) {
    pid = forkpty(&fd, nullptr, nullptr, nullptr);
    if (pid == 0) {
      raise(SIGSTOP);
      program();
      std::fflush(stdout);
      _exit(0);
    }
    if (pid < 0) return;
    waitpid(pid, nullptr, WUNTRACED);
    found = mode();
    kill(pid, SIGCONT);
  }
  ~Terminal() {
    if (pid < 0) return;
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    close(fd);
  }
  Terminal(const Terminal&) = delete;

  // Types keys and reads on until the text appears; what was seen with it is forgotten.
  bool type(const std::string& keys, const std::string& text) {
    if (write(fd, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size())) return false;
    pollfd p = {fd, POLLIN, 0};
    size_t at;
    while ((at = seen.find(text)) == seen.npos) {
      char bytes[1024];
      if (poll(&p, 1, kPatience) <= 0) return false;
      const ssize_t n = read(fd, bytes, sizeof bytes);
      if (n <= 0) return false;
      seen.append(bytes, static_cast<size_t>(n));
      all.append(bytes, static_cast<size_t>(n));
    }
    seen.erase(0, at + text.size());
    return true;
  }
  // How the program ended: its exit status, or the signal.
  int ended() {
    siginfo_t end = {};
    EXPECT_EQ(waitid(P_PID, static_cast<id_t>(pid), &end, WEXITED | WNOWAIT), 0);
    return end.si_status;
  }
  // True when the mode soon is the one that was found, or another: it is set behind what is printed.
  bool comesTo(bool asFound) const {
    for (int ms = 0; ms < kPatience; ms += 10, poll(nullptr, 0, 10))
      if ((mode() == found) == asFound) return true;
    return false;
  }
  std::string mode() const {
    termios t = {};
    EXPECT_EQ(tcgetattr(fd, &t), 0);
    return std::to_string(t.c_iflag) + ' ' + std::to_string(t.c_lflag) + ' ' +
           std::string(reinterpret_cast<const char*>(t.c_cc), sizeof t.c_cc);
  }
};

// Tells keys up to a q, then, when a byte comes from the other side, a line, and so on.
int g_goOn[2];
void KeysAndLines() {
  for (char byte;;) {
    std::printf("keys");
    for (int key = 0; key != 'q';) std::printf("<%d>", key = _getch());
    std::printf("busy");
    std::fflush(stdout);
    if (read(g_goOn[0], &byte, 1) != 1) return;
    std::printf("line");
    std::string line;
    if (!OS_ReadLine(80, line)) return;
    std::printf("[%s]", line.c_str());
  }
}

void Mox(const char* term) {
  setenv("TERM", term, 1);
  setenv("MOX_HISTORY", "off", 1);
  execl(MOX_PROGRAM, MOX_PROGRAM, nullptr);
}

// Runs the program as a job, and continues it after an Enter when it has been stopped.
void JobShell() {
  signal(SIGTTOU, SIG_IGN);
  const pid_t job = fork();
  if (job == 0) {
    setpgid(0, 0);
    tcsetpgrp(STDIN_FILENO, getpid());
    signal(SIGTTOU, SIG_DFL);
    Mox("xterm");
  }
  int status = 0;
  waitpid(job, &status, WUNTRACED);
  tcsetpgrp(STDIN_FILENO, getpgrp());
  std::printf("stopped by %d", WIFSTOPPED(status) ? WSTOPSIG(status) : -1);
  std::fflush(stdout);
  std::getchar();
  tcsetpgrp(STDIN_FILENO, job);
  kill(-job, SIGCONT);
  waitpid(job, &status, 0);
  std::printf("ended with %d", WEXITSTATUS(status));
}

}  // namespace

TEST(Terminal, KeysAndLinesAlternate) {
  ASSERT_EQ(pipe(g_goOn), 0);
  Terminal t(KeysAndLines);
  if (t.pid < 0) GTEST_SKIP() << "No pseudo-terminal can be had here";
  ASSERT_TRUE(t.type("", "keys"));
  const std::string keyMode = t.mode();
  for (int key : {1, 3, 4, 17, 19, 21, 22, 23, 26, 28, 200})
    EXPECT_TRUE(t.type({static_cast<char>(key)}, "<" + std::to_string(key) + ">")) << t.seen;
  EXPECT_TRUE(t.type("\r\x7f", "<13><8>")) << t.seen;
  EXPECT_TRUE(t.type("\x1b", "<27>")) << t.seen;
  EXPECT_TRUE(t.type("\x1b[A\x1bOB\x1b[3~\x1b[1;5C\x1bO5P\x1b[21~x\x1bOM\x1bOp",
                     "<224><72><224><80><224><83><224><77><0><59><0><68><120><13><48>"))
      << t.seen;
  // Whatever has no code is one key: unknown sequences, a broken one, Alt with a letter, letters.
  EXPECT_TRUE(t.type("\x1b[99~\x1bOc\x1b[[Z\x1b[1;2\x18\x1bz\x1b\xc3\xa4\xd9\x80\xe0\xa4\x85x",
                     "<255><255><255><255><24><255><255><255><255><120>"))
      << t.seen;
  // Between two keys they aren't echoed, and Ctrl-C stops the program.
  EXPECT_TRUE(t.type("q", "<113>busy"));
  termios busy = {};
  tcgetattr(t.fd, &busy);
  EXPECT_EQ(busy.c_lflag & (ECHO | ICANON | ISIG), static_cast<tcflag_t>(ISIG));
  // Typed ahead: what follows the q is a line, shown and edited when it is read.
  EXPECT_TRUE(
      t.type("x\x15\x7fyz\x1b[D\x16\xc3\xa4\x7f\x7f"
             "b\rqcde\x7f",
             ""))
      << t.seen;
  ASSERT_EQ(write(g_goOn[1], "gg", 2), 2);
  EXPECT_TRUE(t.type("", "linex\b \byz\xc3\xa4\b \b\b \bb\r\n[yb\r\n]keys<113>busyline")) << t.seen;
  EXPECT_NE(t.mode(), keyMode);
  EXPECT_TRUE(t.type("xy\x7fz\n", "xy\b \bz\r\n[cdxz\r\n]keys")) << t.seen;
  EXPECT_EQ(t.mode(), keyMode);
}

// On a terminal that can't move its cursor lines are the terminal's, and it stands as it was found
// whenever the prompt is back. On others it does whenever no line or key is awaited.
TEST(Terminal, InterruptsAndSignals) {
  const TempDir folder;
  PutBytes("poll.cmd", "? 6*8\nDO WHILE INKEY()<>\"q\"\nENDDO\n");
  PutBytes("loop.cmd", "? 6*7\nDO WHILE 1=1\nENDDO\n");
  PutBytes("keys.cmd", "DO WHILE 1=1\nWAIT\nENDDO\n");
  const std::string interrupt = "\x03", stopped = "\n*** INTERRUPTED \r\n. ";
  const std::pair<std::string, std::string> cases[] = {
      {"", ". "},
      {"IF 1=1\n", "> "},
      {"? 8" + interrupt, "^C\r\n. "},
      {"DO loop\n", "42"},
      {interrupt, stopped},
      {"DO poll\n", "48 \r\n"},
      {"q", ". "},
      {"ACCEPT \"name\" TO X\n", "name:"},
      {"abc" + interrupt, stopped},
      {"DO keys\n", "WAITING"},
      {"x", "WAITING"},
      {interrupt, stopped},
      {"? RUN(\"sh\",\"-c \"\"stty raw -echo; exit 4\"\"\")\n", "4 \r\n. "},
      {"STORE 1 TO V : @ 1,1 GET V : READ\n", ":\033[2;3H"},
  };
  for (const std::string term : {"dumb", "xterm"}) {
    Terminal t([&] { Mox(term.c_str()); });
    if (t.pid < 0) GTEST_SKIP() << "No pseudo-terminal can be had here";
    for (const auto& [keys, seen] : cases) {
      ASSERT_TRUE(t.type(keys, seen)) << keys << t.seen;
      if (seen == "42" || seen.ends_with(". ")) {
        EXPECT_TRUE(t.comesTo(seen == "42" || term == "dumb")) << keys;
      }
    }
    EXPECT_NE(t.mode(), t.found);
    EXPECT_EQ(t.all.find("\x1b[?") == t.all.npos, term == "dumb");
    ASSERT_EQ(kill(t.pid, SIGTERM), 0);
    EXPECT_EQ(t.ended(), SIGTERM);
    EXPECT_TRUE(t.type("", "\033[0m"));  // and the colours are taken back
    EXPECT_EQ(t.mode(), t.found);
  }
}

TEST(Terminal, EditedLineLeavesAsItCame) {
  const std::string marks = "\x1b[?2004h", noMarks = "\x1b[?2004l";
  {
    Terminal t([] { Mox("xterm"); });
    if (t.pid < 0) GTEST_SKIP() << "No pseudo-terminal can be had here";
    ASSERT_TRUE(t.type("", ". " + marks));
    // A line that is full: the bell, if it is on.
    ASSERT_TRUE(t.type(std::string(140, 'x') + "\x01", "\x1b["));
    ASSERT_TRUE(t.type("\x0bSET BELL ON\r", noMarks + ". " + marks));
    EXPECT_EQ(t.all.find('\a'), t.all.npos);
    ASSERT_TRUE(t.type(std::string(132, 'x'), "\a"));
    // No sequence while the screen is off; the terminal edits.
    ASSERT_TRUE(t.type("\x15SET SCREEN OFF\r", noMarks + ". "));
    ASSERT_TRUE(t.type("SET SCREEN OX\x7fN\r", "\r\n. " + marks)) << t.seen;
    kill(t.pid, SIGTERM);
    EXPECT_EQ(t.ended(), SIGTERM);
    EXPECT_TRUE(t.type("", noMarks));
    EXPECT_EQ(t.mode(), t.found);
  }
  // The end of the input, typed ahead while another program has the terminal.
  const TempDir folder;
  PutBytes("f", "");
  Terminal t([] { Mox("xterm"); });
  ASSERT_TRUE(t.type("? RUN(\"sh\",\"-c 'echo go; while test -e f; do :; done'\")\r", "lgo"));
  ASSERT_TRUE(t.type("\x04z", "z"));
  fs::remove("f");
  ASSERT_TRUE(t.type("", ". " + marks + noMarks + "\r\n")) << t.seen;
  EXPECT_EQ(t.ended(), 0);
  EXPECT_EQ(t.mode(), t.found);
}

TEST(Terminal, EditedLineIsStoppedAndContinued) {
  Terminal t(JobShell);
  if (t.pid < 0) GTEST_SKIP() << "No pseudo-terminal can be had here";
  ASSERT_TRUE(t.type("", ". "));
  ASSERT_TRUE(t.type("? 4\x02", "4\x1b[1D"));
  ASSERT_TRUE(t.type("\x1a", "\x1b[?2004lstopped by " + std::to_string(SIGTSTP))) << t.seen;
  EXPECT_EQ(t.mode(), t.found);
  ASSERT_TRUE(t.type("\n", ". ? 4\x1b[1D")) << t.seen;
  ASSERT_TRUE(t.type("2\r", "  24 ")) << t.seen;
  ASSERT_TRUE(t.type("QUIT\r", "ended with 0"));
  EXPECT_EQ(t.mode(), t.found);
}

}  // namespace mox
#endif
