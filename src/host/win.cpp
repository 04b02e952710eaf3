// The console of Windows, and input from a pipe or a file there. Texts are UTF-8: what the console
// takes and gives is converted, and the manifest makes file names and arguments so.
#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

#include "host/file.h"
#include "host/host.h"
#include "host/sequence.h"

namespace mox {

namespace {

constexpr int _endMark = 0x1A;
constexpr int _endOfFileKey = 4;
constexpr int _extended = 256;
constexpr int _forever = -1;
constexpr int _sequenceWait = 50;  // ms in which the rest of an escape sequence arrives
constexpr DWORD _pollEvery = 5;    // ms between two looks at a pipe
constexpr DWORD _noteWait = 1000;  // ms in which Ctrl-C is noted
constexpr DWORD _showEvery = 100;  // ms in which printed output appears
constexpr DWORD _endWait = 4000;   // ms in which a program ends that can't end at once
constexpr Window _usualWindow = {24, 80};
constexpr size_t _outputSize = 4096;
constexpr DWORD _ansiMode = 7;  // processed output, wrap at the end of line, ANSI sequences

// Bytes read and not yet taken, from _pos on: all input that isn't from a console; of a console,
// what the reads of a line and of a key have left.
std::string _buf;
size_t _pos = 0;
std::wstring _wide;    // half a character of the console, whose other half comes next
bool _ended = false;   // the input, not a console, is at its end
bool _skipLf = false;  // a line feed that comes next belongs to the carriage return before it
int _scanCode = -1;    // second half of an extended key whose first was given

HANDLE _input() {
  static const HANDLE handle = GetStdHandle(STD_INPUT_HANDLE);
  return handle;
}

bool _isConsole() {
  DWORD mode;
  static const bool console = GetConsoleMode(_input(), &mode) != 0;
  return console;
}

// The output console as it was found.
bool _outputFound = false;
DWORD _foundMode;
UINT _foundPage;

std::atomic<const char*> _restoreText = nullptr;

void _restore() {
  if (const char* text = _restoreText) std::fputs(text, stdout);
  std::fflush(stdout);
  SetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), _foundMode);
  SetConsoleOutputCP(_foundPage);
}

// Ctrl-C while no key is awaited is noted. Other events do what they do by default, with the
// console as it was found. The host calls this in a thread of its own.
std::atomic<bool> _interrupted = false;
bool _interruptKey = false;  // and as a key

// The end of the program, while it can't end at once, is the end of the input.
std::atomic<bool> _holdEnd = false, _ending = false;

// Lets the program go on to its end. An event without a meaning ends its wait for a key.
void _endSoon() {
  _ending = true;
  const INPUT_RECORD nothing = {};
  DWORD n = 0;
  WriteConsoleInputW(_input(), &nothing, 1, &n);
  for (DWORD ms = 0; ms < _endWait && _holdEnd; ms += _pollEvery) Sleep(_pollEvery);
}

BOOL WINAPI _onEvent(DWORD event) {
  if (event == CTRL_C_EVENT) {
    _interrupted = true;
    return TRUE;
  }
  if (_holdEnd) _endSoon();
  if (_outputFound) _restore();
  return FALSE;
}

// The output console takes whole texts, since it draws slowly and knows no part of a character;
// but what is printed during a long run is seen soon.
DWORD WINAPI _showOutput(void*) {
  for (;;) {
    Sleep(_showEvery);
    std::fflush(stdout);
  }
}

// Appends to the buffer what the console gave.
void _append(const wchar_t* text, size_t size) {
  _wide.append(text, size);
  const size_t whole = _wide.size() - (!_wide.empty() && IS_HIGH_SURROGATE(_wide.back()));
  const int from = static_cast<int>(whole);
  const int n = WideCharToMultiByte(CP_UTF8, 0, _wide.data(), from, nullptr, 0, nullptr, nullptr);
  const size_t at = _buf.size();
  _buf.resize(at + static_cast<size_t>(n));
  WideCharToMultiByte(CP_UTF8, 0, _wide.data(), from, _buf.data() + at, n, nullptr, nullptr);
  _wide.erase(0, whole);
}

// Reads a line, or a piece of one, with the console's line editing.
bool _fillFromConsole() {
  wchar_t text[1024];
  DWORD n = 0;
  if (!ReadConsoleW(_input(), text, static_cast<DWORD>(std::size(text)), &n, nullptr)) return false;
  _append(text, n);
  // Nothing comes when Ctrl-C breaks the read off, which is noted a moment later.
  if (n == 0 && GetLastError() == ERROR_OPERATION_ABORTED)
    for (DWORD ms = 0; ms < _noteWait && !_interrupted; ms += _pollEvery) Sleep(_pollEvery);
  return n > 0;
}

// True when input can be read within ms. Its end counts as input. False at once when Ctrl-C breaks
// the wait off.
bool _waitInput(int ms) {
  const bool pipe = GetFileType(_input()) == FILE_TYPE_PIPE;
  const ULONGLONG start = GetTickCount64();
  for (;;) {
    if (_interrupted) return false;
    DWORD ready = 0;
    if (!pipe || !PeekNamedPipe(_input(), nullptr, 0, nullptr, &ready, nullptr) || ready > 0)
      return true;
    if (ms != _forever && GetTickCount64() - start >= static_cast<ULONGLONG>(ms)) return false;
    Sleep(_pollEvery);
  }
}

bool _fillFromFile(int ms) {
  if (_ended || !_waitInput(ms)) return false;
  char bytes[4096];
  DWORD n = 0;
  _ended = !ReadFile(_input(), bytes, sizeof bytes, &n, nullptr) || n == 0;
  _buf.append(bytes, n);
  return n > 0;
}

// Appends to the buffer what can be read, waiting at most ms for it. False when nothing came.
bool _fill(int ms) {
  _buf.erase(0, _pos);
  _pos = 0;
  OS_CountWait();
  std::fflush(nullptr);
  return _isConsole() ? _fillFromConsole() : _fillFromFile(ms);
}

// Drops the second half of a line end whose first was given.
void _dropLf() {
  if (!_skipLf || _pos == _buf.size()) return;
  _pos += _buf[_pos] == '\n';
  _skipLf = false;
}

// True when the i-th byte ahead is in the buffer, after waiting at most ms for it.
bool _have(size_t i, int ms) {
  for (;;) {
    _dropLf();
    if (_pos + i < _buf.size()) return true;
    if (!_fill(ms)) return false;
  }
}

int _byte(size_t at) { return static_cast<unsigned char>(_buf[at]); }

int _take(int ms) { return _have(0, ms) ? _byte(_pos++) : keyEnd; }

// The i-th byte ahead of a key of several bytes, which comes in one go.
int _ahead(size_t i) {
  const bool there = _isConsole() ? _pos + i < _buf.size() : _have(i, _sequenceWait);
  return there ? _byte(_pos + i) : keyEnd;
}

// The extended keys of a console.
struct ExtendedKey {
  WORD virtualKey;
  int scanCode;
};
constexpr ExtendedKey _extendedKeys[] = {
    {VK_HOME, 71}, {VK_UP, 72},   {VK_PRIOR, 73}, {VK_LEFT, 75},   {VK_RIGHT, 77},
    {VK_END, 79},  {VK_DOWN, 80}, {VK_NEXT, 81},  {VK_INSERT, 82}, {VK_DELETE, 83},
    {VK_F1, 59},   {VK_F2, 60},   {VK_F3, 61},    {VK_F4, 62},     {VK_F5, 63},
    {VK_F6, 64},   {VK_F7, 65},   {VK_F8, 66},    {VK_F9, 67},     {VK_F10, 68},
};

// What an event types: a character, or an extended key's scan code, or nothing (both are 0).
struct Typed {
  wchar_t character;
  int scanCode;
};
Typed _typed(const INPUT_RECORD& event) {
  if (event.EventType != KEY_EVENT) return {};
  const KEY_EVENT_RECORD& key = event.Event.KeyEvent;
  const wchar_t c = key.uChar.UnicodeChar;
  // A character typed by its number comes when the Alt key goes up.
  if (!key.bKeyDown && key.wVirtualKeyCode != VK_MENU) return {};
  if (c == 127) return {L'\b', 0};
  if (c) return {c == L'\n' ? L'\r' : c, 0};
  for (const ExtendedKey& known : _extendedKeys)
    if (key.bKeyDown && known.virtualKey == key.wVirtualKeyCode) return {0, known.scanCode};
  return {};
}

// Key mode: Ctrl-C and Ctrl-S are keys like others, and a change of the window's size is told. The
// object holds the console in this mode.
class KeyMode {
 public:
  KeyMode() {
    GetConsoleMode(_input(), &_found);
    SetConsoleMode(_input(), (_found | ENABLE_WINDOW_INPUT) &
                                 ~static_cast<DWORD>(ENABLE_PROCESSED_INPUT | ENABLE_LINE_INPUT |
                                                     ENABLE_ECHO_INPUT));
  }
  ~KeyMode() { SetConsoleMode(_input(), _found); }
  KeyMode(const KeyMode&) = delete;
  KeyMode& operator=(const KeyMode&) = delete;

 private:
  DWORD _found = 0;
};

// The next key of the console: its first byte, the others in the buffer or in _scanCode; or
// keyResized, if that is asked for.
int _consoleKey(bool tellResize = false) {
  OS_CountWait();
  std::fflush(nullptr);
  const KeyMode mode;
  while (_pos == _buf.size()) {
    if (_ending) return keyEnd;
    INPUT_RECORD event;
    DWORD n = 0;
    if (!ReadConsoleInputW(_input(), &event, 1, &n) || n == 0) return keyEnd;
    if (event.EventType == WINDOW_BUFFER_SIZE_EVENT && tellResize) return keyResized;
    const Typed typed = _typed(event);
    if (typed.scanCode) {
      _scanCode = typed.scanCode;
      return FirstHalf(_scanCode);
    }
    if (typed.character) _append(&typed.character, 1);
  }
  return _byte(_pos++);
}

bool _consoleKeyPending() {
  INPUT_RECORD events[256];
  DWORD n = 0;
  if (!PeekConsoleInputW(_input(), events, static_cast<DWORD>(std::size(events)), &n)) return false;
  for (DWORD i = 0; i < n; ++i) {
    const Typed typed = _typed(events[i]);
    if (typed.character || typed.scanCode) return true;
  }
  return false;
}

}  // namespace

void ansi_on() {
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  if (!GetConsoleMode(output, &_foundMode)) return;
  _foundPage = GetConsoleOutputCP();
  _outputFound = true;
  SetConsoleMode(output, _ansiMode);
  SetConsoleOutputCP(CP_UTF8);
  std::atexit(_restore);
  _setmode(_fileno(stdout), _O_BINARY);  // the console knows a line feed
  std::setvbuf(stdout, nullptr, _IOFBF, _outputSize);
  if (HANDLE thread = CreateThread(nullptr, 0, _showOutput, nullptr, 0, nullptr))
    CloseHandle(thread);
}

Window OS_WindowSize() {
  CONSOLE_SCREEN_BUFFER_INFO info;
  const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
  DWORD mode;
  if (!GetConsoleMode(output, &mode)) return {};
  if (!GetConsoleScreenBufferInfo(output, &info)) return _usualWindow;
  // Lines are folded where the buffer ends, which may be wider than the window.
  return {info.srWindow.Bottom - info.srWindow.Top + 1, info.dwSize.X};
}

bool OS_KeysAreTyped() { return _isConsole(); }

void OS_SetRestoreText(const char* text) { _restoreText = text; }

void OS_HoldEnd(bool hold) { _holdEnd = hold; }

int _getch() {
  if (_scanCode >= 0) {
    const int second = _scanCode;
    _scanCode = -1;
    return second;
  }
  _dropLf();
  const bool event = _isConsole() && _pos == _buf.size();
  const int c = event ? _consoleKey() : _take(_forever);
  if (event && _scanCode >= 0) return c;
  if (c == '\r' && !event) _skipLf = true;
  if (c == '\n') return '\r';
  if (c == keyInterrupt && _isConsole()) _interruptKey = true;
  const size_t tail = LetterTail(c, _ahead);
  _pos += tail;
  if (tail > 0) return keyOther;
  if (c != keyEscape || _isConsole()) return c;
  const Sequence sequence = FoldSequence(_ahead);
  if (sequence.scanCode < 0) return c;
  _pos += sequence.length;
  if (sequence.scanCode == 0) return std::min(sequence.key, keyOther);
  _scanCode = sequence.scanCode;
  return FirstHalf(_scanCode);
}

// The console's own editing, with its recall of lines, is for lines that it reads itself.
bool OS_CanEdit() {
  DWORD mode = 0;
  const char* const term = std::getenv("TERM");
  return _isConsole() && GetConsoleMode(GetStdHandle(STD_OUTPUT_HANDLE), &mode) &&
         (mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) &&
         std::string_view(term ? term : "") != "dumb";
}

void OS_EditLine(bool) { std::fflush(stdout); }

int OS_EditKey(std::string& letter) {
  for (;;) {
    const bool event = _pos == _buf.size();
    const int key = event ? _consoleKey(true) : _byte(_pos++);
    if (event && _scanCode >= 0) return _extended + std::exchange(_scanCode, -1);
    if (key == keyInterrupt) {
      _interrupted = true;
      return keyEnd;
    }
    if (key == keyEscape || key == 0) continue;
    if (key == '\n') return '\r';
    if (key == _endMark) return _endOfFileKey;
    if (key < ' ') return key;
    letter = static_cast<char>(key);
    for (size_t tail = LetterTail(key, _ahead); tail > 0; --tail)
      letter += static_cast<char>(_byte(_pos++));
    return 0;
  }
}

// The console keeps keys as they are typed, whatever the mode, up to the read.
void OS_HoldKeys(bool) {}

bool _kbhit() {
  _dropLf();
  if (_scanCode >= 0 || _pos < _buf.size()) return true;
  return _isConsole() ? _consoleKeyPending() : _have(0, 0);
}

bool OS_ReadLine(size_t max, std::string& line) {
  line.clear();
  bool content = true;
  for (size_t n = 0; n < max; ++n) {
    int c = _take(_forever);
    if (c == _endMark) {
      _ended = true;  // for good unless it is a console
      _pos = _buf.size();
      c = keyEnd;
    } else if (c == '\r' && _have(0, _forever) && _buf[_pos] == '\n') {
      c = _byte(_pos++);
    }
    if (c == keyEnd) return n > 0 && !_interrupted;
    if (c == 0) content = false;
    if (content || c == '\n') line += static_cast<char>(c);
    if (c == '\n') return true;
  }
  return max > 0;
}

void OS_CatchInterrupt() { SetConsoleCtrlHandler(_onEvent, TRUE); }

bool OS_Interrupted() { return _interrupted || _interruptKey; }

void OS_ForgetInterrupt() {
  if (!OS_Interrupted()) return;
  _interruptKey = false;
  if (_isConsole()) FlushConsoleInputBuffer(_input());
  _interrupted = false;
  _pos = _buf.size();
  _wide.clear();
  _skipLf = false;
  _scanCode = -1;
  _ended = _ended || !_isConsole();
}

}  // namespace mox
