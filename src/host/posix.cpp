// The console of a POSIX host: keys and lines from file descriptor 0 through one buffer.
#include <poll.h>
#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/host.h"
#include "host/sequence.h"

namespace mox {

namespace {

constexpr int _endMark = 0x1A;
constexpr int _endOfFileKey = 4;
constexpr int _forever = -1;
constexpr int _sequenceWait = 50;  // ms in which the rest of an escape sequence arrives

// Bytes read and not yet taken: _buf[_pos] to _buf[_end - 1].
unsigned char _buf[4096];
size_t _pos = 0, _end = 0;
bool _ended = false;   // the input, not a terminal, is at its end
bool _skipLf = false;  // a line feed that comes next belongs to the carriage return before it
int _scanCode = -1;    // second half of an extended key whose first was given

bool _isTerminal() {
  static const bool terminal = isatty(STDIN_FILENO);
  return terminal;
}

// Key mode: bytes come as they are typed, without echo. The object holds the terminal in this
// mode and puts it back when it goes, and so does a signal that stops the program meanwhile.
termios _found, _keyMode;
bool _inKeyMode = false;
constexpr int _stops[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP};

// Lets the signal do what it does by default, with the terminal as it was found. Only a stopped
// job comes back here; the wait that it interrupted sets its mode anew.
void _onStop(int sig) {
  const int error = errno;
  tcsetattr(STDIN_FILENO, TCSANOW, &_found);
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
  errno = error;
}

void _onContinue(int) {}  // only interrupts the wait

// Ctrl-C while no key is awaited.
volatile sig_atomic_t _interrupted = 0;
void _onInterrupt(int) { _interrupted = 1; }

class KeyMode {
 public:
  KeyMode() {
    if (!_isTerminal() || tcgetattr(STDIN_FILENO, &_found) != 0) return;
    _keyMode = _found;
    _keyMode.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO | ISIG | IEXTEN);
    _keyMode.c_iflag &= ~static_cast<tcflag_t>(IXON | ICRNL | INLCR | IGNCR | ISTRIP);
    _keyMode.c_cc[VMIN] = 1;
    _keyMode.c_cc[VTIME] = 0;
    for (size_t i = 0; i < std::size(_stops); ++i) _handle(_stops[i], _onStop, _before[i]);
    _handle(SIGCONT, _onContinue, _beforeContinue);
    _inKeyMode = true;
    tcsetattr(STDIN_FILENO, TCSANOW, &_keyMode);
  }
  ~KeyMode() {
    if (!_inKeyMode) return;
    tcsetattr(STDIN_FILENO, TCSANOW, &_found);
    _inKeyMode = false;
    for (size_t i = 0; i < std::size(_stops); ++i) sigaction(_stops[i], &_before[i], nullptr);
    sigaction(SIGCONT, &_beforeContinue, nullptr);
  }
  KeyMode(const KeyMode&) = delete;
  KeyMode& operator=(const KeyMode&) = delete;

 private:
  // Takes a signal over unless it is ignored.
  static void _handle(int sig, void (*handler)(int), struct sigaction& before) {
    struct sigaction action = {};
    action.sa_handler = handler;
    sigemptyset(&action.sa_mask);
    sigaction(sig, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(sig, &action, nullptr);
  }
  struct sigaction _before[std::size(_stops)];
  struct sigaction _beforeContinue;
};

// True when input can be read within ms. Its end counts as input. False at once when Ctrl-C breaks
// the wait off.
bool _waitInput(int ms) {
  pollfd fd = {STDIN_FILENO, POLLIN, 0};
  for (;;) {
    if (!_inKeyMode && _interrupted) return false;
    const int ready = poll(&fd, 1, ms);
    if (ready >= 0 || errno != EINTR) return ready > 0;
    if (_inKeyMode) tcsetattr(STDIN_FILENO, TCSANOW, &_keyMode);
  }
}

// Appends to the buffer what can be read, waiting at most ms for it. False when nothing came.
bool _fill(int ms) {
  if (_ended) return false;
  std::memmove(_buf, _buf + _pos, _end - _pos);
  _end -= _pos;
  _pos = 0;
  std::fflush(nullptr);
  for (;;) {
    if (!_waitInput(ms)) return false;
    const ssize_t n = read(STDIN_FILENO, _buf + _end, sizeof _buf - _end);
    if (n > 0) {
      _end += static_cast<size_t>(n);
      return true;
    }
    if (n < 0 && errno == EINTR) {
      if (_inKeyMode) tcsetattr(STDIN_FILENO, TCSANOW, &_keyMode);
    } else if (n >= 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
      _ended = !_isTerminal();
      return false;
    }
  }
}

// True when the i-th byte ahead is in the buffer, after waiting at most ms for it.
bool _have(size_t i, int ms) {
  for (;;) {
    if (_skipLf && _pos < _end) {
      _pos += _buf[_pos] == '\n';
      _skipLf = false;
    }
    if (_pos + i < _end) return true;
    if (!_fill(ms)) return false;
  }
}

int _take(int ms) { return _have(0, ms) ? _buf[_pos++] : keyEnd; }

// The i-th byte ahead of an escape sequence, which comes in one go.
int _ahead(size_t i) { return _have(i, _sequenceWait) ? _buf[_pos + i] : keyEnd; }

}  // namespace

void ansi_on() {}

int _getch() {
  if (_scanCode >= 0) {
    const int second = _scanCode;
    _scanCode = -1;
    return second;
  }
  const KeyMode mode;
  for (;;) {
    const int c = _take(_forever);
    if (c == '\r') _skipLf = !_isTerminal();
    if (c == '\n') return '\r';
    if (c == 127 && _isTerminal()) return '\b';
    if (c != keyEscape) return c;
    const Sequence sequence = FoldSequence(_ahead);
    if (sequence.scanCode < 0) return c;
    _pos += sequence.length;
    if (sequence.scanCode == 0) continue;
    _scanCode = sequence.scanCode;
    return FirstHalf(_scanCode);
  }
}

bool _kbhit() {
  if (_scanCode >= 0 || _pos + _skipLf < _end) return true;
  const KeyMode mode;
  return _have(0, 0);
}

bool OS_ReadLine(size_t max, std::string& line) {
  line.clear();
  bool content = true;
  for (size_t n = 0; n < max; ++n) {
    int c = _take(_forever);
    if (_isTerminal()) {
      // Keys typed ahead in key mode aren't what line mode makes of them.
      if (c == '\r') c = '\n';
      if (c == _endOfFileKey) c = keyEnd;
    } else if (c == _endMark) {
      _ended = true;
      _pos = _end;
      c = keyEnd;
    } else if (c == '\r' && _have(0, _forever) && _buf[_pos] == '\n') {
      c = _buf[_pos++];
    }
    if (c == keyEnd) return n > 0 && !_interrupted;
    if (c == 0) content = false;
    if (content || c == '\n') line += static_cast<char>(c);
    if (c == '\n') return true;
  }
  return max > 0;
}

void OS_CatchInterrupt() {
  struct sigaction action = {}, before;
  action.sa_handler = _onInterrupt;
  action.sa_flags = SA_RESTART;  // but of the waits for input, which never restart
  sigemptyset(&action.sa_mask);
  if (sigaction(SIGINT, nullptr, &before) == 0 && before.sa_handler != SIG_IGN)
    sigaction(SIGINT, &action, nullptr);
}

bool OS_Interrupted() { return _interrupted; }

void OS_ForgetInterrupt() {
  if (!_interrupted) return;
  _interrupted = 0;
  _pos = _end;
  _skipLf = false;
  _scanCode = -1;
  _ended = _ended || !_isTerminal();
}

}  // namespace mox
