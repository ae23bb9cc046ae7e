// folder_list.h
//
// The option --folders.
#pragma once
#include <cstdint>

#include "arguments.h"
#include "plan_problem.h"

// The mask of user folders that is asked for. False with the problem if a name isn't known.
bool ReadFolderList(const ConsoleArguments& arguments, uint32_t& mask, PlanProblem& problem);

// What a copy leaves out by attribute, from --copy-hidden and --copy-system.
uint32_t SkippedAttributes(const ConsoleArguments& arguments);
