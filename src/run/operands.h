// What a handler sees of the operand stack.
//
// The row of the step table (steptab.cpp) tells the effect of a step as text, "before -> after",
// the operands from the deepest to the top:
//
//   x            one operand
//   (x y [z]) c  a counted group, the last thing of a row; [z] may be missing. A digit in the place
//                of c tells the only count that there is
//   x* c         a list: any number of operands, and their count
//   x,y* c       the same of pairs
//   x?           is there when the operand above it, the last, is 2
//
// The machine lays the effect against the stack before it calls the handler, so that a handler
// never meets a stack that is too shallow. The handler takes its operands in the order of the row;
// what it needn't look at it may leave. When it returns, the machine removes the operands and
// leaves as many results as the row names: the deepest operands, the first of which result()
// replaces.
#pragma once

#include <array>
#include <forward_list>
#include <string>
#include <string_view>
#include <vector>

#include "lang/step.h"
#include "session/misc.h"
#include "session/number.h"
#include "session/value.h"

namespace mox {

using Stack = std::vector<Value>;

class Operands;
using Handler = void (*)(Operands&);

// Whether an effect has the form: one arrow, and a count behind each group and list.
constexpr bool IsEffect(std::string_view text) {
  const size_t arrow = text.find("->");
  int open = 0;
  for (size_t i = 0; i < arrow && i < text.size(); ++i) {
    open += (text[i] == '(') - (text[i] == ')');
    const bool counted = text[i] == ')' || text[i] == '*' || text[i] == '?';
    if (open < 0 || (counted && (i + 3 > arrow || text[i + 1] != ' '))) return false;
  }
  return arrow != text.npos && arrow == text.rfind("->") && open == 0;
}

// The same for a table: a row of another form doesn't compile.
struct StepEffect : std::string_view {
  consteval StepEffect(const char* text) : std::string_view(text) {
    if (!IsEffect(*this)) throw "the effect of a step has another form";
  }
};

struct StepEntry {
  StepWord word;
  Handler handler;
  StepEffect effect;
  // What to say when the operands aren't there: of a function its usage, of another step the text
  // of an internal error.
  std::string_view refusal = "STACK UNDERFLOW";
};

constexpr int maxLists = 3;  // of one step

// A row's effect, cut.
struct Effect {
  struct Operand {
    enum Kind { one, group, list, ifTwo } kind = one;  // a group or a list includes its count
    int least = 0, most = 0;                           // operands of a group
    int width = 1;                                     // operands of an element of a list
  };
  std::vector<Operand> operands;
  int lists = 0;
  int results = 0;
  bool fixed = true;  // no group, no list: always as many operands
};
Effect CutEffect(std::string_view text);

class Operands {
 public:
  explicit Operands(Stack& stk) : stk_(stk) {}

  // Lays the effect of another step, a word, against a stack of this depth: false when the stack
  // hasn't the operands.
  bool lay(std::string_view word, const Effect& effect, int depth);
  // The depth behind the step.
  int depthAfter() const { return kept_ ? depth_ : base_ + results_; }

  // True while the group has another operand, or the one that may be there is there.
  bool more() const { return next_ < end_; }
  // The next operand: the value; its text; its content, when it is a quoted string; its number cut
  // toward zero and bounded to 32 bits; its number. An operand that the row doesn't name is empty,
  // and an internal error.
  const Value& value() { return next_ < depth_ ? stk_[static_cast<size_t>(next_++)] : missing(); }
  const std::string& text() { return value().text(); }
  std::string_view content() {
    const Value& v = value();
    return v.isContent() ? v.content() : v.content(rooms_.emplace_front());
  }
  int integer() { return DblToInt(number()); }
  double number() { return value().number(); }
  // All elements of the list that comes next.
  Lines list();

  // Puts the value in the place of the deepest operand. Where the row has no result, an internal
  // error.
  void result(Value value) {
    if (results_ > 0 && base_ < depth_)
      stk_[static_cast<size_t>(base_)] = std::move(value);
    else
      missing();
  }
  // The step failed and leaves the stack as it found it.
  void keep() { kept_ = true; }

 private:
  const Value& missing() const;

  Stack& stk_;
  std::string_view word_;
  int depth_ = 0;
  int base_ = 0;  // place of the deepest operand
  int next_ = 0;
  int end_ = 0;  // of the group's operands
  int results_ = 0;
  std::array<int, maxLists> counts_{};  // operands of each list
  int list_ = 0;                        // the list that comes next
  bool kept_ = false;
  std::forward_list<std::string> rooms_;  // of contents that the values don't hold
};

}  // namespace mox
