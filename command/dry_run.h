// dry_run.h
//
// A backup that is told and not made.
#pragma once
#include "arguments.h"
#include "backup_plan.h"
#include "console_output.h"
#include "exit_code.h"

// Counts each tree that the run would copy and tells of it. Changes nothing.
ExitCode ShowDryRun(const ConsoleArguments& arguments, const AppObject& app, const BackupPlan& plan,
                    ConsoleOutput& output);
