// phase_runner.h
//
// What all workers do with their trees: the copy phase for each, by a way on which no link leads astray,
// and what comes first and last in a run. Every phase does all logging and counting of what happens
// inside it.
#pragma once
#include <functional>
#include <vector>

#include "foundation/wstring_array.h"
#include "operations/held_way.h"
#include "operations/operation_context.h"
#include "operations/run_tree.h"

// What a run finds where the source of a tree should be.
enum class SourceFinding {
  kFolder,
  kNothing,    // no such folder, which is no failure
  kInnerLink,  // an inner tree behind a link, of which the walk of the tree before it tells
  kFailure,    // kCannotReadDirectory of the tree's source; the reason is in GetLastError()
};

// Holds the way to the source of a tree, so that no link leads astray.
SourceFinding HoldSource(const RunTree& tree, HeldWay& way);

class PhaseRunner {
 public:
  // Whether a folder of a profile doesn't belong to "All other folders".
  using Exclusion = std::function<bool(const wchar_t* name)>;

  // The start of a run, on the worker's thread: COM, and the privileges.
  explicit PhaseRunner(OperationContext& context);
  PhaseRunner(const PhaseRunner&) = delete;
  PhaseRunner& operator=(const PhaseRunner&) = delete;
  ~PhaseRunner();

  // Makes the folder that a person named as the target, and holds it and the way to it until the run ends:
  // others may write above it, too. `folder` becomes its real path. False if that fails, which is told.
  bool HoldRunTarget(WString& folder);

  // The trees in their order. False if the run was stopped. `isExcluded` is for those of other folders.
  bool RunTrees(const std::vector<RunTree>& trees, const Exclusion& isExcluded);

  // One tree. What it can't reach or make is logged and counted.
  void RunOne(const RunTree& tree);

  // The worker's last act: the targets' disks brought up to date, the outcome, and the word to the
  // observer. Gives the worker's result: the number of phases that gave true, -1 if stopped.
  int32_t End(bool isComplete);

 private:
  void RunOtherFolders(const RunTree& tree, const Exclusion& isExcluded);
  bool EnterSource(const RunTree& tree, HeldWay& way);
  bool HoldTarget(const RunTree& tree, HeldWay& way, WString& target);
  HeldWay::Result FollowInside(const RunTree& tree, HeldWay& way, WString& target);
  void NoteWritten(const WString& target);
  void CountLink() { context_.linksSkipped.fetch_add(1, std::memory_order_relaxed); }

  OperationContext& context_;
  HeldWay runTarget_;
  WStringArray written_;  // a target on each disk that was written to
  int32_t phases_;
  bool hasCom_;
};
