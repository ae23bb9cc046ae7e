// backup_command.h
//
// `norvanectl backup`: the road of the Backup screen without its window.
#pragma once
#include "arguments.h"
#include "console_output.h"
#include "core/app_object.h"
#include "exit_code.h"

ExitCode RunBackupCommand(const ConsoleArguments& arguments, AppObject& app, ConsoleOutput& output);
