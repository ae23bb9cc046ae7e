// users_command.h
//
// `norvanectl users`: the accounts that can be backed up.
#pragma once
#include "arguments.h"
#include "console_output.h"
#include "core/app_object.h"
#include "exit_code.h"

ExitCode RunUsersCommand(const ConsoleArguments& arguments, const AppObject& app, ConsoleOutput& output);

// The word for a privilege level of the account database; "unknown" for any other number.
const char* AccountTypeText(uint32_t privilege);
