#include "operations/copy_walk.h"

#include <vector>

#include "foundation/held_directory.h"
#include "operations/copy_failure.h"
#include "operations/folder_sweep.h"
#include "operations/link_watch.h"
#include "operations/name_clash.h"
#include "operations/source_walk.h"
#include "operations/temporary_file.h"

namespace {

constexpr int64_t kHalfOfBar = 500;  // entries and bytes weigh half each

int64_t Share(const std::atomic<int64_t>& done, const std::atomic<int64_t>& total) {
  int64_t share = done.load(std::memory_order_relaxed) * kHalfOfBar / total.load(std::memory_order_relaxed);
  return share > kHalfOfBar ? kHalfOfBar : share;  // a tree may grow after it was counted
}

void UpdateProgress(OperationContext& context) {
  int64_t share = Share(context.itemsDone, context.itemsTotal) + Share(context.bytesDone, context.bytesTotal);
  context.progress.store(static_cast<int32_t>(share), std::memory_order_relaxed);
}

class CopyWalk {
 public:
  CopyWalk(const wchar_t* source, const wchar_t* target, OperationContext& context, const CopyMethod& method,
           uint32_t depth)
      : tree_(source),
        target_(target),
        temporary_(target),
        context_(context),
        method_(method),
        depth_(depth) {}

  bool Run() {
    EnterDirectory();
    while (tree_.Depth() > 0) {
      if (!Step()) break;
    }
    // After a stop.
    for (; !levels_.empty(); levels_.pop_back()) {
      target_.Cut(levels_.back().length);
      if (levels_.back().needsSweep) Sweep();
    }
    return result_;
  }

 private:
  struct TargetLevel {
    HeldDirectory held;
    int32_t length;            // of the directory's path
    bool isProven = false;     // see FileInHand::isFolderProven
    bool isNew = false;        // see FileInHand::isFolderNew
    bool needsSweep = false;   // see FileInHand::needsSweep
    SeenNames seen;            // of the source's directory, as far as it was walked
    bool mayHaveTwin = false;  // see FileInHand::mayHaveTwin
  };

  bool Step();
  void EnterDirectory();
  bool MakeTargetDirectory(TargetLevel& level);
  void FailDirectory(DWORD error);
  void CountDirectoryError();
  bool IsParentIntact();
  FileInHand InHand(TargetLevel& level) {
    return {tree_.Entry(), tree_.Size(),   tree_.path,       target_,     level.length,
            temporary_,    level.isProven, level.needsSweep, level.isNew, level.mayHaveTwin};
  }
  void Sweep();
  void LeaveDirectory();
  void TransferFile();
  void ReportEntryTooLong();

  SourceWalk tree_;
  WalkPath target_;
  WalkPath temporary_;
  std::vector<TargetLevel> levels_;
  OperationContext& context_;
  const CopyMethod& method_;
  const uint32_t depth_;
  bool result_ = true;
};

// One entry. False if the run is to stop.
bool CopyWalk::Step() {
  SourceWalk::Step step = tree_.Next();
  target_.Cut(levels_.back().length);
  if (step == SourceWalk::Step::kEnd || step == SourceWalk::Step::kBrokenOff) {
    if (step == SourceWalk::Step::kBrokenOff) {
      ReportFailure(context_, kCannotReadDirectory, tree_.path.CStr(), tree_.error);
    }
    const bool mayHaveLeftovers =
        !levels_.back().isNew && step == SourceWalk::Step::kEnd && !IsStopped(context_);
    if (mayHaveLeftovers || levels_.back().needsSweep) Sweep();
    LeaveDirectory();
    return true;
  }
  if (step == SourceWalk::Step::kLink) {
    context_.linksSkipped.fetch_add(1, std::memory_order_relaxed);
    return !IsStopped(context_);
  }
  CountItemDone(context_);
  if (IsStopped(context_)) return false;
  if (step == SourceWalk::Step::kTooLong) {
    ReportEntryTooLong();
    return true;
  }
  const wchar_t* name = tree_.Entry().cFileName;
  if (tree_.IsDirectory() && method_.isLeftOut && method_.isLeftOut(name, depth_ + tree_.Depth() - 1))
    return true;
  if (!target_.Push(name)) {
    bool isDirectory = tree_.IsDirectory();
    ReportLongPath(context_, isDirectory ? kCannotMakeDirectory : kCannotOpenTarget, target_.CStr(), name);
    if (isDirectory) CountDirectoryError();
    return true;
  }
  levels_.back().mayHaveTwin = levels_.back().seen.Add(name);
  if (!tree_.IsDirectory()) {
    TransferFile();
  } else if (IsClash(InHand(levels_.back()), context_)) {
    FailDirectory(ERROR_ALREADY_EXISTS);
  } else {
    EnterDirectory();
  }
  return true;
}

void CopyWalk::FailDirectory(DWORD error) {
  ReportTargetFailure(context_, kCannotMakeDirectory, target_.CStr(), error);
  CountDirectoryError();
}

void CopyWalk::CountDirectoryError() {
  context_.errors.fetch_add(1, std::memory_order_relaxed);
  result_ = false;
}

void CopyWalk::ReportEntryTooLong() {
  ReportLongPath(context_, tree_.IsDirectory() ? kCannotReadDirectory : kCannotOpenSource, tree_.path.CStr(),
                 tree_.Entry().cFileName);
}

// Source first: only what is known to be a real directory is a pattern for the target's one.
void CopyWalk::EnterDirectory() {
  SourceWalk::Entrance entrance = tree_.Enter();
  if (entrance == SourceWalk::Entrance::kLink) {
    context_.linksSkipped.fetch_add(1, std::memory_order_relaxed);
    return;
  }
  if (entrance == SourceWalk::Entrance::kFailed) {
    ReportFailure(context_, kCannotReadDirectory, tree_.path.CStr(), tree_.error);
    return;
  }
  TargetLevel level{{}, target_.Length(), levels_.empty(), false, false, {}, false};
  if (!MakeTargetDirectory(level)) {
    tree_.Leave();
    return;
  }
  levels_.push_back(std::move(level));
}

bool CopyWalk::MakeTargetDirectory(TargetLevel& level) {
  DWORD error = NO_ERROR;
  bool isRoot = levels_.empty();
  if (target_.Length() == 0) {
    error = ERROR_FILENAME_EXCED_RANGE;
  } else if (!method_.makeDirectory(tree_.path.CStr(), target_.CStr(), level.isNew)) {
    error = GetLastError();
  } else {
    HoldResult holding = level.held.Open(target_.CStr(), isRoot);
    if (holding == HoldResult::kFailed) error = GetLastError();
    // What lies behind a link isn't part of the target.
    if (holding == HoldResult::kLink || (!isRoot && !IsParentIntact())) error = ERROR_CANT_ACCESS_FILE;
  }
  if (error == NO_ERROR) return true;
  if (level.isNew) {
    level.held.Release();
    RemoveDirectoryW(target_.CStr());
  }
  FailDirectory(error);
  return false;
}

// Of the directory that `target_` was made in.
bool CopyWalk::IsParentIntact() {
  TargetLevel& level = levels_.back();
  FileInHand made = InHand(level);
  return made.IsTargetFolderIntact();
}

// Not before all files have got to their places: an older file that had stepped aside may be waiting for
// its own.
void CopyWalk::Sweep() {
  temporary_.AssignFolder(target_, target_.Length());
  SweepFolder(temporary_, context_, levels_.back().needsSweep);
}

void CopyWalk::LeaveDirectory() {
  levels_.pop_back();
  tree_.Leave();
}

void CopyWalk::TransferFile() {
  FileInHand file = InHand(levels_.back());
  method_.transferFile(file, context_);
}

}  // namespace

bool CopyTree(const wchar_t* source, const wchar_t* target, OperationContext& context,
              const CopyMethod& method, uint32_t depth) {
  return CopyWalk(source, target, context, method, depth).Run();
}

bool FileInHand::IsTargetFolderIntact() {
  if (isFolderProven) return true;
  WString folder;
  folder.AssignMid(target.CStr(), 1, targetFolderLength);
  isFolderProven = !HasBecomeLink(folder.CStr());
  return isFolderProven;
}

void FileInHand::DropTemporary() {
  if (!RemoveTemporary(temporary.CStr())) needsSweep = true;
}

void CountItemDone(OperationContext& context) {
  context.itemsDone.fetch_add(1, std::memory_order_relaxed);
  UpdateProgress(context);
}

void CountBytesDone(OperationContext& context, int64_t bytes) {
  context.bytesDone.fetch_add(bytes, std::memory_order_relaxed);
  UpdateProgress(context);
}

void CountFileCopied(OperationContext& context, int64_t bytes) {
  context.filesCopied.fetch_add(1, std::memory_order_relaxed);
  context.bytesCopied.fetch_add(bytes, std::memory_order_relaxed);
}
