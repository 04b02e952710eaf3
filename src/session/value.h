// The values of the operand stack. What can be seen of a value is its text, in one of these forms:
//
//   quoted string  "abc"            a character value, inner quotes doubled
//   VTLD           12.50,N,5,2      a number: value text, type N, display length, decimals
//                  -1,L,1,0         true; 0,L,1,0 is false
//   bare text      2                a count, a name, a source text: no comma, no leading quote
//
// The value text of a number is whatever reads as a number; it isn't normalised. Length and
// decimals are for display and for the width rules of the operators only.
//
// Most numbers and truths go from step to step, and nobody looks at their text. So a Value holds
// what it is, and makes its text when somebody asks for it. Nothing else tells a value that was
// computed from one that was read from its text: the number of a value is the one that its text
// reads as, also where the text of 16 digits reads as a neighbour of what was computed.
#pragma once

#include <string>
#include <string_view>

namespace mox {

constexpr int maxShown = 1000;  // most columns or decimals that a value asks for when it is shown

struct Typ {
  char type = 'N';  // C, N or L; or whatever letter stands in a VTLD tail
  int length = 0;
  int decimals = 0;
  int bare = 0;  // -1 for a bare true (Y, y, T, t), -2 for a bare false (N, n, F, f), else 0
};

class Value {
 public:
  Value() = default;  // the empty text
  Value(std::string text) : text_(std::move(text)) {}
  Value(std::string_view text) : text_(text) {}
  Value(const char* text) : text_(text) {}
  Value(const Value& v) { *this = v; }
  Value(Value&& v) noexcept { *this = std::move(v); }
  Value& operator=(const Value& v) {
    copyState(v);
    if (hasText()) text_ = v.text_;
    return *this;
  }
  Value& operator=(Value&& v) noexcept {
    copyState(v);
    if (hasText()) text_ = std::move(v.text_);
    return *this;
  }

  // A quoted string of this content.
  static Value ofContent(std::string content) {
    Value v(std::move(content));
    v.form_ = Form::content;
    return v;
  }
  // A bare count.
  static Value ofCount(int n);
  static Value ofTruth(bool truth) {
    Value v;
    v.setTruth(truth);
    return v;
  }
  // A number that was computed, without a tail as yet: its text is FmtSci of 15 decimals.
  static Value ofNumber(double x);
  // A number that was read: its text has these digits.
  static Value ofDigits(std::string_view digits, int length, int decimals) {
    Value v;
    v.setDigits(digits, length, decimals);
    return v;
  }

  // The same in the place of what the value was.
  void setText(std::string_view text) {
    form_ = Form::text;
    tailed_ = false;
    text_ = text;
  }
  void setContent(std::string_view content) {
    form_ = Form::content;
    tailed_ = made_ = false;
    text_ = content;
  }
  void setDigits(std::string_view digits, int length, int decimals);
  // Gives a number that has none its tail.
  void setTail(int length, int decimals) {
    tailed_ = true;
    made_ = false;
    length_ = length;
    decimals_ = decimals;
  }
  void setNumber(const Value& v);  // of another value, as ofNumber
  void setTruth(bool truth) {
    form_ = Form::truth;
    tailed_ = made_ = false;
    number_ = truth ? -1 : 0;
  }

  // The reference holds until the value changes.
  const std::string& text() const {
    if (form_ != Form::text && !made_) makeText();
    return text_;
  }
  // The content of a quoted string; of any other value its text, a lone quote ending it. The room
  // holds it when the value doesn't.
  std::string_view content() const { return text_; }  // of one that isContent
  std::string_view content(std::string& room) const {
    return form_ == Form::content ? std::string_view(text_) : readContent(room);
  }
  double number() const { return isKnown() ? number_ : textNumber(); }
  // The same, of a quoted string that of its content.
  double numberInside() const;
  // True when the integer that the text begins with isn't 0. A computed number begins with a digit
  // other than 0.
  bool holds() const { return form_ > Form::digits ? number_ != 0 : textHolds(); }
  Typ typ() const { return tailed_ ? Typ{'N', shown(length_), shown(decimals_), 0} : otherTyp(); }
  bool isQuoted() const {
    return form_ == Form::content || (form_ == Form::text && text_.starts_with('"'));
  }
  bool isTruth() const { return form_ == Form::truth; }
  bool isContent() const { return form_ == Form::content; }
  // A number or a truth that is known without its text.
  bool isKnown() const { return form_ >= Form::digits; }
  // Sign of the comparison of two quoted strings as their texts compare, behind the first quote.
  static int compareQuoted(const Value& a, const Value& b);

 private:
  // What the text is made of: of the content, in quotes; of a number, which may have a tail.
  enum class Form : char { text, content, digits, integer, computed, truth };

  void copyState(const Value& v) {
    form_ = v.form_;
    tailed_ = v.tailed_;
    made_ = v.made_;
    length_ = v.length_;
    decimals_ = v.decimals_;
    number_ = v.number_;
  }
  // A length or a count of decimals, as far as a value asks for it when it is shown.
  static int shown(int n) { return n < 0 ? 0 : n > maxShown ? maxShown : n; }
  std::string_view readContent(std::string& room) const;
  Typ otherTyp() const;
  bool hasText() const { return form_ <= Form::digits || made_; }
  double textNumber() const;
  bool textHolds() const;
  void makeText() const;

  mutable Form form_ = Form::text;
  bool tailed_ = false;
  mutable bool made_ = false;  // the text is whole; of digits, it has its tail
  int length_ = 0, decimals_ = 0;
  double number_ = 0;
  mutable std::string text_;
};

// Reads the type of a value. A comma that doesn't begin ",letter,length,decimals" is an internal
// error. A bare text is a logical when it is one of the letters, and else a number.
Typ GetTyp(std::string_view text);

// The value with this type information, the length bounded to 1 to 254 and the decimals to less
// than it. A quoted string stays as it is.
Value SetTyp(const Value& value, char type, int length, int decimals);

// The number of a value; one of another type is a syntax error and still gives what it reads as.
double N_FmVTLD(const Value& value, int& length, int& decimals);
// A number as a value. A negative length is worked out: that of the printed number with its sign
// column, one less for 0, and one more without decimals.
Value N_ToVTLD(double x, int length, int decimals);

bool L_FmVTLD(const Value& value);  // truth, as the logical operators see it
Value L_ToVTLD(bool truth);

// The value as the user sees it.
std::string fmtExpr(const Value& value);

}  // namespace mox
