// run_console.h
//
// norvanectl as a function, so that tests can call it and read what it wrote.
#pragma once
#include <string>
#include <vector>

#include "console_output.h"

// `words` are the arguments in UTF-8 without the program's name. Gives the exit code.
int RunConsole(const std::vector<std::string>& words, ConsoleOutput& output);
