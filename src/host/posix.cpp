// The console of a POSIX host: keys and lines from file descriptor 0.
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "host/file.h"
#include "host/host.h"
#include "host/input.h"
#include "host/posix.h"

namespace mox {

namespace {

constexpr Window _usualWindow = {24, 80};
constexpr int _pasteWait = 1000;  // ms in which the rest of a pasted text arrives
constexpr char _markPastes[] = "\033[?2004h", _markNoPastes[] = "\033[?2004l";
constexpr std::string_view _pasteEnd = "\033[201~";

bool _pasting = false;   // what comes is pasted, up to a mark
bool _dropping = false;  // and not wanted any more

bool _isTerminal() {
  static const bool terminal = isatty(STDIN_FILENO);
  return terminal;
}

// How the terminal stands. In line mode it is as it was found. In key mode bytes come as they are
// typed, without echo, and control keys are keys. Poll mode is the same, but Ctrl-C is a signal: a
// program that has taken or looked for a key stays in it up to the next read of a line, so that
// what is typed between two keys isn't echoed. In edit mode all keys that send signals do so, and
// pasted text comes between marks. A signal that stops this program meanwhile first puts the
// terminal back.
enum class Mode { line, poll, edit, keys };
volatile Mode _mode = Mode::line;
termios _found, _set;
constexpr int _stops[] = {SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};
struct sigaction _beforeStop[std::size(_stops)], _beforeContinue, _beforeResize;
int _lineBytes = 0;                // bytes that were typed ahead in line mode
volatile sig_atomic_t _shown = 0;  // keyResized or keyContinued, for the edit of a line
bool _watching = false;            // the signals are taken over
const char* volatile _restoreText = nullptr;
volatile sig_atomic_t _holdEnd = 0;
volatile sig_atomic_t _endSignal = 0;  // which came meanwhile

// For handlers of signals.
void _write(const char* text) {
  [[maybe_unused]] const ssize_t n = write(STDOUT_FILENO, text, std::strlen(text));
}

void _putBack() {
  if (_restoreText) _write(_restoreText);
  if (_mode == Mode::edit) _write(_markNoPastes);
  if (_mode != Mode::line) tcsetattr(STDIN_FILENO, TCSANOW, &_found);
}

void _takeAgain() {
  if (_mode != Mode::line) tcsetattr(STDIN_FILENO, TCSANOW, &_set);
  if (_mode == Mode::edit) _write(_markPastes);
}

// Lets the signal do what it does by default. Only a stopped job comes back here, and one that
// can't be stopped since nobody would continue it.
void _onStop(int sig) {
  if (_holdEnd && (sig == SIGTERM || sig == SIGHUP)) {
    _endSignal = sig;
    return;
  }
  const int error = errno;
  _putBack();
  struct sigaction byDefault = {}, ours;
  byDefault.sa_handler = SIG_DFL;
  sigaction(sig, &byDefault, &ours);
  sigset_t set, before;
  sigemptyset(&set);
  sigaddset(&set, sig);
  raise(sig);
  sigprocmask(SIG_UNBLOCK, &set, &before);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  sigaction(sig, &ours, nullptr);
  _takeAgain();
  errno = error;
}

void _onContinue(int) {
  const int error = errno;
  _takeAgain();
  _shown = keyContinued;
  errno = error;
}

void _onResize(int) {
  if (!_shown) _shown = keyResized;
}

// Takes a signal over unless it is ignored.
void _handle(int sig, void (*handler)(int), struct sigaction& before) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;  // but of the waits for input, which never restart
  sigemptyset(&action.sa_mask);
  sigaction(sig, nullptr, &before);
  if (before.sa_handler != SIG_IGN) sigaction(sig, &action, nullptr);
}

// Takes the signals over while the terminal isn't as it was found.
void _watch(bool on) {
  if (on == _watching) return;
  _watching = on;
  if (on) {
    for (size_t i = 0; i < std::size(_stops); ++i) _handle(_stops[i], _onStop, _beforeStop[i]);
    _handle(SIGCONT, _onContinue, _beforeContinue);
  } else {
    for (size_t i = 0; i < std::size(_stops); ++i) sigaction(_stops[i], &_beforeStop[i], nullptr);
    sigaction(SIGCONT, &_beforeContinue, nullptr);
  }
}

void _watchIfNeeded() { _watch(_mode != Mode::line || _restoreText || _holdEnd); }

// The terminal's settings in a mode.
termios _settings(Mode mode) {
  termios form = _found;
  if (mode == Mode::line) return form;
  form.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | IEXTEN | (mode == Mode::keys ? ISIG : 0));
  form.c_iflag &= ~static_cast<tcflag_t>(IXON | ICRNL | INLCR | IGNCR | ISTRIP);
  form.c_cc[VMIN] = 1;
  form.c_cc[VTIME] = 0;
  if (mode != Mode::edit) form.c_cc[VSUSP] = form.c_cc[VQUIT] = _POSIX_VDISABLE;
  return form;
}

// Begins and ends what edit mode has beyond the terminal's settings, behind all earlier output.
void _watchEdit(bool on) {
  std::fflush(stdout);
  _write(on ? _markPastes : _markNoPastes);
  _shown = 0;
  if (on)
    _handle(SIGWINCH, _onResize, _beforeResize);
  else
    sigaction(SIGWINCH, &_beforeResize, nullptr);
}

void _setMode(Mode mode) {
  const Mode before = _mode;
  if (mode == before || !_isTerminal()) return;
  if (before == Mode::line) {
    if (tcgetattr(STDIN_FILENO, &_found) != 0) return;
    _set = _found;
    _watch(true);
  }
  if (before == Mode::edit) _watchEdit(false);
  _set = _settings(mode);
  _mode = mode;
  tcsetattr(STDIN_FILENO, TCSANOW, &_set);
  _lineBytes = 0;
  if (before == Mode::line && mode == Mode::edit) ioctl(STDIN_FILENO, FIONREAD, &_lineBytes);
  if (mode == Mode::edit) _watchEdit(true);
  _watchIfNeeded();
}

// Holds the terminal in key mode, and then in poll mode.
class KeyMode {
 public:
  KeyMode() { _setMode(Mode::keys); }
  ~KeyMode() { _setMode(_before == Mode::keys ? Mode::keys : Mode::poll); }
  KeyMode(const KeyMode&) = delete;
  KeyMode& operator=(const KeyMode&) = delete;

 private:
  const Mode _before = _mode;
};

struct AtEnd {
  ~AtEnd() { PosixLineMode(); }
} _atEnd;

// Ctrl-C while no key is awaited.
volatile sig_atomic_t _interrupted = 0;
struct sigaction _beforeInterrupt;
void _onInterrupt(int) { _interrupted = 1; }

// True when input can be read within ms. Its end counts as input. False at once when Ctrl-C or the
// end of the program breaks the wait off, or a line that is edited must be shown anew.
bool _waitInput(int ms) {
  pollfd fd = {STDIN_FILENO, POLLIN, 0};
  for (;;) {
    if (_interrupted || _endSignal || (_mode == Mode::edit && _shown)) return false;
    const int ready = poll(&fd, 1, ms);
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

// Takes the sequence behind an Escape.
Sequence _takeSequence() {
  const Sequence sequence = InTakeSequence();
  if (sequence.key >= pasteBegin) _pasting = sequence.key == pasteBegin;
  return sequence;
}

// Drops the rest of a pasted text.
void _dropPaste() {
  while (_pasting && InHave(0, _pasteWait))
    if (InTake(0) == keyEscape) _takeSequence();
  _pasting = _dropping = false;
}

// Takes the letter that was typed with the Alt key, which comes together with an Escape: false when
// there is none, as on input that isn't a terminal.
bool _takeAlt() {
  const bool letter = _isTerminal() && InPending() && InAhead(0) >= ' ';
  if (letter) InLetter(InTake(0));
  return letter;
}

// True when keys wait that the terminal didn't edit: they, and what is typed up to the end of their
// line, are edited here. Otherwise the terminal goes over to line mode.
bool _lineAhead() {
  if (_mode == Mode::line) return false;
  if (InHave(0, 0)) return true;
  PosixLineMode();
  return false;
}

void _echo(const char* text) {
  if (_found.c_lflag & ECHO) std::fputs(text, stdout);
}

void _eraseLetter(std::string& line) {
  while (!line.empty() && (line.back() & 0xC0) == 0x80) line.pop_back();
  if (line.empty()) return;
  line.pop_back();
  _echo("\b \b");
}

// The next byte of a line of the terminal. Keys typed ahead in key mode aren't what line mode makes
// of them.
int _typedByte() {
  const int c = InTake(forever);
  return c == '\r' ? '\n' : c == keyEndOfFile ? keyEnd : c;
}

// Does with a key what the terminal does in line mode. Keys that are none of a line are passed
// over.
void _editKey(int c, std::string& line) {
  if (c == '\b' || c == 127 || c == _found.c_cc[VERASE]) {
    _eraseLetter(line);
  } else if (c == _found.c_cc[VKILL]) {
    while (!line.empty()) _eraseLetter(line);
  } else if (c == keyEscape) {
    InTakeSequence();
  } else if (c == '\t' || c >= ' ') {
    const char text[] = {static_cast<char>(c), 0};
    line += text;
    _echo(text);
  }
}

// Reads a line whose begin was typed ahead.
bool _editLine(size_t max, std::string& line) {
  line.clear();
  while (line.size() < max) {
    const int c = _typedByte();
    if (c == keyEnd) return !line.empty() && !_interrupted;
    if (c == '\n') {
      _echo("\n");
      line += '\n';
      return true;
    }
    _editKey(c, line);
  }
  return max > 0;
}

}  // namespace

void PosixLineMode() { _setMode(Mode::line); }

// A standard stream that was closed leaves its descriptor to the next file opened, and a table on
// descriptor 1 would take the program's output: the null device holds such a place. A write beyond
// the limit of a file's size shall fail like one to a full disk, and not end the program.
void ansi_on() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
    if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) _exit(1);
  signal(SIGXFSZ, SIG_IGN);
}

Window OS_WindowSize() {
  static const bool terminal = isatty(STDOUT_FILENO);
  winsize size = {};
  if (!terminal) return {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 || size.ws_col == 0)
    return _usualWindow;
  return {size.ws_row, size.ws_col};
}

bool OS_KeysAreTyped() { return _isTerminal(); }

void OS_SetRestoreText(const char* text) {
  _restoreText = text;
  _watchIfNeeded();
}

void OS_HoldEnd(bool hold) {
  _holdEnd = hold;
  if (!hold && _endSignal) raise(_endSignal);
  _watchIfNeeded();
}

int _getch() {
  if (g_input.scanCode >= 0) return std::exchange(g_input.scanCode, -1);
  const KeyMode mode;
  const int c = InTake(forever);
  if (c == '\r') g_input.skipLf = !_isTerminal();
  if (c == 127 && _isTerminal()) return '\b';
  if (c != keyEscape) return InKey(c);
  const Sequence sequence = _takeSequence();
  if (sequence.scanCode < 0) return _takeAlt() ? keyOther : c;
  if (sequence.key >= pasteBegin && _isTerminal()) return _getch();
  return InSequenceKey(sequence);
}

void OS_HoldKeys(bool hold) { _setMode(hold ? Mode::keys : Mode::poll); }

bool _kbhit() {
  if (g_input.scanCode >= 0 || InPending()) return true;
  _setMode(Mode::poll);
  return InHave(0, 0);
}

bool OS_ReadLine(size_t max, std::string& line) {
  if (!_isTerminal()) return InLine(max, line, InLineByte);
  return _lineAhead() ? _editLine(max, line) : InLine(max, line, _typedByte);
}

bool OS_CanEdit() {
  static const bool can = [] {
    const char* const term = std::getenv("TERM");
    const std::string_view name = term ? term : "";
    return _isTerminal() && isatty(STDOUT_FILENO) && !name.empty() && name != "dumb";
  }();
  return can;
}

void OS_EditLine(bool on) {
  if (_pasting && g_input.bytes.compare(g_input.pos, _pasteEnd.size(), _pasteEnd) == 0) {
    g_input.pos += _pasteEnd.size();
    _pasting = false;
  }
  _setMode(on ? Mode::edit : _pasting ? Mode::poll : Mode::line);
}

int OS_EditKey(std::string& letter) {
  for (;;) {
    if (_dropping) _dropPaste();
    if (_pasting && !InHave(0, _pasteWait) && !_shown) _pasting = false;
    int key = _shown ? keyEnd : InTake(forever);
    if (key == keyEnd && _shown && !_interrupted && !_endSignal) {
      const int shown = _shown;
      _shown = 0;
      return shown;
    }
    if (key == keyEscape) {
      const Sequence sequence = _takeSequence();
      if (sequence.scanCode < 0) _takeAlt();
      if (sequence.scanCode > 0 && !_pasting) return keyExtended + sequence.scanCode;
      if (sequence.scanCode != 0 || sequence.key >= keyOther) continue;
      key = sequence.key;  // of the keypad
    }
    if (key == '\r') g_input.skipLf = _pasting;
    if (key == '\n') key = '\r';
    if (key == 127) key = '\b';
    if (key >= ' ' || (_pasting && key == '\t')) {
      letter = key == '\t' ? " " : InLetter(key);
      return 0;
    }
    if (key < 0 || key == '\r' || (!_pasting && key > 0)) return key;
  }
}

void OS_CatchInterrupt() { _handle(SIGINT, _onInterrupt, _beforeInterrupt); }

bool OS_Interrupted() { return _interrupted || g_input.interruptKey; }

void OS_ForgetInterrupt() {
  if (!OS_Interrupted()) return;
  _interrupted = 0;
  _dropping = _pasting;
  InForget();
}

// Line mode keeps a zero byte for the key that ends the input.
bool InFill(int ms) {
  for (;;) {
    if (!_waitInput(ms)) return false;
    char bytes[4096];
    const ssize_t n = read(STDIN_FILENO, bytes, sizeof bytes);
    if (n > 0) {
      const ssize_t ahead = std::min<ssize_t>(n, _lineBytes);
      std::replace(bytes, bytes + ahead, '\0', static_cast<char>(keyEndOfFile));
      _lineBytes -= static_cast<int>(ahead);
      g_input.bytes.append(bytes, static_cast<size_t>(n));
      return true;
    }
    if (n == 0 || (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK)) {
      g_input.ended = !_isTerminal();
      return false;
    }
  }
}

}  // namespace mox
