// copy_move_plan.h
//
// From the arguments of `copy` and `move` to what the Copy/Move screen would have gathered.
#pragma once
#include "arguments.h"
#include "operations/copy_move_selection.h"
#include "plan_problem.h"

// Nothing is changed. False with the problem.
bool PlanCopyMove(const ConsoleArguments& arguments, CopyMoveSelection& selection, PlanProblem& problem);
