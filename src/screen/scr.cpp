#include "screen/scr.h"

#include <algorithm>
#include <cstdio>

#include "host/host.h"
#include "screen/scr_text.h"
#include "session/misc.h"
#include "session/options.h"
#include "session/session.h"

namespace mox {

namespace {

constexpr int insertCol = 18;
constexpr const char* plainColours = "\033[0m";

struct ExtendedKey {
  int scanCode;
  int key;
};
constexpr ExtendedKey extendedKeys[] = {
    {72, keyUp}, {75, keyLeft}, {77, keyRight}, {80, keyDown}, {82, keyInsert}, {83, keyDelete},
};

constexpr int hintRow = scrRows;

std::string _hint;       // what the row below the screen tells
bool _coloured = false;  // the terminal has colours of the screen

void _print(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

// The window on which the screen is seen: none when it isn't driven.
Window _window() { return g_opt[optSCREEN] ? OS_WindowSize() : Window{}; }

// Tells, before the first screen, that the window is too small for it.
void _checkWindow() {
  static bool told = false;
  const Window w = _window();
  if (told || w.rows == 0 || (w.rows >= scrRows && w.cols >= scrCols)) return;
  told = true;
  ScrNotice(StrFmt("WINDOW OF %d X %d: SCREENS NEED %d X %d", w.rows, w.cols, scrRows, scrCols));
}

void _sequence(const char* text) {
  if (g_opt[optSCREEN]) std::fputs(text, stdout);
}

void _colour(const char* text) {
  _sequence(text);
  if (_coloured || _window().rows == 0) return;
  _coloured = true;
  OS_SetRestoreText(plainColours);
}

void _sayHint() {
  const Window w = _window();
  if (_hint.empty() || w.rows <= hintRow) return;
  ScrTo(hintRow, 0);
  _print(TextFit(_hint, w.cols));
}

int _row(int row) { return std::clamp(row, 0, scrRows - 1); }
int _col(int col) { return std::clamp(col, 0, scrCols - 1); }

// Cells of the window from a place of the screen on.
int _room(const Window& w, int row, int col) {
  return (w.rows - std::min(_row(row), w.rows - 1)) * w.cols - std::min(_col(col), w.cols - 1);
}

// The part of a text that the window has room for from the place on.
std::string_view _onScreen(int row, int col, std::string_view text) {
  const Window w = _window();
  return w.rows == 0 ? text : TextFit(text, _room(w, row, col));
}

}  // namespace

void ScrClear() {
  _checkWindow();
  _sequence("\033[2J");
  _sayHint();
}

void ScrNewPage() {
  _checkWindow();
  _print(std::string(scrRows + 1, '\n'));
  ScrClear();
}

void ScrTo(int row, int col) {
  _checkWindow();
  if (g_opt[optSCREEN]) std::printf("\033[%d;%dH", row + 1, col + 1);
}

void ScrNVid() { _colour("\033[37m\033[40m"); }
void ScrRVid() { _colour("\033[0;30m\033[47m"); }

void ScrRestore() {
  if (!_coloured) return;
  _coloured = false;
  _print(plainColours);
  OS_SetRestoreText(nullptr);
}

void ScrClrEol(int row, int col) {
  row = _row(row);
  col = _col(col);
  ScrTo(row, col);
  _print(std::string(static_cast<size_t>(scrCols - col), ' '));
  ScrTo(row, col);
}

void ScrSay(int row, int col, std::string_view text) {
  ScrTo(_row(row), _col(col));
  _print(_onScreen(row, col, text));
}

void ScrSayRev(int row, int col, std::string_view text) {
  const std::string colon = g_opt[optCOLON] ? ":" : "";
  const std::string drawn = ScrDrawn(text);
  const std::string field = colon + drawn + colon;
  const std::string_view shown = _onScreen(row, col, field);
  const std::string_view inside = shown.substr(colon.size(), drawn.size());
  ScrSay(row, col, colon);
  if (g_opt[optINTENSITY]) ScrRVid();
  _print(inside);
  if (g_opt[optINTENSITY]) ScrNVid();
  _print(shown.substr(colon.size() + inside.size()));
}

void ScrSayLine(int row, std::string_view text) {
  const Window w = _window();
  const std::string drawn = ScrDrawn(text);
  ScrTo(row, 0);
  _print(w.cols == 0 ? drawn : TextFit(drawn, w.cols));
}

void ScrToBehind(int row, int col, int columns) {
  Window w = _window();
  if (w.rows == 0) w = {scrRows, scrCols};
  const int place = std::min(columns, _room(w, row, col) - 1) + std::min(_col(col), w.cols - 1);
  ScrTo(std::min(_row(row), w.rows - 1) + place / w.cols, place % w.cols);
}

std::string ScrPlain(std::string_view text) {
  std::string plain(text);
  for (size_t i = 0; i < plain.size();) {
    const size_t end = LetterEnd(plain, i);
    const unsigned char first = static_cast<unsigned char>(plain[i]);
    const bool high =
        end - i == 2 && first == 0xC2 && static_cast<unsigned char>(plain[i + 1]) < 0xA0;
    if (first < ' ' || first == 127 || high) plain.replace(i, end - i, end - i, ' ');
    i = end;
  }
  return plain;
}

std::string ScrDrawn(std::string_view text) {
  std::string drawn = ScrPlain(text);
  if (_window().rows > 0) drawn.append(text.size() - static_cast<size_t>(TextWidth(drawn)), ' ');
  return drawn;
}

int ScrColumnOf(std::string_view text, size_t at) {
  return _window().rows == 0 ? static_cast<int>(at) : TextColumn(ScrDrawn(text), at);
}

int ScrColumns() {
  const Window w = _window();
  return w.cols == 0 ? scrCols : w.cols;
}

void ScrSayInsert(bool on) { ScrSay(0, insertCol, on ? "INSERT" : "      "); }

void ScrLeave() {
  ScrRestore();
  ScrTo(scrRows - 1, 0);
  _print("\n");
}

void ScrNotice(const std::string& text) {
  _print(text);
  if (OS_KeysAreTyped() && OS_WindowSize().rows > 0) {
    _print(" WAITING");
    ScrGetKey();
  }
  _print("\n");
}

ScrKeys::ScrKeys(std::string_view hint) {
  OS_HoldKeys(true);
  _hint = hint;
  _sayHint();
}

ScrKeys::~ScrKeys() {
  OS_HoldKeys(false);
  ScrRestore();
  if (!_hint.empty() && _window().rows > hintRow) {
    ScrTo(hintRow, 0);
    _print("\033[K");
  }
  _hint.clear();
}

int ScrGetKey() {
  const int key = ScrGetKeyOrEnd();
  return key == keyEnd ? keyAbandon : key;
}

int ScrGetKeyOrEnd() {
  constexpr int prefixes[] = {0, 224};
  const int key = _getch();
  const bool extended = key == prefixes[0] || key == prefixes[1];
  const int scanCode = extended ? _getch() : 0;
  if (key == keyEnd || scanCode == keyEnd) {
    InputEnded();
    return keyEnd;
  }
  if (!extended) return key;
  for (const ExtendedKey& k : extendedKeys)
    if (k.scanCode == scanCode) return k.key;
  return keyExtended + scanCode;
}

}  // namespace mox
