// The arithmetic, logical and comparison steps.
//
// A number carries a display length and a number of decimals from step to step. None of the
// operators but POW tests the types of its operands: each reads the texts by one rule and gives
// what that rule gives.

#include "run/run_ops.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "run/handlers.h"
#include "session/error.h"
#include "session/number.h"
#include "session/value.h"

namespace mox {

namespace {

Value _joined(const Value& a, const Value& b) {
  std::string roomA, roomB;
  std::string both(a.content(roomA));
  return Value::ofContent(both += b.content(roomB));
}

void _arithmetic(Operands& o, char op) {
  const Value& a = o.value();
  const Value& b = o.value();
  o.result(StrFmN1N2Op(a, b, op));
}

struct CmpOp {
  std::string_view word;
  bool below, equal, above;  // what the operator is true for
};
constexpr CmpOp cmpOps[] = {
    {"LE", true, true, false},  {"GE", false, true, true},  {"NE", true, false, true},
    {"EQ", false, true, false}, {"LT", true, false, false}, {"GT", false, false, true},
};

bool _holds(int sign, int op) {
  const CmpOp& c = cmpOps[op];
  return sign < 0 ? c.below : sign > 0 ? c.above : c.equal;
}

int _sign(double x, double y) { return x < y ? -1 : x > y; }

// Sign of the comparison. The form of a alone decides whether texts or numbers are compared.
int _compare(const Value& a, const Value& b) {
  if (!a.isQuoted()) return _sign(a.number(), b.numberInside());
  if (b.isQuoted()) return Value::compareQuoted(a, b);
  return std::string_view(a.text()).substr(1).compare(b.text());
}

}  // namespace

// The common core of the arithmetic operators.
Value StrFmN1N2Op(const Value& a, const Value& b, char op) {
  const Typ ta = a.typ();
  const Typ tb = b.typ();
  const double x = a.number();
  const double y = b.number();
  int width = std::max(ta.length, tb.length);
  int places = std::max(ta.decimals, tb.decimals);
  double r = 0;
  switch (op) {
    case '+': r = x + y; break;
    case '-': r = x - y; break;
    case '*':
      r = x * y;
      width = ta.length + tb.length;
      places = ta.decimals + tb.decimals;
      break;
    case '/': r = x / y; break;
  }
  return N_ToVTLD(r, static_cast<int>(FixLength(r, width, places)), places);
}

Value ToNumber(const Value& value) {
  const Typ typ = value.typ();
  return SetTyp(value, typ.type, typ.length, typ.decimals);
}

void OpS2N(Operands& o) { o.result(ToNumber(o.value())); }

void OpAdd(Operands& o) {
  const Value& a = o.value();
  const Value& b = o.value();
  if (a.isQuoted())
    o.result(_joined(a, b));
  else if (b.isQuoted())
    o.result(StrFmN1N2Op(a, std::string_view(b.text()).substr(1), '+'));
  else
    o.result(StrFmN1N2Op(a, b, '+'));
}

void OpSub(Operands& o) { _arithmetic(o, '-'); }
void OpMul(Operands& o) { _arithmetic(o, '*'); }

void OpDiv(Operands& o) {
  const Value& a = o.value();
  const Value& b = o.value();
  if (b.number() == 0) {
    SetErr("*** ZERO DIVIDE", "");
    return o.keep();
  }
  o.result(StrFmN1N2Op(a, b, '/'));
}

void OpNeg(Operands& o) { o.result(StrFmN1N2Op(Value::ofDigits("0", 1, 0), o.value(), '-')); }

void OpPow(Operands& o) {
  int length = 0, decimals = 0, ignored = 0;
  const double x = N_FmVTLD(o.value(), length, decimals);
  const double y = N_FmVTLD(o.value(), length, ignored);
  if (y > 1) decimals = DblToInt(decimals * y + 0.999999);
  o.result(N_ToVTLD(std::pow(x, y), -1, decimals));
}

void OpAnd(Operands& o) {
  const bool a = L_FmVTLD(o.value()), b = L_FmVTLD(o.value());
  o.result(L_ToVTLD(a && b));
}

void OpOr(Operands& o) {
  const bool a = L_FmVTLD(o.value()), b = L_FmVTLD(o.value());
  o.result(L_ToVTLD(a || b));
}

void OpNot(Operands& o) { o.result(L_ToVTLD(!L_FmVTLD(o.value()))); }

void OpInc(Operands& o) { o.result(Value::ofCount(o.integer() + 1)); }
void OpDec(Operands& o) { o.result(Value::ofCount(o.integer() - 1)); }

int CmpOperator(std::string_view word) {
  for (size_t i = 0; i < std::size(cmpOps); ++i)
    if (cmpOps[i].word == word) return static_cast<int>(i);
  return -1;
}

bool OpCmp(const Value& a, const Value& b, int op) {
  if (op >= 0) return _holds(_compare(a, b), op);
  IntErr("2");
  return false;
}

bool CmpNumbers(double x, double y, int op) { return _holds(_sign(x, y), op); }

}  // namespace mox
