// What ends the session, and the limits of its prompt.
#pragma once

#include <cstddef>
#include <string>

namespace mox {

// Set by QUIT and at the end of the input; the prompt loop ends behind the run that set it.
extern int g_quit;
// Set at the end of the input.
extern bool g_ended;

// A read got nothing. The input has ended: the run stops without a message, and the session behind
// it. But when Ctrl-C broke the read off, only the run stops, with the error of it.
void InputEnded();

// Notes that a file couldn't be read. What was made of it goes to no file: each change asks
// ReadHasFailed first, which is true, with the error reported, until the next prompt.
void ReadFailed(const std::string& name);
bool ReadHasFailed();

// True, with the error reported, when Ctrl-C was pressed since the last prompt, or a read failed.
// The machine asks before each step of a statement; a step that works on many records asks between
// two of them, where the files are sound, and stops.
bool Interrupted();
void ForgetInterrupt();  // and a read that failed

// Counts what may change where a name leads: each time a table is opened, made or closed, and a
// variable is made or deleted. As long as it stays, a name leads where it led.
extern unsigned g_names;

// The most lines of a block at the prompt, and the limit of the steps of what is typed there.
constexpr size_t maxBlockLines = 1000;
constexpr size_t maxPromptSteps = 10000;

}  // namespace mox
