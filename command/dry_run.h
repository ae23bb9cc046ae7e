// dry_run.h
//
// A run that is told and not made.
#pragma once
#include <string>
#include <vector>

#include "arguments.h"
#include "console_output.h"
#include "exit_code.h"
#include "operation_run.h"
#include "operations/phase_runner.h"
#include "operations/run_tree.h"

// Trees that belong together, such as those of one account. Texts are UTF-8 and escaped.
struct DryRunGroup {
  std::string heading;                // a line above them
  std::vector<std::string> failures;  // what the run would count as failed items, beside its trees
  std::vector<RunTree> trees;
};

struct DryRunPlan {
  std::string headline;
  std::vector<std::string> failures;  // of the run as a whole
  std::vector<DryRunGroup> groups;
  PhaseRunner::Exclusion isExcluded;  // of "All other folders"
  std::vector<NamedPath> paths;       // named by the last event of --json
  WStringArray accountsToCreate;
};

// Counts each tree that the run would copy and tells of it. Changes nothing.
ExitCode ShowDryRun(const ConsoleArguments& arguments, const DryRunPlan& plan, ConsoleOutput& output);
