#include "session/value.h"

#include <algorithm>

#include "session/error.h"
#include "session/misc.h"
#include "session/number.h"

namespace mox {

namespace {

constexpr int maxLength = 254;
constexpr int maxShown = 1000;   // most columns or decimals that a value asks for when it is shown
constexpr int valueDigits = 15;  // behind the point of a computed number

std::string _tail(char type, int length, int decimals) {
  std::string tail{',', type, ','};
  tail += std::to_string(length);
  tail += ',';
  tail += std::to_string(decimals);
  return tail;
}

// Takes an integer, with leading blanks and a sign, off the text; false if none stands there.
bool _takeInt(std::string_view& text, int& number) {
  text = dlb(text);
  const size_t digits = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
  const size_t end = std::min(text.find_first_not_of("0123456789", digits), text.size());
  if (end == digits) return false;
  number = std::clamp(TxtToInt(text.substr(0, end)), 0, maxShown);
  text.remove_prefix(end);
  return true;
}

// Reads ",letter,length,decimals"; false if something else stands there.
bool _readTail(std::string_view tail, Typ& typ) {
  if (tail.size() < 3 || tail[2] != ',') return false;
  typ.type = tail[1];
  tail.remove_prefix(3);
  if (!_takeInt(tail, typ.length) || tail.empty() || tail[0] != ',') return false;
  tail.remove_prefix(1);
  return _takeInt(tail, typ.decimals);
}

Typ _bareTyp(std::string_view text) {
  const size_t last = text.find_last_not_of(" \t\r\n");
  text = dlb(text.substr(0, last == text.npos ? 0 : last + 1));
  const int length = static_cast<int>(text.size());
  if (length == 1 && std::string_view("YyTt").find(text[0]) != text.npos)
    return {'L', length, 0, -1};
  if (length == 1 && std::string_view("NnFf").find(text[0]) != text.npos)
    return {'L', length, 0, -2};
  const size_t dot = text.find('.');
  const int decimals = dot == text.npos ? 0 : length - static_cast<int>(dot) - 1;
  return {'N', length, decimals, 0};
}

}  // namespace

Typ GetTyp(std::string_view text) {
  if (!text.empty() && text[0] == '"') return {'C', static_cast<int>(qs2s(text).size()), 0, 0};
  const size_t comma = text.find(',');
  if (comma == text.npos) return _bareTyp(text);
  Typ typ;
  if (!_readTail(text.substr(comma), typ)) IntErr("GetTyp");
  return typ;
}

std::string SetTyp(std::string_view text, char type, int length, int decimals) {
  if (!text.empty() && text[0] == '"') return std::string(text);
  length = std::clamp(length, 1, maxLength);
  decimals = std::min(decimals, length - 1);
  std::string value(text.substr(0, text.find(',')));
  value += _tail(type, length, decimals);
  return value;
}

double N_FmVTLD(std::string_view text, int& length, int& decimals) {
  const Typ typ = GetTyp(text);
  if (typ.type != 'N') SynErr("");
  length = typ.length;
  decimals = typ.decimals;
  return TxtToDbl(text);
}

std::string N_ToVTLD(double x, int length, int decimals) {
  decimals = std::min(decimals, maxShown);
  if (length < 0) {
    length = static_cast<int>(FmtFixSigned(x, 1, decimals).size());
    if (x == 0) --length;
    if (decimals == 0) ++length;
  }
  std::string value = FmtSci(x, valueDigits);
  value += _tail('N', length, decimals);
  return value;
}

int StackInt(std::string_view text) { return DblToInt(TxtToDbl(text)); }

bool L_FmVTLD(std::string_view text) {
  const Typ typ = GetTyp(text);
  return typ.bare == -1 || (typ.bare == 0 && TxtToInt(text) != 0);
}

std::string L_ToVTLD(bool truth) { return std::string(truth ? valTrue : valFalse); }

std::string fmtExpr(std::string_view text) {
  const Typ typ = GetTyp(text);
  if (typ.type == 'L') return L_FmVTLD(text) ? ".T." : ".F.";
  if (typ.type == 'N') return FmtFixSigned(TxtToDbl(text), typ.length, typ.decimals);
  return qs2s(text);
}

}  // namespace mox
