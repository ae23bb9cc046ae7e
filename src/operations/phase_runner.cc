#include "operations/phase_runner.h"

#include <windows.h>
// The header below needs windows.h before it.
#include <objbase.h>

#include "foundation/directory_enumerator.h"
#include "foundation/privileges.h"
#include "operations/copy_engine.h"
#include "operations/copy_failure.h"
#include "operations/copy_walk.h"
#include "operations/folder_rows.h"
#include "operations/held_place.h"
#include "operations/held_way.h"
#include "operations/path_queries.h"
#include "operations/real_path.h"
#include "operations/target_flush.h"
#include "operations/walk_path.h"

namespace {

bool IsOnSameDrive(const WString& a, const WString& b) {
  return a.Length() >= 2 && b.Length() >= 2 && a.buffer[1] == L':' && a.buffer[0] == b.buffer[0] &&
         a.buffer[1] == b.buffer[1];
}

// A folder that a person or a hive named. Asked before the target is made, which one without a source is not.
SourceFinding FindNamedSource(const RunTree& tree) {
  DWORD error = NO_ERROR;
  if (IsPhaseSource(tree.source.CStr(), error)) return SourceFinding::kFolder;
  if (error == NO_ERROR) return SourceFinding::kNothing;
  SetLastError(error);
  return SourceFinding::kFailure;
}

// What of `path` lies behind its base, which it begins with.
const wchar_t* BehindBase(const WString& path, const WString& base) { return path.CStr() + base.Length(); }

}  // namespace

SourceFinding HoldSource(const RunTree& tree, HeldWay& way) {
  // The walk over other folders tells of a profile that is gone, which each account has.
  if (tree.sourceBase.IsEmpty()) return tree.otherFolders ? SourceFinding::kFolder : FindNamedSource(tree);
  switch (way.Hold(tree.sourceBase.CStr(), BehindBase(tree.source, tree.sourceBase), false)) {
    case HeldWay::Result::kHeld:
      return SourceFinding::kFolder;
    case HeldWay::Result::kMissing:
      return SourceFinding::kNothing;
    case HeldWay::Result::kLink:
      if (tree.inner) return SourceFinding::kInnerLink;
      // A folder that was chosen and isn't copied.
      SetLastError(ERROR_CANT_ACCESS_FILE);
      return SourceFinding::kFailure;
    case HeldWay::Result::kFailed:
      return SourceFinding::kFailure;
  }
  return SourceFinding::kFailure;
}

PhaseRunner::PhaseRunner(OperationContext& context)
    : context_(context), phases_(0), hasCom_(SUCCEEDED(CoInitialize(nullptr))) {
  delete[] EnableProcessPrivileges();
}

PhaseRunner::~PhaseRunner() {
  if (hasCom_) CoUninitialize();
}

bool PhaseRunner::HoldRunTarget(WString& folder) {
  const HeldPlace place = FindHeldPlace(folder);
  if (place.base.IsEmpty()) return true;
  const HeldWay::Result result =
      runTarget_.Hold(place.base.CStr(), BehindBase(place.folder, place.base), true);
  const DWORD error = result == HeldWay::Result::kHeld ? DWORD{NO_ERROR} : HeldWay::ErrorOf(result);
  // Who is no administrator may have a folder below one that only others may list.
  const bool isOpenBelow = error == ERROR_ACCESS_DENIED && MakeDirectoryPath(place.folder.CStr());
  if (error == NO_ERROR || isOpenBelow) {
    folder = place.folder;
    return true;
  }
  ReportTargetFailure(context_, kCannotMakeDirectory, folder.CStr(), error);
  return false;
}

bool PhaseRunner::RunTrees(const std::vector<RunTree>& trees, const Exclusion& isExcluded) {
  for (const RunTree& tree : trees) {
    if (IsStopped(context_)) return false;
    if (tree.otherFolders) {
      RunOtherFolders(tree, isExcluded);
    } else {
      RunOne(tree);
    }
  }
  return !IsStopped(context_);
}

void PhaseRunner::RunOne(const RunTree& tree) {
  HeldWay sourceWay, targetWay;
  WString target(tree.target);
  if (!EnterSource(tree, sourceWay) || !HoldTarget(tree, targetWay, target)) return;
  if (RunCopyPhase(tree.source.CStr(), target.CStr(), context_, tree.fast)) phases_++;
  NoteWritten(target);
}

// False if there is nothing to copy; what is wrong is told. A missing folder passes by without a word.
bool PhaseRunner::EnterSource(const RunTree& tree, HeldWay& way) {
  switch (HoldSource(tree, way)) {
    case SourceFinding::kFolder:
      return true;
    case SourceFinding::kNothing:
      return false;
    case SourceFinding::kInnerLink:
      CountLink();
      return false;
    case SourceFinding::kFailure:
      ReportFailure(context_, kCannotReadDirectory, tree.source.CStr(), GetLastError());
      return false;
  }
  return false;
}

// `target` becomes the folder that a link of the system's own leads to.
bool PhaseRunner::HoldTarget(const RunTree& tree, HeldWay& way, WString& target) {
  if (tree.targetBase.IsEmpty()) return true;
  // The base may be missing as well: the profile of an account that was only named, or a set's folder.
  HeldWay::Result result = HeldWay::Result::kFailed;
  if (MakeDirectoryPath(tree.targetBase.CStr())) {
    result = way.Hold(tree.targetBase.CStr(), BehindBase(tree.target, tree.targetBase), true);
  }
  if (result == HeldWay::Result::kLink && tree.bit == kMaskOther) result = FollowInside(tree, way, target);
  if (result == HeldWay::Result::kHeld) return true;
  ReportTargetFailure(context_, kCannotMakeDirectory, tree.target.CStr(), HeldWay::ErrorOf(result));
  return false;
}

// A profile has links of the system's own, such as "My Documents", to folders beside them. What an older
// system kept under that name belongs there. Where a link leaves the profile, it stays refused.
HeldWay::Result PhaseRunner::FollowInside(const RunTree& tree, HeldWay& way, WString& target) {
  const WString base = ResolveRealPath(tree.targetBase.CStr());
  const WString real = ResolveRealPath(tree.target.CStr());
  if (!IsSameOrInside(real, base) || real.Length() == base.Length()) return HeldWay::Result::kLink;
  target = real;
  return way.Hold(base.CStr(), BehindBase(real, base), false);
}

void PhaseRunner::RunOtherFolders(const RunTree& tree, const Exclusion& isExcluded) {
  HeldWay way;
  if (!EnterSource(tree, way)) return;
  RunTree folder(tree);
  folder.otherFolders = false;
  // Held from the profile on, so that each folder is still the directory that was listed.
  if (folder.sourceBase.IsEmpty()) folder.sourceBase = tree.source;
  WalkPath pattern(tree.source.CStr());
  pattern.Push(L"*");
  DirectoryEnumerator search;
  for (bool found = search.First(pattern.CStr(), kOnlyDirectories); found; found = search.Next()) {
    const wchar_t* name = search.data.cFileName;
    if (isExcluded(name)) continue;
    if (IsLink(search.data)) {
      CountLink();
      continue;
    }
    folder.source.Concat(tree.source.CStr(), L"\\", name);
    folder.target.Concat(tree.target.CStr(), L"\\", name);
    RunOne(folder);
    if (IsStopped(context_)) return;
  }
  if (!ListingEnded()) ReportFailure(context_, kCannotReadDirectory, tree.source.CStr(), GetLastError());
}

void PhaseRunner::NoteWritten(const WString& target) {
  for (uint32_t row = 0; row < written_.count; row++) {
    if (IsOnSameDrive(written_[row], target)) return;
  }
  // A phase without a source makes no target, and what isn't there can't be brought up to date.
  if (IsFolderPath(target.CStr())) written_.Add(target.CStr());
}

int32_t PhaseRunner::End(bool isComplete) {
  for (uint32_t row = 0; row < written_.count; row++) FlushTarget(written_[row].CStr(), context_);
  context_.outcome = !isComplete             ? OperationOutcome::kStopped
                     : context_.failures > 0 ? OperationOutcome::kFailures
                                             : OperationOutcome::kComplete;
  const OperationObserver* observer = context_.observer;
  if (observer && observer->ended) observer->ended(observer->owner, context_.outcome);
  return isComplete ? phases_ : -1;
}
