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
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "host/host.h"

namespace mox {

namespace {

constexpr int kPatience = 20000;  // ms

// A program on a terminal of its own.
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
    kill(pid, SIGKILL);
    waitpid(pid, nullptr, 0);
    close(fd);
  }
  Terminal(const Terminal&) = delete;

  void send(const std::string& keys) {
    ASSERT_EQ(write(fd, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
  }
  // Reads on until the text appears; what was seen up to there and with it is forgotten.
  bool see(const std::string& text) {
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
    tcgetattr(fd, &t);
    return std::to_string(t.c_iflag) + ' ' + std::to_string(t.c_lflag) + ' ' +
           std::string(reinterpret_cast<const char*>(t.c_cc), sizeof t.c_cc);
  }
};

// Tells keys up to a q, then a line, and so on.
void KeysAndLines() {
  for (;;) {
    std::printf("keys");
    for (int key = 0; key != 'q';) std::printf("<%d>", key = _getch());
    std::printf("line");
    std::string line;
    if (!OS_ReadLine(80, line)) return;
    std::printf("[%s]", line.c_str());
  }
}

void Mox(const char* folder) {
  if (chdir(folder) == 0) execl(MOX_PROGRAM, MOX_PROGRAM, nullptr);
}

}  // namespace

TEST(Terminal, KeysAndLinesAlternate) {
  Terminal t(KeysAndLines);
  ASSERT_TRUE(t.see("keys"));
  const std::string keyMode = t.mode();
  for (int key : {1, 3, 4, 17, 19, 21, 22, 23, 26, 28, 200}) {
    t.send(std::string(1, static_cast<char>(key)));
    EXPECT_TRUE(t.see("<" + std::to_string(key) + ">")) << key << t.seen;
  }
  t.send("\r\x7f");
  EXPECT_TRUE(t.see("<13><8>")) << t.seen;
  t.send("\x1b");
  EXPECT_TRUE(t.see("<27>")) << t.seen;
  t.send("\x1b[A\x1bOB\x1b[3~\x1b[1;5C\x1b[99~\x1bOP\x1b[21~x\x1bz");
  EXPECT_TRUE(t.see("<224><72><224><80><224><83><224><77><0><59><0><68><120><27><122>")) << t.seen;
  t.send("qab\rqcd");  // typed ahead: what follows the q is a line
  EXPECT_TRUE(t.see("line[ab\r\n]keys<113>line")) << t.seen;
  EXPECT_NE(t.mode(), keyMode);
  t.send("xy\x7fz\n");
  EXPECT_TRUE(t.see("[cdxz\r\n]keys")) << t.seen;
  EXPECT_EQ(t.mode(), keyMode);
}

TEST(Terminal, InterruptsAndSignals) {
  const auto folder =
      std::filesystem::temp_directory_path() / ("mox-term-" + std::to_string(getpid()));
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "poll.cmd") << "? 6*8\nDO WHILE INKEY()<>\"q\"\nENDDO\n";
  std::ofstream(folder / "loop.cmd") << "? 6*7\nDO WHILE 1=1\nENDDO\n";
  const std::string path = folder;
  Terminal t([&] { Mox(path.c_str()); });
  ASSERT_TRUE(t.see(". "));
  const std::string found = t.mode();
  t.send("IF 1=1\n");
  ASSERT_TRUE(t.see("> "));
  t.send("? 8\x03");
  EXPECT_TRUE(t.see("^C\r\n. ")) << t.seen;
  t.send("DO loop\n");
  ASSERT_TRUE(t.see("42"));
  t.send("\x03");
  EXPECT_TRUE(t.see("\n*** INTERRUPTED \r\n. ")) << t.seen;
  t.send("DO poll\n");
  ASSERT_TRUE(t.see("48 \r\n"));
  t.send("q");
  EXPECT_TRUE(t.see(". ")) << t.seen;
  EXPECT_EQ(t.mode(), found);
  t.send("ACCEPT \"name\" TO X\n");
  ASSERT_TRUE(t.see("name:"));
  t.send("abc\x03");
  EXPECT_TRUE(t.see("\n*** INTERRUPTED \r\n. ")) << t.seen;
  t.send("WAIT\n");
  ASSERT_TRUE(t.see("WAITING"));
  t.send("\x03");
  EXPECT_TRUE(t.see("\r\n. ")) << t.seen;
  EXPECT_EQ(t.mode(), found);
  t.send("? RUN(\"sh\",\"-c \"\"stty raw -echo; exit 4\"\"\")\n");
  EXPECT_TRUE(t.see("4 \r\n. ")) << t.seen;
  EXPECT_EQ(t.mode(), found);
  t.send("WAIT\n");
  ASSERT_TRUE(t.see("WAITING"));
  EXPECT_NE(t.mode(), found);
  kill(t.pid, SIGTERM);
  siginfo_t end = {};
  waitid(P_PID, static_cast<id_t>(t.pid), &end, WEXITED | WNOWAIT);
  EXPECT_EQ(end.si_status, SIGTERM);
  EXPECT_EQ(t.mode(), found);
  std::filesystem::remove_all(folder);
}

}  // namespace mox
#endif
