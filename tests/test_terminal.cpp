// The host's keys and lines, its modes and signals, on a pseudo-terminal.
#include "screen.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/host.h"

namespace mox {

namespace {

struct Terminal : OnScreen {};

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

// Runs the program as a job, and continues it after an Enter when it has been stopped.
void JobShell() {
  signal(SIGTTOU, SIG_IGN);
  const pid_t job = fork();
  if (job == 0) {
    setpgid(0, 0);
    tcsetpgrp(STDIN_FILENO, getpid());
    signal(SIGTTOU, SIG_DFL);
    Mox();
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

TEST_F(Terminal, KeysAndLinesAlternate) {
  ASSERT_EQ(pipe(g_goOn), 0);
  Screen t(KeysAndLines);
  ASSERT_TRUE(t.Prints("", "keys"));
  const std::string keyMode = t.Mode();
  for (int key : {1, 3, 4, 17, 19, 21, 22, 23, 26, 28, 200})
    EXPECT_TRUE(t.Prints({static_cast<char>(key)}, "<" + std::to_string(key) + ">"));
  EXPECT_TRUE(t.Prints("\r\x7f", "<13><8>"));
  EXPECT_TRUE(t.Prints("\x1b", "<27>"));
  EXPECT_TRUE(t.Prints("\x1b[A\x1bOB\x1b[3~\x1b[1;5C\x1bO5P\x1b[21~x\x1bOM\x1bOp",
                       "<224><72><224><80><224><83><224><77><0><59><0><68><120><13><48>"));
  // Whatever has no code is one key: unknown sequences, a broken one, Alt with a letter, letters.
  EXPECT_TRUE(t.Prints("\x1b[99~\x1bOc\x1b[[Z\x1b[1;2\x18\x1bz\x1b\xc3\xa4\xd9\x80\xe0\xa4\x85x",
                       "<255><255><255><255><24><255><255><255><255><120>"));
  // Between two keys they aren't echoed, and Ctrl-C stops the program.
  EXPECT_TRUE(t.Prints("q", "<113>busy"));
  EXPECT_EQ(t.Settings().c_lflag & (ECHO | ICANON | ISIG), tcflag_t{ISIG});
  // Typed ahead: what follows the q is a line, shown and edited when it is read.
  EXPECT_TRUE(
      t.Prints("x\x15\x7fyz\x1b[D\x16\xc3\xa4\x7f\x7f"
               "b\rqcde\x7f",
               ""));
  ASSERT_EQ(write(g_goOn[1], "gg", 2), 2);
  EXPECT_TRUE(t.Prints("", "linex\b \byz\xc3\xa4\b \b\b \bb\r\n[yb\r\n]keys<113>busyline"));
  EXPECT_NE(t.Mode(), keyMode);
  EXPECT_TRUE(t.Prints("xy\x7fz\n", "xy\b \bz\r\n[cdxz\r\n]keys"));
  EXPECT_EQ(t.Mode(), keyMode);
}

// On a terminal that can't move its cursor lines are the terminal's, and it stands as it was found
// whenever the prompt is back. On others it does whenever no line or key is awaited.
TEST_F(Terminal, InterruptsAndSignals) {
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
      {"MODIFY COMMAND poll\n", "ENDDO"},
      {"\x11", ". "},
      {"? RUN(\"sh\",\"-c \"\"stty raw -echo; exit 4\"\"\")\n", "4 \r\n. "},
      {"STORE 1 TO V : @ 1,1 GET V : READ\n", ":\033[2;3H"},
  };
  for (const std::string term : {"dumb", "xterm"}) {
    Screen t(Mox, term.c_str());
    for (const auto& [keys, seen] : cases) {
      ASSERT_TRUE(t.Prints(keys, seen)) << keys;
      if (seen == "42" || seen.ends_with(". ")) {
        const bool asFound = seen == "42" || term == "dumb";  // soon: it is set behind the text
        EXPECT_TRUE(t.Until([&] { return (t.Mode() == t.FirstMode()) == asFound; })) << keys;
      }
    }
    EXPECT_NE(t.Mode(), t.FirstMode());
    EXPECT_EQ(t.Bytes().find("\x1b[?") == std::string::npos, term == "dumb");
    t.Signal(SIGTERM);
    EXPECT_EQ(t.Ended(), 128 + SIGTERM);
    EXPECT_TRUE(t.Prints("", "\033[0m"));  // and the colours are taken back
    EXPECT_EQ(t.Mode(), t.FirstMode());
  }
}

TEST_F(Terminal, EditedLineLeavesAsItCame) {
  const std::string marks = "\x1b[?2004h", noMarks = "\x1b[?2004l";
  {
    Screen t(Mox);
    ASSERT_TRUE(t.Prints("", ". " + marks));
    // A line that is full: the bell, if it is on.
    ASSERT_TRUE(t.Prints(std::string(140, 'x') + "\x01", "\x1b["));
    ASSERT_TRUE(t.Prints("\x0bSET BELL ON\r", noMarks + ". " + marks));
    EXPECT_EQ(t.Bytes().find('\a'), std::string::npos);
    ASSERT_TRUE(t.Prints(std::string(132, 'x'), "\a"));
    // No sequence while the screen is off; the terminal edits.
    ASSERT_TRUE(t.Prints("\x15SET SCREEN OFF\r", noMarks + ". "));
    ASSERT_TRUE(t.Prints("SET SCREEN OX\x7fN\r", "\r\n. " + marks));
    t.Signal(SIGTERM);
    EXPECT_EQ(t.Ended(), 128 + SIGTERM);
    EXPECT_TRUE(t.Prints("", noMarks));
    EXPECT_EQ(t.Mode(), t.FirstMode());
  }
  // The end of the input, typed ahead while another program has the terminal.
  PutBytes("f", "");
  Screen t(Mox);
  ASSERT_TRUE(t.Prints("? RUN(\"sh\",\"-c 'echo go; while test -e f; do :; done'\")\r", "lgo"));
  ASSERT_TRUE(t.Prints("\x04z", "z"));
  fs::remove("f");
  ASSERT_TRUE(t.Prints("", ". " + marks + noMarks + "\r\n"));
  EXPECT_EQ(t.Ended(), 0);
  EXPECT_EQ(t.Mode(), t.FirstMode());
}

TEST_F(Terminal, EditedLineIsStoppedAndContinued) {
  Screen t(JobShell);
  ASSERT_TRUE(t.Prints("", ". "));
  ASSERT_TRUE(t.Prints("? 4\x02", "4\x1b[1D"));
  ASSERT_TRUE(t.Prints("\x1a", "\x1b[?2004lstopped by " + std::to_string(SIGTSTP)));
  EXPECT_EQ(t.Mode(), t.FirstMode());
  ASSERT_TRUE(t.Prints("\n", ". ? 4\x1b[1D"));
  ASSERT_TRUE(t.Prints("2\r", "  24 "));
  ASSERT_TRUE(t.Prints("QUIT\r", "ended with 0"));
  EXPECT_EQ(t.Mode(), t.FirstMode());
}

}  // namespace mox
