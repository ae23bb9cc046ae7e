// restore_accounts.h
//
// The options --map, --create and --skip, and what is said of the accounts that a restore writes to.
#pragma once
#include "arguments.h"
#include "restore_plan.h"
#include "users/user_table.h"

// Gives each account of the plan the target that was asked for, or leaves it out. `accounts` are those of
// this machine. False with the problem.
bool ChooseTargetAccounts(const ConsoleArguments& arguments, const UserTable& accounts, RestorePlan& plan,
                          PlanProblem& problem);
