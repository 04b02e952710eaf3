#include "run/join.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "run/handlers.h"
#include "run/run_ops.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/options.h"

namespace mox {

namespace {

bool _done(Run& run, const Joint& j) {
  run.pc += static_cast<int>(j.row->steps.size());
  return true;
}

// Behind a comparison: its truth goes on the stack, or it decides the jump.
bool _compared(Run& run, const Joint& j, bool truth) {
  if (j.target < 0)
    run.push().setTruth(truth);
  else if (!truth)
    return run.pc = j.target, true;
  return _done(run, j);
}

bool _source(Run& run, Joint& j) { return !g_opt[optECHO] && !g_opt[optSTEP] && _done(run, j); }

bool _pushValue(Run& run, Joint& j) {
  run.push() = j.value;
  return _done(run, j);
}

bool _pushName(Run& run, Joint& j) {
  if (GetNamed(j.name, run.push())) return _done(run, j);
  --run.depth;
  return false;
}

bool _store(Run& run, Joint& j) {
  if (g_opt[optTALK] || run.depth < 1 || !PutNamed(j.name, run.top())) return false;
  --run.depth;
  return _done(run, j);
}

bool _compareName(Run& run, Joint& j) {
  double x = 0;
  if (!GetNumber(j.name, x)) return false;
  return _compared(run, j, CmpNumbers(x, j.value.number(), j.op));
}

bool _calculate(Run& run, Joint& j) {
  if (run.depth < 1 || !run.top().isKnown()) return false;
  run.top() = StrFmN1N2Op(run.top(), j.value, static_cast<char>(j.op));
  return _done(run, j);
}

bool _compareNames(Run& run, Joint& j) {
  double x = 0, y = 0;
  if (!GetNumber(j.other, x) || !GetNumber(j.name, y)) return false;
  return _compared(run, j, CmpNumbers(x, y, j.op));
}

// Two truths, or one, as the machine mostly has them.
template <class Op>
bool _truths(Run& run, const Joint& j, int count, Op op) {
  if (run.depth < count) return false;
  Value& b = run.top();
  Value& a = *(&b - (count - 1));
  if (!a.isTruth() || !b.isTruth()) return false;
  a.setTruth(op(a.holds(), b.holds()));
  run.depth -= count - 1;
  return _done(run, j);
}
bool _and(Run& run, Joint& j) {
  return _truths(run, j, 2, [](bool a, bool b) { return a && b; });
}
bool _or(Run& run, Joint& j) {
  return _truths(run, j, 2, [](bool a, bool b) { return a || b; });
}
bool _not(Run& run, Joint& j) {
  return _truths(run, j, 1, [](bool a, bool) { return !a; });
}

// The runs, a letter for each step, the longer before the shorter.
//
//   N  PUSH of a name      G  GETV     C  CMP
//   9  PUSH of a number    S  STORE    J  JPF
//   1  PUSH of the 1       L  S2N      + - *  ADD SUB MUL
//   Q  PUSH of a text      :  a source text   & | !  AND OR NOT
constexpr JoinRow rows[] = {
    {"N1GN1GC", _compareNames},
    {"N1G9LCJ", _compareName},
    {"N1G9LC", _compareName},
    {"N1G", _pushName},
    {"N1S", _store},
    {"91+", _pushValue},
    {"9L+", _calculate},
    {"9L-", _calculate},
    {"9L*", _calculate},
    {"9L", _pushValue},
    {"9", _pushValue},
    {"Q", _pushValue},
    {":", _source},
    {"&", _and},
    {"|", _or},
    {"!", _not},
};

constexpr char other = '.';  // stands in no row

char _pushed(std::string_view operand) {
  if (operand == "1") return '1';
  if (operand.starts_with('"')) return s2qs(qs2s(operand)) == operand ? 'Q' : other;
  const char first = operand.empty() || operand.find(',') != operand.npos ? other : operand[0];
  if (first >= '0' && first <= '9') return '9';
  return UpperChr(first) >= 'A' && UpperChr(first) <= '_' ? 'N' : other;
}

char _letter(const Step& step) {
  struct Word {
    Handler handler;
    char letter;
  };
  static constexpr Word words[] = {{OpGetV, 'G'}, {OpStore, 'S'}, {OpAdd, '+'},
                                   {OpSub, '-'},  {OpMul, '*'},   {OpAnd, '&'},
                                   {OpOr, '|'},   {OpNot, '!'},   {OpS2N, 'L'}};
  switch (step.core) {
    case Core::CMP: return step.number < 0 ? other : 'C';
    case Core::JPF: return 'J';
    case Core::source: return ':';
    case Core::PUSH: return _pushed(step.operand());
    default: break;
  }
  for (const Word& w : words)
    if (step.entry && step.entry->handler == w.handler) return w.letter;
  return other;
}

// True when the letters, which end in a zero byte, begin with those of the row. 1 is a number like
// any other.
bool _fits(const char* letters, std::string_view row) {
  for (const char letter : row) {
    if (*letters != letter && !(letter == '9' && *letters == '1')) return false;
    ++letters;
  }
  return true;
}

// The bare text; a count is known without it.
Value _number(std::string_view text) {
  const Value count = Value::ofCount(TxtToInt(text));
  return count.text() == text ? count : Value(text);
}

std::shared_ptr<Joint> _joint(const JoinRow& row, const Step* step) {
  const auto joint = std::make_shared<Joint>();
  joint->row = &row;
  for (const char letter : row.steps) {
    switch (letter) {
      case 'N':
        joint->other = std::exchange(joint->name, {});
        joint->name.text = strUpper(step->operand());
        break;
      case 'Q': joint->value = Value::ofContent(qs2s(step->operand())); break;
      case '9': joint->value = _number(step->operand()); break;
      case 'L': joint->value = ToNumber(joint->value); break;
      case '+':
      case '-':
      case '*': joint->op = letter; break;
      case 'C': joint->op = step->number; break;
      case 'J': joint->target = step->number; break;
      default: break;
    }
    ++step;
  }
  if (row.steps == "91+") joint->value = StrFmN1N2Op(joint->value, "1", '+');
  return joint;
}

}  // namespace

const std::span<const JoinRow> g_joins = rows;

void JoinSteps(Program& program) {
  std::string letters;
  for (const Step& step : program) letters += _letter(step);
  for (size_t i = 0; i < program.size(); ++i) {
    const char* const here = letters.c_str() + i;
    // A count of subscripts is in no run of its own.
    if (letters[i] == other || (letters[i] == '1' && i > 0 && letters[i - 1] == 'N')) continue;
    const auto fits = [here](const JoinRow& row) { return _fits(here, row.steps); };
    const JoinRow* const row = std::find_if(std::begin(rows), std::end(rows), fits);
    if (row != std::end(rows)) program[i].joint = _joint(*row, &program[i]);
  }
}

}  // namespace mox
