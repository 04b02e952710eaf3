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
#include "host/input.h"

namespace mox {

namespace {

constexpr DWORD _pollEvery = 5;    // ms between two looks at a pipe
constexpr DWORD _noteWait = 1000;  // ms in which Ctrl-C is noted
constexpr DWORD _showEvery = 100;  // ms in which printed output appears
constexpr DWORD _endWait = 4000;   // ms in which a program ends that can't end at once
constexpr Window _usualWindow = {24, 80};
constexpr size_t _outputSize = 4096;
constexpr DWORD _ansiMode = 7;  // processed output, wrap at the end of line, ANSI sequences

std::wstring _wide;  // half a character of the console, whose other half comes next

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
  std::string bytes(static_cast<size_t>(n), 0);
  WideCharToMultiByte(CP_UTF8, 0, _wide.data(), from, bytes.data(), n, nullptr, nullptr);
  g_input.bytes += bytes;
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
    if (ms != forever && GetTickCount64() - start >= static_cast<ULONGLONG>(ms)) return false;
    Sleep(_pollEvery);
  }
}

bool _fillFromFile(int ms) {
  if (!_waitInput(ms)) return false;
  char bytes[4096];
  DWORD n = 0;
  g_input.ended = !ReadFile(_input(), bytes, sizeof bytes, &n, nullptr) || n == 0;
  g_input.bytes.append(bytes, n);
  return n > 0;
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

// The next key of the console: its first byte, the others in the buffer or the scan code ahead; or
// keyResized, if that is asked for.
int _consoleKey(bool tellResize = false) {
  OS_CountWait();
  std::fflush(nullptr);
  const KeyMode mode;
  while (!InPending()) {
    if (_ending) return keyEnd;
    INPUT_RECORD event;
    DWORD n = 0;
    if (!ReadConsoleInputW(_input(), &event, 1, &n) || n == 0) return keyEnd;
    if (event.EventType == WINDOW_BUFFER_SIZE_EVENT && tellResize) return keyResized;
    const Typed typed = _typed(event);
    if (typed.scanCode) {
      g_input.scanCode = typed.scanCode;
      return FirstHalf(typed.scanCode);
    }
    if (typed.character) _append(&typed.character, 1);
  }
  return InTake(0);
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
  if (g_input.scanCode >= 0) return std::exchange(g_input.scanCode, -1);
  const bool event = _isConsole() && !InPending();
  const int c = event ? _consoleKey() : InTake(forever);
  if (event && g_input.scanCode >= 0) return c;
  if (c == '\r' && !event) g_input.skipLf = true;
  if (c != keyEscape || _isConsole()) return InKey(c);
  const Sequence sequence = InTakeSequence();
  return sequence.scanCode < 0 ? c : InSequenceKey(sequence);
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
    const bool event = !InPending();
    const int key = event ? _consoleKey(true) : InTake(0);
    if (event && g_input.scanCode >= 0) return keyExtended + std::exchange(g_input.scanCode, -1);
    if (key == keyInterrupt) {
      _interrupted = true;
      return keyEnd;
    }
    if (key == keyEscape || key == 0) continue;
    if (key == '\n') return '\r';
    if (key == endMark) return keyEndOfFile;
    if (key < ' ') return key;
    letter = InLetter(key);
    return 0;
  }
}

// The console keeps keys as they are typed, whatever the mode, up to the read.
void OS_HoldKeys(bool) {}

bool _kbhit() {
  if (g_input.scanCode >= 0 || InPending()) return true;
  return _isConsole() ? _consoleKeyPending() : InHave(0, 0);
}

bool OS_ReadLine(size_t max, std::string& line) { return InLine(max, line, InLineByte); }

void OS_CatchInterrupt() { SetConsoleCtrlHandler(_onEvent, TRUE); }

bool OS_Interrupted() { return _interrupted || g_input.interruptKey; }

void OS_ForgetInterrupt() {
  if (!OS_Interrupted()) return;
  if (_isConsole()) FlushConsoleInputBuffer(_input());
  _interrupted = false;
  _wide.clear();
  InForget();
}

// The rest of a key is there with its first byte: the console waits for whole lines only.
bool InFill(int ms) {
  if (_isConsole()) return ms == forever && _fillFromConsole();
  return _fillFromFile(ms);
}

}  // namespace mox
