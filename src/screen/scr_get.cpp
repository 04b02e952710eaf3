// Entry of one field.

#include <algorithm>

#include "screen/scr.h"
#include "session/misc.h"
#include "session/options.h"

namespace mox {

namespace {

constexpr std::string_view entryChars = "X#9A!";

bool _endsField(int key) {
  static constexpr int keys[] = {keyCtrlA,   keyCtrlB, keyUp,   keyCtrlF, keyTab,  keyEnter,
                                 keyAbandon, keyMark,  keySave, keyDown,  keyCtrlZ};
  return std::find(std::begin(keys), std::end(keys), key) != std::end(keys);
}

bool _isLetter(int c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
bool _isNumeric(int c) {
  return IsPrintable(c) &&
         std::string_view("0123456789-+. ").find(static_cast<char>(c)) != std::string_view::npos;
}

// The character to store for a key or character at a picture character; -1 when it is refused.
int _trans(int c, char picture) {
  switch (picture) {
    case 'X': return c;
    case '9':
    case '#': return _isNumeric(c) ? c : -1;
    case 'A': return _isLetter(c) ? c : -1;
    case '!': return c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c;
    default: return -1;
  }
}

// A field that is being edited. Positions from 0 to width - 1 can be changed; the cursor can also
// stand at the width itself, behind the last character typed.
struct Entry {
  std::string& text;
  std::string picture;
  bool pictured;  // the caller gave the picture
  size_t width;
  size_t at;

  void remove() {
    if (at >= width) return;
    text.erase(at, 1);
    text.insert(width - 1, 1, ' ');
  }

  // True when the character filled the field's last position.
  bool enter(int key) {
    if (at >= width) return false;
    const int c = _trans(key, picture[at]);
    if (!IsPrintable(c)) return false;
    if (g_opt[optINSERT]) {
      text.insert(at, 1, ' ');
      text.erase(width, 1);
      if (pictured) _prep(text, picture);
    }
    text[at++] = static_cast<char>(c);
    return at == width;
  }
};

void _cursorTo(int row, int col, const Entry& e) {
  ScrToBehind(row, col, ScrColumnOf(e.text, e.at) + (g_opt[optCOLON] ? 1 : 0));
}

}  // namespace

void _prep(std::string& text, std::string_view picture) {
  const size_t n = std::min(text.size(), picture.size());
  for (size_t i = 0; i < n; ++i)
    if (_trans(static_cast<signed char>(text[i]), picture[i]) < ' ') text[i] = ' ';
}

int ScrStart(std::string_view text, std::string_view picture) {
  if (picture.empty()) return 0;
  const size_t start = picture.substr(0, text.size()).find_first_of(entryChars);
  return start == picture.npos ? -1 : static_cast<int>(start);
}

int ScrGet(int row, int col, std::string& text, char type, std::string_view picture) {
  const int start = ScrStart(text, picture);
  if (start < 0) return -1;
  const bool pictured = !picture.empty();
  Entry e{text, std::string(picture), pictured, text.size(), static_cast<size_t>(start)};
  if (pictured) {
    e.width = std::min(e.width, picture.size());
    _prep(text, picture);
  } else {
    e.picture.assign(e.width, type == 'N' ? '9' : 'X');
  }
  for (;;) {
    ScrSayRev(row, col, text);
    _cursorTo(row, col, e);
    const int key = ScrGetKey();
    if (_endsField(key)) return key;
    switch (key) {
      case keyRight:
        if (e.at + 1 < e.width) ++e.at;
        break;
      case keyLeft:
        if (e.at > 0) --e.at;
        break;
      case keyDelete: e.remove(); break;
      case keyBackspace:
        if (e.at > 0) {
          --e.at;
          e.remove();
        }
        break;
      case keyInsert:
        g_opt[optINSERT] = !g_opt[optINSERT];
        ScrSayInsert(g_opt[optINSERT]);
        break;
      default:
        if (e.enter(key) && !g_opt[optCONFIRM]) return keyEnter;
    }
  }
}

}  // namespace mox
