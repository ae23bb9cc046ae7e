// refusal.h
//
// How a command says that it can't do what was asked for.
#pragma once
#include <string>

#include "arguments.h"
#include "console_output.h"
#include "exit_code.h"

// Says `sentence` (UTF-8, escaped) on standard error and, with --json, as the last event. Gives
// `exitCode` back.
ExitCode Refuse(const ConsoleArguments& arguments, const std::string& sentence, ConsoleOutput& output,
                ExitCode exitCode = kExitNothingDone);

// To be asked between the decisions and the run: whether Ctrl+C came meanwhile. It is said then.
bool RefuseIfStopped(const ConsoleArguments& arguments, ConsoleOutput& output);
