#include "session/value.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "session/error.h"
#include "session/misc.h"
#include "session/number.h"

namespace mox {

namespace {

constexpr int maxLength = 254;
constexpr int valueDigits = 15;  // behind the point of a computed number

void _addTail(std::string& text, char type, int length, int decimals) {
  text += {',', type, ','};
  text += std::to_string(length);
  text += ',';
  text += std::to_string(decimals);
}

// True for the text that a whole number of at most 15 digits prints as.
bool _isPlainInteger(std::string_view text) {
  if (text == "-0") return false;
  if (text.starts_with('-')) text.remove_prefix(1);
  if (text.empty() || text.size() > valueDigits || (text[0] == '0' && text.size() > 1))
    return false;
  return text.find_first_not_of("0123456789") == text.npos;
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

Value Value::ofCount(int n) {
  Value v;
  v.form_ = Form::integer;
  v.number_ = n;
  return v;
}

Value Value::ofNumber(double x) {
  Value v;
  v.form_ = Form::computed;
  v.number_ = x;
  if (ReadsBack(x)) return v;
  std::string digits = FmtSci(x, valueDigits);
  v.number_ = TxtToDbl(digits);
  if (v.number_ == x) return v;
  v.form_ = Form::digits;
  v.text_ = std::move(digits);
  return v;
}

void Value::setDigits(std::string_view digits, int length, int decimals) {
  if (digits.starts_with('"') || digits.find(',') != digits.npos) {
    setText(digits);
    _addTail(text_, 'N', length, decimals);
    return;
  }
  number_ = TxtToDbl(digits);
  form_ = _isPlainInteger(digits) ? Form::integer : Form::digits;
  if (form_ == Form::digits) text_ = digits;
  setTail(length, decimals);
}

void Value::setNumber(const Value& v) {
  if (v.form_ != Form::computed && v.form_ != Form::integer) {
    *this = ofNumber(v.number());
    return;
  }
  form_ = Form::computed;
  tailed_ = made_ = false;
  number_ = v.number_;
}

std::string_view Value::readContent(std::string& room) const { return room = qs2s(text()); }

// A quote inside is doubled in the text and behind the last character stands one. So where one
// content begins the other, the shorter text goes on with a quote, and a quote in its place there
// has another behind it.
int Value::compareQuoted(const Value& a, const Value& b) {
  if (a.form_ != Form::content || b.form_ != Form::content)
    return std::string_view(a.text()).substr(1).compare(std::string_view(b.text()).substr(1));
  const std::string &x = a.text_, &y = b.text_;
  const size_t both = std::min(x.size(), y.size());
  const int sign = std::char_traits<char>::compare(x.data(), y.data(), both);
  if (sign != 0 || x.size() == y.size()) return sign;
  const bool shorter = x.size() < y.size();
  const auto next = static_cast<unsigned char>(shorter ? y[both] : x[both]);
  return (next >= '"') == shorter ? -1 : 1;
}

double Value::numberInside() const {
  if (form_ == Form::content) return TxtToDbl(text_);
  return isQuoted() ? TxtToDbl(std::string_view(text_).substr(1)) : number();
}

double Value::textNumber() const { return form_ == Form::content ? 0 : TxtToDbl(text_); }

bool Value::textHolds() const { return form_ != Form::content && TxtToInt(text_) != 0; }

Typ Value::otherTyp() const {
  if (form_ == Form::truth) return {'L', 1, 0, 0};
  if (form_ == Form::content) return {'C', static_cast<int>(text_.size()), 0, 0};
  return GetTyp(text());
}

void Value::makeText() const {
  switch (form_) {
    case Form::text: return;
    case Form::content:
      text_ = s2qs(text_);
      form_ = Form::text;
      return;
    case Form::truth: text_ = number_ != 0 ? "-1,L,1,0" : "0,L,1,0"; break;
    case Form::integer: text_ = std::to_string(static_cast<int64_t>(number_)); break;
    case Form::computed: text_ = FmtSci(number_, valueDigits); break;
    case Form::digits: break;
  }
  if (tailed_) _addTail(text_, 'N', length_, decimals_);
  made_ = true;
}

Value SetTyp(const Value& value, char type, int length, int decimals) {
  if (value.isQuoted()) return value;
  const std::string& text = value.text();
  length = std::clamp(length, 1, maxLength);
  decimals = std::min(decimals, length - 1);
  const std::string_view digits = std::string_view(text).substr(0, text.find(','));
  if (type == 'N') return Value::ofDigits(digits, length, decimals);
  std::string typed(digits);
  _addTail(typed, type, length, decimals);
  return typed;
}

double N_FmVTLD(const Value& value, int& length, int& decimals) {
  const Typ typ = value.typ();
  if (typ.type != 'N') SynErr("");
  length = typ.length;
  decimals = typ.decimals;
  return value.number();
}

Value N_ToVTLD(double x, int length, int decimals) {
  decimals = std::min(decimals, maxShown);
  if (length < 0) {
    length = 1 + static_cast<int>(FixLength(std::fabs(x), 0, decimals));
    if (x == 0) --length;
    if (decimals == 0) ++length;
  }
  Value v = Value::ofNumber(x);
  v.setTail(length, decimals);
  return v;
}

bool L_FmVTLD(const Value& value) {
  if (value.isKnown()) return value.holds();
  const int bare = value.typ().bare;
  return bare == -1 || (bare == 0 && value.holds());
}

Value L_ToVTLD(bool truth) { return Value::ofTruth(truth); }

std::string fmtExpr(const Value& value) {
  const Typ typ = value.typ();
  if (typ.type == 'L') return L_FmVTLD(value) ? ".T." : ".F.";
  if (typ.type == 'N') return FmtFixSigned(value.number(), typ.length, typ.decimals);
  std::string room;
  return std::string(value.content(room));
}

}  // namespace mox
