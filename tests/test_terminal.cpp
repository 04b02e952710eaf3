// The host's keys and lines, and Ctrl-C, on a pseudo-terminal.
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

  explicit Terminal(const std::function<void()>& program) {
    pid = forkpty(&fd, nullptr, nullptr, nullptr);
    if (pid == 0) {
      program();
      std::fflush(stdout);
      _exit(0);
    }
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
    }
    seen.erase(0, at + text.size());
    return true;
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

TEST(Terminal, InterruptsAndSignals) {
  const TempDir folder;
  PutBytes("poll.cmd", "? 6*8\nDO WHILE INKEY()<>\"q\"\nENDDO\n");
  PutBytes("loop.cmd", "? 6*7\nDO WHILE 1=1\nENDDO\n");
  PutBytes("keys.cmd", "DO WHILE 1=1\nWAIT\nENDDO\n");
  Terminal t([] { execl(MOX_PROGRAM, MOX_PROGRAM, nullptr); });
  if (t.pid < 0) GTEST_SKIP() << "No pseudo-terminal can be had here";
  ASSERT_TRUE(t.type("", ". "));
  const std::string found = t.mode();
  const std::string interrupt = "\x03", stopped = "\n*** INTERRUPTED \r\n. ";
  // Whenever the prompt is back the terminal is as it was found.
  const std::pair<std::string, std::string> cases[] = {
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
  for (const auto& [keys, seen] : cases) {
    ASSERT_TRUE(t.type(keys, seen)) << keys << t.seen;
    EXPECT_TRUE(!seen.ends_with(". ") || t.mode() == found) << keys;
  }
  EXPECT_NE(t.mode(), found);
  siginfo_t end = {};
  ASSERT_EQ(kill(t.pid, SIGTERM), 0);
  ASSERT_EQ(waitid(P_PID, static_cast<id_t>(t.pid), &end, WEXITED | WNOWAIT), 0);
  EXPECT_EQ(end.si_status, SIGTERM);
  EXPECT_TRUE(t.type("", "\033[0m"));  // and the colours are taken back
  EXPECT_EQ(t.mode(), found);
}

}  // namespace mox
#endif
