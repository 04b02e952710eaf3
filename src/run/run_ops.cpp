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

bool _isQuoted(std::string_view text) { return !text.empty() && text[0] == '"'; }

std::string_view _skipQuote(std::string_view text) {
  return _isQuoted(text) ? text.substr(1) : text;
}

// The common core of the arithmetic operators.
std::string StrFmN1N2Op(std::string_view a, std::string_view b, char op) {
  const Typ ta = GetTyp(a);
  const Typ tb = GetTyp(b);
  const double x = TxtToDbl(a);
  const double y = TxtToDbl(b);
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
  return N_ToVTLD(r, static_cast<int>(FmtFix(r, width, places).size()), places);
}

void _arithmetic(Operands& o, char op) {
  const std::string& a = o.text();
  const std::string& b = o.text();
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

// Sign of the comparison. The form of a alone decides whether texts or numbers are compared.
int _compare(std::string_view a, std::string_view b) {
  b = _skipQuote(b);
  if (_isQuoted(a)) return _skipQuote(a).compare(b);
  const double x = TxtToDbl(a);
  const double y = TxtToDbl(b);
  return x < y ? -1 : x > y;
}

}  // namespace

void OpS2N(Operands& o) {
  const std::string& text = o.text();
  const Typ typ = GetTyp(text);
  o.result(SetTyp(text, typ.type, typ.length, typ.decimals));
}

void OpAdd(Operands& o) {
  const std::string& a = o.text();
  const std::string& b = o.text();
  o.result(_isQuoted(a) ? s2qs(qs2s(a) + qs2s(b)) : StrFmN1N2Op(a, _skipQuote(b), '+'));
}

void OpSub(Operands& o) { _arithmetic(o, '-'); }
void OpMul(Operands& o) { _arithmetic(o, '*'); }

void OpDiv(Operands& o) {
  const std::string& a = o.text();
  const std::string& b = o.text();
  if (TxtToDbl(b) == 0) {
    SetErr("*** ZERO DIVIDE", "");
    return o.keep();
  }
  o.result(StrFmN1N2Op(a, b, '/'));
}

void OpNeg(Operands& o) { o.result(StrFmN1N2Op("0,N,1,0", o.text(), '-')); }

void OpPow(Operands& o) {
  int length = 0, decimals = 0, ignored = 0;
  const double x = N_FmVTLD(o.text(), length, decimals);
  const double y = N_FmVTLD(o.text(), length, ignored);
  if (y > 1) decimals = DblToInt(decimals * y + 0.999999);
  o.result(N_ToVTLD(std::pow(x, y), -1, decimals));
}

void OpAnd(Operands& o) {
  const bool a = L_FmVTLD(o.text()), b = L_FmVTLD(o.text());
  o.result(L_ToVTLD(a && b));
}

void OpOr(Operands& o) {
  const bool a = L_FmVTLD(o.text()), b = L_FmVTLD(o.text());
  o.result(L_ToVTLD(a || b));
}

void OpNot(Operands& o) { o.result(L_ToVTLD(!L_FmVTLD(o.text()))); }

void OpInc(Operands& o) { o.result(std::to_string(o.integer() + 1)); }
void OpDec(Operands& o) { o.result(std::to_string(o.integer() - 1)); }

int CmpOperator(std::string_view word) {
  for (size_t i = 0; i < std::size(cmpOps); ++i)
    if (cmpOps[i].word == word) return static_cast<int>(i);
  return -1;
}

std::string_view OpCmp(std::string_view a, std::string_view b, int op) {
  if (op < 0) {
    IntErr("2");
    return valFalse;
  }
  const int sign = _compare(a, b);
  const CmpOp& c = cmpOps[op];
  return (sign < 0 ? c.below : sign > 0 ? c.above : c.equal) ? valTrue : valFalse;
}

}  // namespace mox
