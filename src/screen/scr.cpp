#include "screen/scr.h"

#include <algorithm>
#include <cstdio>

#include "host/host.h"
#include "session/options.h"
#include "session/session.h"

namespace mox {

namespace {

constexpr int insertCol = 18;

struct ExtendedKey {
  int scanCode;
  int key;
};
constexpr ExtendedKey extendedKeys[] = {
    {72, keyUp}, {75, keyLeft}, {77, keyRight}, {80, keyDown}, {82, keyInsert}, {83, keyDelete},
};

void _print(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void _sequence(const char* text) {
  if (g_opt[optSCREEN]) std::fputs(text, stdout);
}

int _row(int row) { return std::clamp(row, 0, scrRows - 1); }
int _col(int col) { return std::clamp(col, 0, scrCols - 1); }

// The part of a text that the screen has room for from the place on: the last cell is the end,
// since a text that ran past it would scroll the picture away.
std::string_view _onScreen(int row, int col, std::string_view text) {
  if (!g_opt[optSCREEN]) return text;
  const int room = (scrRows - _row(row)) * scrCols - _col(col);
  return text.substr(0, static_cast<size_t>(room));
}

}  // namespace

void ScrClear() { _sequence("\033[2J"); }

void ScrNewPage() {
  _print(std::string(scrRows + 1, '\n'));
  ScrClear();
}

void ScrTo(int row, int col) {
  if (g_opt[optSCREEN]) std::printf("\033[%d;%dH", row + 1, col + 1);
}

void ScrNVid() { _sequence("\033[37m\033[40m"); }
void ScrRVid() { _sequence("\033[0;30m\033[47m"); }

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
  const std::string field = colon + ScrPlain(text) + colon;
  const std::string_view shown = _onScreen(row, col, field);
  const std::string_view inside = shown.substr(colon.size(), text.size());
  ScrSay(row, col, colon);
  if (g_opt[optINTENSITY]) ScrRVid();
  _print(inside);
  if (g_opt[optINTENSITY]) ScrNVid();
  _print(shown.substr(colon.size() + inside.size()));
}

std::string ScrPlain(std::string_view text) {
  std::string plain(text);
  for (char& c : plain)
    if (static_cast<unsigned char>(c) < ' ' || c == 127) c = ' ';
  return plain;
}

void ScrSayInsert(bool on) { ScrSay(0, insertCol, on ? "INSERT" : "      "); }

void ScrLeave() {
  ScrTo(scrRows - 1, 0);
  _print("\n");
}

ScrKeys::ScrKeys() { OS_HoldKeys(true); }
ScrKeys::~ScrKeys() { OS_HoldKeys(false); }

int ScrGetKey() {
  constexpr int prefixes[] = {0, 224};
  const int key = _getch();
  if (key != prefixes[0] && key != prefixes[1]) {
    if (key != keyEnd) return key;
    InputEnded();
    return keyAbandon;
  }
  const int scanCode = _getch();
  if (scanCode == keyEnd) {
    InputEnded();
    return keyAbandon;
  }
  for (const ExtendedKey& k : extendedKeys)
    if (k.scanCode == scanCode) return k.key;
  return keyExtended + scanCode;
}

}  // namespace mox
