// restore_folders.h
//
// The options --extra and --no-extra of a restore.
#pragma once
#include "arguments.h"
#include "restore_plan.h"

// Ticks the additional folders that are to be restored and sets where they go. Those that would go where
// a restore doesn't write of its own accord are left out and told of. False with the problem.
bool ChooseRestoreFolders(const ConsoleArguments& arguments, const AppObject& app, RestorePlan& plan,
                          PlanProblem& problem);
