#include "screen.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <cstdlib>
#include <system_error>
#include <utility>
#if __has_include(<pty.h>)
#include <pty.h>
#else
#include <util.h>
#endif

namespace {

constexpr int kQuiet = 10;        // ms without output of a program that waits
constexpr int kLongQuiet = 1000;  // of one of which it can't be seen that it waits
constexpr auto kLimit = std::chrono::seconds(10);

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

std::string Repeat(const std::string& text, int n) {
  std::string all;
  while (n-- > 0) all += text;
  return all;
}

void Mox() { execl(MOX_PROGRAM, MOX_PROGRAM, nullptr); }

Screen::Screen(const std::function<void()>& child, const char* term, Cells rows, Cells cols)
    : size_{rows, cols, 0, 0}, vt_(vterm_new(rows, cols)), screen_(vterm_obtain_screen(vt_)) {
  vterm_set_utf8(vt_, 1);
  vterm_screen_reset(screen_, 1);
  const bool opened = openpty(&master_, &slave_, nullptr, nullptr, &size_) == 0 &&
                      fcntl(master_, F_SETFL, O_NONBLOCK) == 0;
  found_ = opened ? Mode() : "";
  if (!opened || (pid_ = fork()) < 0)
    throw std::system_error(errno, std::generic_category(), "a program on a terminal");
  if (pid_ > 0) return;
  close(master_);
  setenv("TERM", term, 1);
  if (login_tty(slave_) != 0) _exit(126);
  child();
  std::fflush(stdout);
  _exit(0);
}

Screen::~Screen() {
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  HangUp();
  close(slave_);
  vterm_free(vt_);
}

// Feeds the emulator with what arrives within ms: false when nothing did.
bool Screen::Read(int ms) {
  pollfd fd = {master_, POLLIN, 0};
  if (poll(&fd, 1, ms) <= 0) return false;
  char bytes[4096];
  const ssize_t n = read(master_, bytes, sizeof bytes);
  if (n <= 0) return false;
  text_.append(bytes, static_cast<size_t>(n));
  all_.append(bytes, static_cast<size_t>(n));
  const size_t whole = WholeLetters(text_);
  vterm_input_write(vt_, text_.data(), whole);
  text_.erase(0, whole);
  return true;
}

// True when it can be seen that the program waits, for a key or for a line, or has ended.
bool Screen::Waits() const {
  siginfo_t ended{};
  if (waitid(P_PID, static_cast<id_t>(pid_), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
      ended.si_pid == pid_)
    return true;
  int untaken = 0;
  if (ioctl(slave_, FIONREAD, &untaken) == 0 && untaken > 0) return false;
  const termios mode = Settings();
  const bool forLine = mode.c_cc[VSUSP] != _POSIX_VDISABLE;
  return !(mode.c_lflag & ICANON) && (forLine || !(mode.c_lflag & ISIG));
}

void Screen::Resize(Cells cols) {
  size_.ws_col = cols;
  vterm_set_size(vt_, size_.ws_row, cols);
  ioctl(master_, TIOCSWINSZ, &size_);
  Type("");
}

void Screen::Send(const std::string& keys) {
  size_t sent = 0;
  Until([&] {
    const ssize_t n = write(master_, keys.data() + sent, keys.size() - sent);
    if (n > 0) sent += static_cast<size_t>(n);
    return sent == keys.size();
  });
}

void Screen::Type(const std::string& keys) {
  Send(keys);
  size_t before = std::string::npos;
  int waits = 0, quiet = 0;
  // A wait that is seen twice with no output between.
  Until([&] {
    const bool printed = std::exchange(before, all_.size()) != all_.size();
    waits = !printed && Waits() ? waits + 1 : 0;
    quiet = printed ? 0 : quiet + 1;
    return waits == 2 || quiet == kLongQuiet / kQuiet;
  });
}

bool Screen::Until(const std::function<bool()>& seen) {
  const auto end = std::chrono::steady_clock::now() + kLimit;
  while (!seen()) {
    if (std::chrono::steady_clock::now() > end) return false;
    Read(kQuiet);
  }
  return true;
}

bool Screen::Prints(const std::string& keys, const std::string& text) {
  Send(keys);
  size_t at = 0;
  const bool came = Until([&] { return (at = all_.find(text, seen_)) != text.npos; });
  if (came) seen_ = at + text.size();
  return came;
}

VTermScreenCell Screen::Cell(int row, int col) const {
  VTermScreenCell cell;
  vterm_screen_get_cell(screen_, {row, col}, &cell);
  return cell;
}

std::string Screen::Row(int row, bool reverse) const {
  std::string line;
  for (int col = 0; col < size_.ws_col; ++col) {
    VTermScreenCell cell = Cell(row, col);
    vterm_screen_convert_color_to_rgb(screen_, &cell.bg);
    const uint32_t c = cell.chars[0] == 0 ? ' ' : cell.chars[0];
    const bool shown = !reverse || cell.bg.rgb.red > 128;
    line += !shown ? ' ' : reverse && c == ' ' ? '_' : c < 127 ? static_cast<char>(c) : '?';
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

std::string Screen::All() const {
  std::string all;
  for (int row = 0; row < size_.ws_row; ++row) all += Row(row) + '\n';
  return all;
}

std::pair<int, int> Screen::Cursor() const {
  VTermPos pos;
  vterm_state_get_cursorpos(vterm_obtain_state(vt_), &pos);
  return {pos.row, pos.col};
}

bool Screen::Plain(int row, int col) const {
  const VTermScreenCell cell = Cell(row, col);
  return VTERM_COLOR_IS_DEFAULT_FG(&cell.fg) && VTERM_COLOR_IS_DEFAULT_BG(&cell.bg);
}

termios Screen::Settings() const {
  termios mode{};
  tcgetattr(slave_, &mode);
  return mode;
}

std::string Screen::Mode() const {
  const termios mode = Settings();
  return std::to_string(mode.c_iflag) + ' ' + std::to_string(mode.c_lflag) + ' ' +
         std::string(reinterpret_cast<const char*>(mode.c_cc), sizeof mode.c_cc);
}

void Screen::Signal(int number) { kill(pid_, number); }

void Screen::HangUp() {
  close(master_);
  master_ = -1;
}

int Screen::Ended() {
  int status = 0;
  if (!Until([&] { return waitpid(pid_, &status, WNOHANG) == pid_; })) return -1;
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

OnScreen::OnScreen() { setenv("MOX_HISTORY", "off", 1); }

void OnScreen::SetUp() {
  int master, slave;
  if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0)
    GTEST_SKIP() << "No pseudo-terminal can be had here";
  close(master);
  close(slave);
}

void OnScreen::Start(const std::vector<std::string>& lines, Cells rows, Cells cols) {
  screen_ = std::make_unique<Screen>(Mox, "xterm", rows, cols);
  Lines(lines);
}

void OnScreen::Lines(const std::vector<std::string>& lines) {
  screen_->Type("");
  for (const auto& line : lines) screen_->Type(line + kEnter);
}

void OnScreen::Above(int rows, const std::string& text) {
  const auto seen = [&] { return screen_->Row(screen_->Cursor().first - rows) == text; };
  EXPECT_TRUE(screen_->Until(seen)) << text << "\n" << screen_->All();
}

void OnScreen::Line(const std::string& keys, const std::string& above, const std::string& end) {
  screen_->Type(keys + end);
  Above(0, ".");
  Above(1, above);
}

void OnScreen::Quit() {
  screen_->Type("\x05\x15QUIT" + kEnter);  // behind the end of the line, which is erased
  EXPECT_EQ(screen_->Ended(), 0) << screen_->All();
}
