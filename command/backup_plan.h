// backup_plan.h
//
// From the arguments of `backup` to what the Backup screen would have gathered, with everything looked at
// that can be looked at before anything is made.
#pragma once
#include <string>
#include <vector>

#include "arguments.h"
#include "core/app_object.h"
#include "operations/backup_selection.h"
#include "plan_problem.h"

struct BackupPlan {
  BackupSelection selection;
  WString name;          // cleaned
  WString target;        // folder of the set
  WStringArray leftOut;  // chosen accounts that the account database doesn't describe; not ticked
  std::string shortage;  // why accounts of this machine may be missing among those; counts as a failure
  std::vector<std::string>
      setAside;  // of chosen accounts that stand on another profile than their own; as above
  std::vector<std::string> notes;  // for a person, before the run; UTF-8, escaped
};

// Loads the hives of the accounts; nothing else is changed. False with the problem.
bool PlanBackup(const ConsoleArguments& arguments, const AppObject& app, BackupPlan& plan,
                PlanProblem& problem);

// What is said of an account that was left out. UTF-8, escaped.
std::string LeftOutSentence(const WString& account);
