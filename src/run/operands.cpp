#include "run/operands.h"

#include <algorithm>

#include "session/error.h"

namespace mox {

namespace {

// The words of a text, a parenthesis being a word of its own.
Lines _words(std::string_view text) {
  Lines words;
  bool inWord = false;
  for (const char c : text) {
    const bool alone = c == '(' || c == ')';
    if (c == ' ' || alone || !inWord) words.emplace_back();
    if (c != ' ') words.back() += c;
    inWord = c != ' ' && !alone;
  }
  std::erase(words, "");
  return words;
}

}  // namespace

Effect CutEffect(std::string_view text) {
  Effect effect;
  const Lines words = _words(text);
  const auto arrow = std::find(words.begin(), words.end(), "->");
  effect.results = static_cast<int>(words.end() - arrow) - 1;
  for (auto word = words.begin(); word < arrow; ++word) {
    Effect::Operand operand;
    if (*word == "(") {
      operand.kind = Effect::Operand::group;
      for (++word; *word != ")"; ++word, ++operand.most) operand.least += word->front() != '[';
      ++word;  // the count
    } else if (word->back() == '*') {
      operand.kind = Effect::Operand::list;
      operand.width += static_cast<int>(std::count(word->begin(), word->end(), ','));
      ++effect.lists;
      ++word;
    } else if (word->back() == '?') {
      operand.kind = Effect::Operand::ifTwo;
      ++word;
    }
    effect.fixed = effect.fixed && operand.kind == Effect::Operand::one;
    effect.operands.push_back(operand);
  }
  return effect;
}

bool Operands::lay(std::string_view word, const Effect& effect, int depth) {
  word_ = word;
  depth_ = base_ = depth;
  results_ = effect.results;
  list_ = effect.lists;
  end_ = 0;
  kept_ = false;
  rooms_.clear();
  if (effect.fixed) {
    next_ = base_ -= static_cast<int>(effect.operands.size());
    return base_ >= 0;
  }
  for (auto operand = effect.operands.rbegin(); operand != effect.operands.rend(); ++operand) {
    if (--base_ < 0) return false;
    if (operand->kind == Effect::Operand::one) continue;
    const int count = DblToInt(stk_[static_cast<size_t>(base_)].number());
    end_ = base_;
    switch (operand->kind) {
      case Effect::Operand::group:
        if (count < operand->least || count > operand->most) return false;
        base_ -= count;
        break;
      case Effect::Operand::list:
        if (count < 0 || count > depth / operand->width) return false;
        base_ -= counts_[static_cast<size_t>(--list_)] = count * operand->width;
        break;
      default: base_ -= count == 2;
    }
  }
  next_ = base_;
  return base_ >= 0;
}

const Value& Operands::missing() const {
  static const Value none{std::string()};
  IntErr(StrFmt("NO SUCH OPERAND OF %s", std::string(word_).c_str()));
  return none;
}

Lines Operands::list() {
  if (list_ == maxLists || next_ > depth_) return missing(), Lines();
  const auto first = stk_.begin() + next_;
  const int count = counts_[static_cast<size_t>(list_++)];
  next_ += count + 1;
  Lines texts;
  for (auto v = first; v != first + count; ++v) texts.push_back(v->text());
  return texts;
}

}  // namespace mox
