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

// False, with the report, when the stack holds fewer than n values.
bool _needs(int depth, int n) {
  if (depth >= n) return true;
  IntErr("1");
  return false;
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

int _arithmetic(int depth, Stack& stk, char op) {
  if (!_needs(depth, 2)) return 0;
  stk[depth - 2] = StrFmN1N2Op(stk[depth - 2], stk[depth - 1], op);
  return -1;
}

int _logical(int depth, Stack& stk, bool (*op)(bool, bool)) {
  if (!_needs(depth, 2)) return 0;
  stk[depth - 2] = L_ToVTLD(op(L_FmVTLD(stk[depth - 2]), L_FmVTLD(stk[depth - 1])));
  return -1;
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

int _addToTop(int depth, Stack& stk, int change) {
  if (depth < 1) return 0;
  stk[depth - 1] = std::to_string(DblToInt(TxtToDbl(stk[depth - 1])) + change);
  return 0;
}

}  // namespace

int OpS2N(int depth, Stack& stk) {
  if (!_needs(depth, 1)) return 0;
  std::string& top = stk[depth - 1];
  const Typ typ = GetTyp(top);
  top = SetTyp(top, typ.type, typ.length, typ.decimals);
  return 0;
}

int OpAdd(int depth, Stack& stk) {
  if (!_needs(depth, 2)) return 0;
  std::string& a = stk[depth - 2];
  const std::string& b = stk[depth - 1];
  a = _isQuoted(a) ? s2qs(qs2s(a) + qs2s(b)) : StrFmN1N2Op(a, _skipQuote(b), '+');
  return -1;
}

int OpSub(int depth, Stack& stk) { return _arithmetic(depth, stk, '-'); }
int OpMul(int depth, Stack& stk) { return _arithmetic(depth, stk, '*'); }

int OpDiv(int depth, Stack& stk) {
  if (!_needs(depth, 2)) return 0;
  if (TxtToDbl(stk[depth - 1]) == 0) {
    SetErr("*** ZERO DIVIDE", "");
    return 0;
  }
  return _arithmetic(depth, stk, '/');
}

int OpNeg(int depth, Stack& stk) {
  if (!_needs(depth, 1)) return 0;
  stk[depth - 1] = StrFmN1N2Op("0,N,1,0", stk[depth - 1], '-');
  return 0;
}

int OpPow(int depth, Stack& stk) {
  if (!_needs(depth, 2)) return 0;
  int length = 0, decimals = 0, ignored = 0;
  const double x = N_FmVTLD(stk[depth - 2], length, decimals);
  const double y = N_FmVTLD(stk[depth - 1], length, ignored);
  if (y > 1) decimals = DblToInt(decimals * y + 0.999999);
  stk[depth - 2] = N_ToVTLD(std::pow(x, y), -1, decimals);
  return -1;
}

int OpAnd(int depth, Stack& stk) {
  return _logical(depth, stk, [](bool a, bool b) { return a && b; });
}

int OpOr(int depth, Stack& stk) {
  return _logical(depth, stk, [](bool a, bool b) { return a || b; });
}

int OpNot(int depth, Stack& stk) {
  if (!_needs(depth, 1)) return 0;
  stk[depth - 1] = L_ToVTLD(!L_FmVTLD(stk[depth - 1]));
  return 0;
}

int OpInc(int depth, Stack& stk) { return _addToTop(depth, stk, 1); }
int OpDec(int depth, Stack& stk) { return _addToTop(depth, stk, -1); }

int CmpOperator(std::string_view word) {
  for (size_t i = 0; i < std::size(cmpOps); ++i)
    if (cmpOps[i].word == word) return static_cast<int>(i);
  return -1;
}

int OpCmp(int depth, Stack& stk, int op) {
  if (!_needs(depth, 2)) return 0;
  bool truth = false;
  if (op < 0) {
    IntErr("2");
  } else {
    const int sign = _compare(stk[depth - 2], stk[depth - 1]);
    truth = sign < 0 ? cmpOps[op].below : sign > 0 ? cmpOps[op].above : cmpOps[op].equal;
  }
  stk[depth - 2] = truth ? valTrue : valFalse;
  return -1;
}

}  // namespace mox
