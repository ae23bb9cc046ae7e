// copy_move_command.h
//
// `norvanectl copy` and `norvanectl move`: the road of the Copy/Move screen without its window.
#pragma once
#include "arguments.h"
#include "console_output.h"
#include "core/app_object.h"
#include "exit_code.h"

ExitCode RunCopyMoveCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output);
