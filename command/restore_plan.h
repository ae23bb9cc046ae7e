// restore_plan.h
//
// From the arguments of `restore` and `restore-from` to what the screens would have gathered, with
// everything looked at that can be looked at before anything is made.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "arguments.h"
#include "core/app_object.h"
#include "operations/operation_context.h"
#include "operations/restore_selection.h"
#include "plan_problem.h"

struct RestorePlan {
  OperationKind kind = kRestoreOperation;
  RestoreRoot root;
  IniDocument document;
  bool isKept = true;  // whether the document may be saved
  bool moves = false;
  RestoreSelection selection;
  LeftOutKeys leftOutKeys;  // of the info file
  std::optional<ProtectedPlaces> places;
  WStringArray administrators;       // accounts of the source that may become administrators
  WStringArray chosenPlaces;         // protected targets that an option names all the same
  std::vector<std::string> notes;    // for a person, before the run; UTF-8, escaped
  std::vector<std::string> leftOut;  // what isn't restored and counts as failed; UTF-8, escaped
};

// Loads the hives of the accounts; nothing else is changed. False with the problem, also with the notes
// that there are until then.
bool PlanRestore(const ConsoleArguments& arguments, const AppObject& app, RestorePlan& plan,
                 PlanProblem& problem);
