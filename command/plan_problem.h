// plan_problem.h
//
// Why a command can't begin: found while its arguments are turned into a plan, before anything is made.
#pragma once
#include <string>

#include "exit_code.h"
#include "foundation/wstring.h"

struct PlanProblem {
  ExitCode exitCode = kExitNothingDone;
  std::string sentence;  // names the thing, the reason and the way out; UTF-8, escaped
};

// Fills `problem` and gives false, so that a check can end with it.
bool Object(PlanProblem& problem, std::string sentence, ExitCode exitCode = kExitNothingDone);

// A text of somebody else's inside a sentence: escaped, between quotation marks, and cut off where it is
// longer than a person would read.
std::string Quoted(const wchar_t* text);
inline std::string Quoted(const WString& text) { return Quoted(text.CStr()); }
