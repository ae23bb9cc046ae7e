// set_document.h
//
// A backup as a person names it on the command line.
#pragma once
#include <string>

#include "foundation/ini_document.h"
#include "plan_problem.h"

// Loads the info file of `set`, which is the folder of a backup or the file itself. False with the problem
// if there is none that can be read.
bool OpenSet(const std::string& set, IniDocument& document, PlanProblem& problem);
