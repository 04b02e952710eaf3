#include "session/number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>

namespace mox {

namespace {

constexpr double _maxDbl = std::numeric_limits<double>::max();
constexpr int _maxInt = std::numeric_limits<int>::max();
constexpr int _minInt = std::numeric_limits<int>::min();

// No double has more digits than these before or behind its point: what goes beyond is zeros.
constexpr int _maxWhole = 309;
constexpr int _maxDecimals = 1074;
constexpr int _maxExact = 15;     // digits that a double always holds
constexpr int _dfltDecimals = 6;  // what a negative count of decimals means

constexpr double _powers[_maxExact + 1] = {1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                           1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

bool _isDigit(const char* p, const char* end) { return p < end && *p >= '0' && *p <= '9'; }

// Skips blanks and one sign; returns true for a minus.
bool _skipSign(const char*& p, const char* end) {
  while (p < end && (*p == ' ' || (*p >= '\t' && *p <= '\r'))) ++p;
  if (p == end || (*p != '-' && *p != '+')) return false;
  return *p++ == '-';
}

// Takes digits, which go on those of n; returns what stands behind them.
const char* _takeDigits(const char* p, const char* stop, int64_t& n) {
  int64_t taken = n;
  for (unsigned digit; p < stop && (digit = static_cast<unsigned char>(*p) - '0') <= 9; ++p)
    taken = 10 * taken + digit;
  n = taken;
  return p;
}

// Of a number's text that is beyond the range of a double at one end or the other: true when it
// is too large. It is far from 1 either way, so the sign of its decimal exponent tells.
bool _isHuge(const char* p, const char* end) {
  int64_t exponent = 0;
  bool behindPoint = false, significant = false;
  for (; p < end && *p != 'e' && *p != 'E'; ++p) {
    if (*p == '.') {
      behindPoint = true;
    } else {
      significant = significant || *p != '0';
      if (significant && !behindPoint) ++exponent;
      if (!significant && behindPoint) --exponent;
    }
  }
  if (p < end && ++p < end && *p == '+') ++p;
  int64_t written = 0;
  if (std::from_chars(p, end, written).ec == std::errc::result_out_of_range) return *p != '-';
  return written > -exponent;
}

double _finite(double x) {
  if (std::isfinite(x)) return x;
  return std::isnan(x) ? 0 : std::copysign(_maxDbl, x);
}

// True when the number is the nearest to n / 10^decimals, and n has at most 15 digits. The decimal
// number is then closer to it than any other of as many digits: both products are rounded once.
bool _isShort(double x, int decimals, int64_t& n) {
  const double scaled = x * _powers[decimals];
  if (!(std::fabs(scaled) < _powers[_maxExact])) return false;
  n = static_cast<int64_t>(scaled);
  return static_cast<double>(n) == scaled && scaled / _powers[decimals] == x;
}

// Prints a number without a width; returns the end.
char* _putFix(char* p, char* end, double x, int decimals) {
  int64_t n = 0;
  if (decimals > _maxExact || !_isShort(x, decimals, n))
    return std::to_chars(p, end, x, std::chars_format::fixed, decimals).ptr;
  if (std::signbit(x)) *p++ = '-';
  char digits[_maxExact];
  const int count =
      static_cast<int>(std::to_chars(digits, std::end(digits), std::abs(n)).ptr - digits);
  const int whole = std::max(count - decimals, 0);
  p = whole > 0 ? std::copy(digits, digits + whole, p) : (*p = '0', p + 1);
  if (decimals == 0) return p;
  *p++ = '.';
  p = std::fill_n(p, decimals - (count - whole), '0');
  return std::copy(digits + whole, digits + count, p);
}

std::string _fmtFix(double x, int width, int decimals, bool signColumn) {
  x = _finite(x);
  if (decimals < 0) decimals = _dfltDecimals;
  const int exact = std::min(decimals, _maxDecimals);
  char text[1 + 1 + _maxWhole + 1 + _maxDecimals];
  text[0] = ' ';
  const char* const end = _putFix(text + 1, std::end(text), x, exact);
  const char* const begin = signColumn && !std::signbit(x) ? text : text + 1;

  const size_t zeros = static_cast<size_t>(decimals - exact);
  const size_t size = static_cast<size_t>(end - begin) + zeros;
  const size_t columns = static_cast<size_t>(std::abs(static_cast<int64_t>(width)));
  const size_t blanks = columns > size ? columns - size : 0;
  std::string result;
  result.reserve(size + blanks);
  if (width > 0) result.append(blanks, ' ');
  result.append(begin, end).append(zeros, '0');
  if (width < 0) result.append(blanks, ' ');
  return result;
}

}  // namespace

double TxtToDbl(std::string_view text) {
  const char* p = text.data();
  const char* const end = p + text.size();
  while (p < end && *p == ' ') ++p;
  bool minus = false;
  if (!_isDigit(p, end)) {
    minus = _skipSign(p, end);
    // The library would also take a sign, "inf" and "nan" here.
    if (!_isDigit(p, end) && !(p < end && *p == '.' && _isDigit(p + 1, end))) return 0;
  }
  // Most numbers are short, and their parts exact. Without a point there is no minus zero.
  const char* const last = p + std::min<std::ptrdiff_t>(end - p, _maxExact + 1);
  int64_t n = 0;
  const char* const point = _takeDigits(p, last, n);
  const char* const q = point < last && *point == '.' ? _takeDigits(point + 1, last, n) : point;
  if (q - p <= _maxExact && (q == end || (*q != 'e' && *q != 'E'))) {
    if (q == point) return static_cast<double>(minus ? -n : n);
    const double x = static_cast<double>(n) / _powers[q - point - 1];
    return minus ? -x : x;
  }
  double x = 0;
  const auto [stop, ec] = std::from_chars(p, end, x);
  if (ec == std::errc::result_out_of_range) x = _isHuge(p, stop) ? _maxDbl : 0;
  return minus ? -x : x;
}

int TxtToInt(std::string_view text) {
  const char* p = text.data();
  const char* const end = p + text.size();
  const bool minus = _skipSign(p, end);
  if (!_isDigit(p, end)) return 0;
  int64_t n = 0;
  if (std::from_chars(p, end, n).ec != std::errc{}) return minus ? _minInt : _maxInt;
  return static_cast<int>(std::clamp<int64_t>(minus ? -n : n, _minInt, _maxInt));
}

int DblToInt(double x) {
  if (std::isnan(x)) return 0;
  return static_cast<int>(std::clamp<double>(x, _minInt, _maxInt));
}

std::string FmtFix(double x, int width, int decimals) { return _fmtFix(x, width, decimals, false); }

std::string FmtFixSigned(double x, int width, int decimals) {
  return _fmtFix(x, width, decimals, true);
}

size_t FixLength(double x, int width, int decimals) {
  const double size = std::fabs(x);
  if (decimals >= 0 && size <= _powers[_maxExact] - 1) {
    int whole = 1;
    while (size > _powers[whole] - 1) ++whole;
    // Between 9 and 10, 99 and 100 ... it depends on how it is rounded.
    if (whole == 1 || size >= _powers[whole - 1])
      return static_cast<size_t>(
          std::max(width, std::signbit(x) + whole + (decimals > 0) + decimals));
  }
  return FmtFix(x, width, decimals).size();
}

bool ReadsBack(double x) {
  int64_t n = 0;
  return _isShort(x, 0, n) || _isShort(x, 4, n) || _isShort(x, 9, n);
}

std::string FmtSci(double x, int decimals) {
  x = _finite(x);
  if (decimals < 0) decimals = _dfltDecimals;
  const int exact = std::min(decimals, _maxDecimals);
  char text[3 + 1 + _maxDecimals + 5];
  text[0] = ' ';
  const char* const end =
      std::to_chars(text + 1, std::end(text), x, std::chars_format::scientific, exact).ptr;
  const char* const begin = std::signbit(x) ? text + 1 : text;
  const char* const digits = std::find(end - 5, end, 'e') + 2;  // behind the exponent's sign

  std::string result;
  result.reserve(static_cast<size_t>(end - begin + 1 + decimals - exact));
  result.append(begin, digits - 2).append(static_cast<size_t>(decimals - exact), '0');
  result.append(digits - 2, digits);
  if (end - digits < 3) result += '0';
  return result.append(digits, end);
}

Bcd6 d2bcd6(double x) {
  const std::string text = FmtSci(x, 10);  // " d.dddddddddde+ddd"
  const std::string_view digits = std::string_view(text).substr(2);
  const int exponent = std::clamp(TxtToInt(digits.substr(digits.find('e') + 1)), -64, 63);

  Bcd6 form;
  form[0] = static_cast<unsigned char>((exponent + 64) | (text[0] == '-' ? 0x80 : 0));
  form[1] = static_cast<unsigned char>((text[1] - '0') << 4 | (digits[1] - '0'));
  for (size_t i = 2; i < form.size(); ++i) {
    const size_t at = 2 * (i - 1);
    form[i] = static_cast<unsigned char>((digits[at] - '0') << 4 | (digits[at + 1] - '0'));
  }
  return form;
}

double bcd2d6(const Bcd6& form) {
  char text[24] = "-";
  char* p = text + 1;
  for (size_t i = 1; i < form.size(); ++i) {
    *p++ = static_cast<char>('0' + (form[i] >> 4));
    if (i == 1) *p++ = '.';
    *p++ = static_cast<char>('0' + (form[i] & 15));
  }
  *p++ = 'e';
  p = std::to_chars(p, std::end(text), (form[0] & 127) - 64).ptr;
  const char* const begin = form[0] & 128 ? text : text + 1;
  return TxtToDbl({begin, static_cast<size_t>(p - begin)});
}

}  // namespace mox
