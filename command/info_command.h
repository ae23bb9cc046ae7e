// info_command.h
//
// `norvanectl info`: what a backup holds, by its info file and by its folders.
#pragma once
#include "arguments.h"
#include "console_output.h"
#include "exit_code.h"

ExitCode RunInfoCommand(const ConsoleArguments& arguments, ConsoleOutput& output);
