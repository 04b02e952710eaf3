// Starts a program for a test: one function, one source a host.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

// Runs program with args in the folder dir, its streams being the files in, out and err of the
// folder streams. Returns how it went wrong (not started, a signal, a time limit of 20 seconds, a
// status other than 0), or an empty text when it ended with status 0.
std::string RunProgram(std::string program, std::vector<std::string> args,
                       const std::filesystem::path& dir, const std::filesystem::path& streams);
