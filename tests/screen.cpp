#include "screen.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>
#include <vterm.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <system_error>
#if __has_include(<pty.h>)
#include <pty.h>
#else
#include <util.h>
#endif

namespace {

constexpr int kQuiet = 10;        // ms without output of a program that waits
constexpr int kLongQuiet = 1000;  // of one of which it can't be seen that it waits
constexpr auto kLimit = std::chrono::seconds(10);
using Clock = std::chrono::steady_clock;

// Tests leave what a user's prompt remembers alone.
[[maybe_unused]] const int kNoHistory = setenv("MOX_HISTORY", "off", 1);

// Bytes of a text ahead of a letter of UTF-8 that isn't complete at its end, which the emulator
// would take for something else.
size_t WholeLetters(const std::string& text) {
  for (size_t tail = 1; tail <= 3 && tail <= text.size(); ++tail) {
    const unsigned char c = static_cast<unsigned char>(text[text.size() - tail]);
    const size_t size = c >= 0xF0 ? 4 : c >= 0xE0 ? 3 : c >= 0xC0 ? 2 : 1;
    if (size > tail) return text.size() - tail;
    if (size > 1) break;
  }
  return text.size();
}

}  // namespace

struct Screen::Terminal {
  int master = -1, slave = -1;
  pid_t pid = -1;
  const int rows = 24;
  int cols = 80;
  VTerm* vt = vterm_new(rows, cols);
  VTermScreen* screen = vterm_obtain_screen(vt);
  std::string text{};          // read and not yet fed
  std::string all{}, found{};  // ever read; the mode before the program
  size_t seen = 0;             // bytes of all that were searched

  ~Terminal() {
    if (pid > 0) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
    if (master >= 0) close(master);
    if (slave >= 0) close(slave);
    vterm_free(vt);
  }
  winsize Size() const {
    return {static_cast<unsigned short>(rows), static_cast<unsigned short>(cols), 0, 0};
  }
  bool Open() {
    winsize size = Size();
    return openpty(&master, &slave, nullptr, nullptr, &size) == 0 &&
           fcntl(master, F_SETFL, O_NONBLOCK) == 0;
  }
  // Feeds the emulator with what arrives within ms: false when nothing did.
  bool Read(int ms) {
    pollfd fd = {master, POLLIN, 0};
    if (poll(&fd, 1, ms) <= 0) return false;
    char bytes[4096];
    const ssize_t n = read(master, bytes, sizeof bytes);
    if (n <= 0) return false;
    text.append(bytes, static_cast<size_t>(n));
    all.append(bytes, static_cast<size_t>(n));
    const size_t whole = WholeLetters(text);
    vterm_input_write(vt, text.data(), whole);
    text.erase(0, whole);
    return true;
  }
  bool TookAll() const {
    int waiting = 0;
    return ioctl(slave, FIONREAD, &waiting) != 0 || waiting == 0;
  }
  // True when it can be seen that the program waits, for a key or at its prompt, or has ended.
  bool Waits() const {
    siginfo_t ended{};
    if (waitid(P_PID, static_cast<id_t>(pid), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
        ended.si_pid == pid)
      return true;
    termios mode;
    if (!TookAll() || tcgetattr(slave, &mode) != 0) return false;
    if (!(mode.c_lflag & (ICANON | ISIG))) return true;
    if (!(mode.c_lflag & ICANON) && mode.c_cc[VSUSP] != _POSIX_VDISABLE) return true;  // a line
    VTermPos pos;
    vterm_state_get_cursorpos(vterm_obtain_state(vt), &pos);
    VTermScreenCell cell;
    vterm_screen_get_cell(screen, {pos.row, 0}, &cell);
    return pos.col == 2 && (cell.chars[0] == '.' || cell.chars[0] == '>');
  }
  // True once the program has ended.
  bool Reap(int& status) { return pid > 0 && waitpid(pid, &status, WNOHANG) == pid; }
};

Screen::Screen(const std::function<void()>& child, const char* term, int rows, int cols)
    : t_(new Terminal{.rows = rows, .cols = cols}) {
  vterm_set_utf8(t_->vt, 1);
  vterm_screen_reset(t_->screen, 1);
  const bool opened = t_->Open();
  t_->found = opened ? Mode() : "";
  if (!opened || (t_->pid = fork()) < 0)
    throw std::system_error(errno, std::generic_category(), "a program on a terminal");
  if (t_->pid == 0) {
    close(t_->master);
    setenv("TERM", term, 1);
    if (login_tty(t_->slave) != 0) _exit(126);
    child();
    std::fflush(stdout);
    _exit(0);
  }
  Type("");
}

Screen::Screen(std::string program, std::vector<std::string> args, const std::filesystem::path& dir,
               int rows, int cols)
    : Screen(
          [&] {
            std::vector<char*> argv{program.data()};
            for (auto& arg : args) argv.push_back(arg.data());
            argv.push_back(nullptr);
            if (chdir(dir.c_str()) == 0) execv(program.c_str(), argv.data());
            _exit(127);
          },
          "xterm", rows, cols) {}

Screen::~Screen() = default;

bool Screen::Possible() { return Terminal().Open(); }

void Screen::Resize(int cols) {
  t_->cols = cols;
  const winsize size = t_->Size();
  vterm_set_size(t_->vt, t_->rows, cols);
  ioctl(t_->master, TIOCSWINSZ, &size);
  Type("");
}

void Screen::Type(const std::string& keys) {
  const auto end = Clock::now() + kLimit;
  for (size_t sent = 0; sent < keys.size() && Clock::now() < end;) {
    const ssize_t n = write(t_->master, keys.data() + sent, keys.size() - sent);
    if (n > 0) sent += static_cast<size_t>(n);
    t_->Read(n > 0 ? 0 : 1);
  }
  auto last = Clock::now();
  for (bool waited = false; last < end;) {
    if (t_->Read(kQuiet)) {
      waited = false;
      last = Clock::now();
      continue;
    }
    // A wait that is seen twice with no output between.
    const bool waits = t_->Waits();
    if ((waits && waited) || Clock::now() - last > std::chrono::milliseconds(kLongQuiet)) break;
    waited = waits;
  }
}

bool Screen::Until(const std::function<bool()>& seen) {
  const auto end = Clock::now() + kLimit;
  while (!seen()) {
    if (Clock::now() > end) return false;
    t_->Read(kQuiet);
  }
  return true;
}

bool Screen::Sees(int row, int col, const std::string& text) {
  return Until([&] {
    std::string line = Row(row);
    line.resize(std::max(line.size(), static_cast<size_t>(col) + text.size()), ' ');
    return line.compare(static_cast<size_t>(col), text.size(), text) == 0;
  });
}

std::string Screen::Row(int row, bool reverse) const {
  std::string line;
  for (int col = 0; col < t_->cols; ++col) {
    VTermScreenCell cell;
    vterm_screen_get_cell(t_->screen, {row, col}, &cell);
    vterm_screen_convert_color_to_rgb(t_->screen, &cell.bg);
    const uint32_t c = cell.chars[0] == 0 ? ' ' : cell.chars[0];
    const bool shown = !reverse || cell.bg.rgb.red > 128;
    line += !shown ? ' ' : reverse && c == ' ' ? '_' : c < 127 ? static_cast<char>(c) : '?';
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

std::string Screen::All() const {
  std::string all;
  for (int row = 0; row < t_->rows; ++row) all += Row(row) + '\n';
  return all;
}

std::pair<int, int> Screen::Cursor() const {
  VTermPos pos;
  vterm_state_get_cursorpos(vterm_obtain_state(t_->vt), &pos);
  return {pos.row, pos.col};
}

bool Screen::Plain(int row, int col) const {
  VTermScreenCell cell;
  vterm_screen_get_cell(t_->screen, {row, col}, &cell);
  return VTERM_COLOR_IS_DEFAULT_FG(&cell.fg) && VTERM_COLOR_IS_DEFAULT_BG(&cell.bg);
}

bool Screen::Prints(const std::string& keys, const std::string& text) {
  if (write(t_->master, keys.data(), keys.size()) != static_cast<ssize_t>(keys.size()))
    return false;
  size_t at = 0;
  const bool came = Until([&] { return (at = t_->all.find(text, t_->seen)) != text.npos; });
  if (came) t_->seen = at + text.size();
  return came;
}

const std::string& Screen::Bytes() const { return t_->all; }
std::string Screen::FirstMode() const { return t_->found; }
void Screen::Signal(int number) { kill(t_->pid, number); }

std::string Screen::Mode() const {
  termios mode{};
  tcgetattr(t_->slave, &mode);
  return std::to_string(mode.c_iflag) + ' ' + std::to_string(mode.c_lflag) + ' ' +
         std::string(reinterpret_cast<const char*>(mode.c_cc), sizeof mode.c_cc);
}

unsigned Screen::Flags() const {
  termios mode{};
  tcgetattr(t_->slave, &mode);
  return mode.c_lflag;
}

void Screen::HangUp() {
  close(t_->master);
  t_->master = -1;
}

int Screen::Ended() {
  const auto end = Clock::now() + kLimit;
  while (Clock::now() < end) {
    t_->Read(kQuiet);
    int status = 0;
    if (!t_->Reap(status)) continue;
    t_->pid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return -1;
}
