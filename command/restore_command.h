// restore_command.h
//
// `norvanectl restore` and `norvanectl restore-from`: the roads of the two Restore screens without their
// windows.
#pragma once
#include "arguments.h"
#include "console_output.h"
#include "core/app_object.h"
#include "exit_code.h"

ExitCode RunRestoreCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output);
