// command_options.h
//
// What the commands of norvanectl declare to the library that reads the command line: their options, the
// texts of their help, and where the values go.
#pragma once
#include <CLI/CLI.hpp>

#include <string>
#include <vector>

#include "arguments.h"

std::string VersionLine();

// Each adds one command. `arguments` must outlive `app`.
void AddUsersCommand(CLI::App& app, ConsoleArguments& arguments);
void AddBackupCommand(CLI::App& app, ConsoleArguments& arguments);
void AddInfoCommand(CLI::App& app, ConsoleArguments& arguments);
void AddRestoreCommand(CLI::App& app, ConsoleArguments& arguments);
void AddRestoreFromCommand(CLI::App& app, ConsoleArguments& arguments);
void AddCopyCommand(CLI::App& app, ConsoleArguments& arguments);
void AddMoveCommand(CLI::App& app, ConsoleArguments& arguments);

// A new command that sets `arguments.command` when it is chosen.
CLI::App& AddCommand(CLI::App& app, ConsoleArguments& arguments, ConsoleCommand command, const char* name,
                     const char* description, const char* footer);

// Parts that several commands have.
void AddCommonOptions(CLI::App& command, ConsoleArguments& arguments);
void AddFolderList(CLI::App& command, ConsoleArguments& arguments);
void AddSkipChoices(CLI::App& command, ConsoleArguments& arguments);
void AddPlace(CLI::App& command, const char* name, std::string& value, const char* description);
void AddRepeated(CLI::App& command, const char* name, std::vector<std::string>& values, const char* form,
                 const char* description);
