#include "lang/compile.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "lang/addrtbl.h"
#include "lang/mox_blk.h"
#include "lang/mox_gmr.h"
#include "lang/mox_lex.h"
#include "lang/step.h"
#include "session/error.h"
#include "session/number.h"
#include "session/options.h"
#include "vars/vars.h"

namespace mox {

namespace {

bool _startsWith(std::string_view line, std::string_view word) {
  const size_t start = line.find_first_not_of(" \t");
  return start != line.npos && StrICmp(line.substr(start, word.size()), word) == 0;
}

bool _isRem(std::string_view line) { return _startsWith(line, "*") || _startsWith(line, "NOTE"); }
bool _isText(std::string_view line) { return _startsWith(line, "TEXT"); }
bool _isEndText(std::string_view line) { return _startsWith(line, "ENDTEXT"); }

// Turns the TEXT blocks from a line on into print statements: 0, or cmpOpen when one is open at the
// end.
int preprocess(Lines& lines, size_t from) {
  int open = -1;
  for (int i = static_cast<int>(from); i < static_cast<int>(lines.size()); ++i) {
    if (open < 0) {
      if (_isText(lines[i])) open = i;
    } else if (_isEndText(lines[i])) {
      for (int k = open + 1; k < i; ++k) lines[k] = "? " + s2qs(lines[k]);
      lines[open].clear();
      lines[i].clear();
      open = -1;
    }
  }
  return open < 0 ? 0 : cmpOpen;
}

void _sayTokens(std::string_view line, const Tokens& tokens, int from) {
  std::printf("\n   %.*s\n", static_cast<int>(line.size()), line.data());
  for (int i = from; i < tokens.count(); ++i)
    std::printf("%2d:%2d,%s\n", i, tokens.kinds[i], tokens.texts[i].c_str());
}

// Prints a list, numbered, and an empty line.
void saySteps(const Lines& steps) {
  int i = 0;
  for (const std::string& step : steps) std::printf("%05d: %s\n", i++, step.c_str());
  std::printf("\n");
}

// Cuts the text into steps behind those of the list, the marker replaced by colon or, when that
// is empty, left out: cmpFailed when the list then holds limit steps.
int _addSteps(std::string& text, const std::string& colon, size_t limit, Lines& steps) {
  rm_nl(text);
  for (size_t at = 0, end; at <= text.size() && steps.size() < limit; at = end + 1) {
    end = std::min(text.find('\n', at), text.size());
    const std::string_view step = std::string_view(text).substr(at, end - at);
    if (step != sourceMarker)
      steps.emplace_back(step);
    else if (!colon.empty())
      steps.push_back(colon);
  }
  if (steps.size() < limit) return cmpDone;
  SetErr("OUT OF MEMORY", "");
  return cmpFailed;
}

// The current line of the source. Tokens of a line that is continued stay in tokens for the next.
int _compileLine(CompileState& state, bool isFile, Tokens& tokens, size_t limit, Lines& steps) {
  const int before = tokens.count();
  std::string colon;
  if (isFile && before == 0) colon = ": " + std::string(state.curline);
  prog2tkn(state.curline, maxTokens, tokens);
  if (g_opt[optC0]) _sayTokens(state.curline, tokens, before);
  const int last = tokens.count() - 1;
  if (last >= before && tokens.kinds[last] == tokOperator && tokens.texts[last] == ";") {
    tokens.drop();
    return cmpDone;
  }

  int cursor = 0;
  std::string text;
  const bool matches = lrline(state, cursor, tokens, text) && !errnum;
  const bool whole = cursor == tokens.count() || tokens.texts[cursor] == "'";
  tokens.clear();
  if (matches && whole) return _addSteps(text, colon, limit, steps);
  fail(state, "");
  return matches ? cmpLeftOver : cmpFailed;
}

// SETP name, rows, columns. No statement makes this step.
void _doSetP(std::string_view operands) {
  std::string word[3];
  for (std::string& w : word) operands.remove_prefix(GetWordX(operands, 20, w));
  VarDim(strUpper(word[0]), TxtToInt(word[1]), TxtToInt(word[2]));
}

// Takes the labels out of the list and notes them, and declares arrays.
void Pass1(CompileState& state, Lines& steps) {
  ATClear(state);
  size_t to = 0;
  for (std::string& step : steps) {
    if (step.starts_with("LBL ")) {
      ATAdd(state, dlb(std::string_view(step).substr(4)), static_cast<int>(to));
    } else if (step.starts_with("SETP ")) {
      _doSetP(std::string_view(step).substr(5));
    } else {
      std::swap(steps[to++], step);
    }
  }
  steps.resize(to);
}

// Replaces prefix and label by the new prefix and the label's step number. No statement makes CALL
// or PUSHA, nor the labels that begin with L.
void Pass2(const CompileState& state, std::string_view prefix, std::string_view newPrefix,
           Lines& steps) {
  for (std::string& step : steps) {
    if (!step.starts_with(prefix)) continue;
    const std::string label(dlb(std::string_view(step).substr(prefix.size())));
    const int target = ATLookup(state, label);
    if (target < 0) {
      std::printf("  PASS2 ERROR: ");
      if (label[0] == 'L')
        std::printf("can't GOTO %d\n", TxtToInt(std::string_view(label).substr(1)));
      else
        std::printf("missing ELSE / ENDIF\n");
      errnum = errSet;
      return;
    }
    step = std::string(newPrefix) + std::to_string(target);
  }
}

}  // namespace

int doCompile(bool isFile, Lines& lines, size_t limit, Lines& steps) {
  Compilation made;
  const int result = doCompileOn(isFile, lines, limit, made);
  steps = std::move(made.steps);
  return result;
}

int doCompileOn(bool isFile, Lines& lines, size_t limit, Compilation& made) {
  if (preprocess(lines, made.lines) != 0) return cmpOpen;
  CompileState& state = made.state;
  Lines& steps = made.steps;
  errnum = errNone;
  while (made.lines < lines.size() && !errnum) {
    const size_t i = made.lines++;
    if (_isRem(lines[i]) || isBlank(lines[i])) continue;
    state.curline = lines[i];
    state.curlineno = static_cast<int>(i);
    if (int result = _compileLine(state, isFile, made.tokens, limit, steps)) return result;
  }
  if (BlkDepth(state) > 0) return cmpOpen;
  steps.emplace_back("END");
  if (g_opt[optC1]) saySteps(steps);
  Pass1(state, steps);
  for (auto [prefix, newPrefix] : {std::pair("JP ", "JP "), std::pair("JPF ", "JPF "),
                                   std::pair("CALL ", "CALL "), std::pair("PUSHA ", "PUSH ")})
    Pass2(state, prefix, newPrefix, steps);
  if (g_opt[optC2]) saySteps(steps);
  return errnum;
}

int doEval(std::string_view text, size_t limit, Lines& steps) {
  steps.clear();
  if (isBlank(text)) return cmpDone;
  errnum = errNone;
  CompileState state;
  state.curline = text;
  Tokens tokens;
  prog2tkn(text, maxTokens, tokens);
  int cursor = 0;
  std::string made;
  if (!lrexpr(state, cursor, tokens, made) || errnum) return cmpFailed;
  if (cursor < tokens.count()) return cmpLeftOver;
  if (int result = _addSteps(made, "", limit, steps)) return result;
  steps.emplace_back("END");
  if (g_opt[optC1] || g_opt[optC2]) saySteps(steps);
  return errnum;
}

}  // namespace mox
