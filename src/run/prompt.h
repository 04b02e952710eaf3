// The prompt, and the start with a command file.
#pragma once

#include <string>

namespace mox {

void AppVersion();  // prints the version line

// One prompt cycle: reads a command or a block of lines, compiles and runs it, shows an error. A
// block is read on at ">" until its last line.
void AskAndRun1Cmd();

// Runs one command file through DO and shows an error.
void RunMoxProg(const std::string& name);

// Puts everything that a session changes to where a session begins: options, numbered files, areas,
// variables, forms, the error slot; and hands the store what it needs of the machine.
void SessionInit();

// The session: runs the command file, or without one shows the banner and the prompt until QUIT
// or the end of the input. Tables that are open at the end stay as they stand on disk. A build with
// assertions ends at once, with status 1, when the grammar table is wrong.
int moxmain(const std::string* program);

}  // namespace mox
