// The compile driver: turns source lines into a step list.
//
// It drops comments, turns TEXT blocks into print statements, joins lines that end in ";", hands
// each statement's tokens to the grammar, cuts the text that comes back into steps, and resolves
// the labels of the blocks to step numbers. A step is a line of text: a word and, behind a blank,
// an operand. A list ends in the step END. Compiling never runs anything.
#pragma once

#include <string>
#include <string_view>

#include "lang/compile_state.h"
#include "lang/misc_lex.h"
#include "session/misc.h"

namespace mox {

enum CompileResult {
  cmpDone = 0,
  cmpFailed = 1,     // a rule failed or reported, a label is missing, or the limit was reached
  cmpLeftOver = -1,  // tokens behind a statement
  cmpOpen = -2,      // a TEXT block or a control block is still open
};

// Compiles the lines into steps, replacing what steps held. With isFile each statement that isn't
// continued starts with the step ": " and its line. The lines of TEXT blocks are rewritten in
// place. The list holds at most limit steps; more is the error "OUT OF MEMORY".
int doCompile(bool isFile, Lines& lines, size_t limit, Lines& steps);

// A source that is compiled as its lines come: what is compiled of it so far.
struct Compilation {
  size_t lines = 0;  // that were compiled
  CompileState state;
  Tokens tokens;  // of a statement that goes on in the next line
  Lines steps;
};
// The same of the lines behind those that are compiled. As long as the result is cmpOpen, more
// lines may follow.
int doCompileOn(bool isFile, Lines& lines, size_t limit, Compilation& made);

// Compiles one expression: cmpDone, cmpFailed or cmpLeftOver, without a message of its own but
// "OUT OF MEMORY" at the limit. A blank text is done with an empty list, which can't be run.
int doEval(std::string_view text, size_t limit, Lines& steps);

}  // namespace mox
