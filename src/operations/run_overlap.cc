#include "operations/run_overlap.h"

#include <windows.h>

#include <algorithm>

#include "operations/path_queries.h"
#include "operations/real_path.h"

namespace {

// Those of the folders that lie in no other one. They tell as much as all of them: whatever touches a
// folder touches the one that holds it or that it holds.
class OutermostFolders {
 public:
  explicit OutermostFolders(const std::vector<WString>& folders);

  // Whether `path` is one of the folders, lies in one, or holds one.
  bool Touch(const WString& path) const;

 private:
  std::vector<const WString*> rows_;  // in the order of paths
};

OutermostFolders::OutermostFolders(const std::vector<WString>& folders) {
  std::vector<const WString*> all;
  all.reserve(folders.size());
  for (const WString& folder : folders) all.push_back(&folder);
  std::sort(all.begin(), all.end(), [](const WString* a, const WString* b) { return IsPathBefore(*a, *b); });
  for (const WString* folder : all) {
    if (rows_.empty() || !IsSameOrInside(*folder, *rows_.back())) rows_.push_back(folder);
  }
}

bool OutermostFolders::Touch(const WString& path) const {
  const auto next =
      std::lower_bound(rows_.begin(), rows_.end(), path,
                       [](const WString* row, const WString& p) { return IsPathBefore(*row, p); });
  // What `path` holds follows it at once. What holds `path` can have nothing between the two.
  return (next != rows_.end() && IsSameOrInside(**next, path)) ||
         (next != rows_.begin() && IsSameOrInside(path, **(next - 1)));
}

}  // namespace

bool FindOverlap(const std::vector<RunTree>& trees, WString& source, WString& target, const StopWord* stop) {
  std::vector<WString> targets;
  targets.reserve(trees.size());
  for (const RunTree& tree : trees) {
    if (IsStopAsked(stop)) return false;
    targets.push_back(ResolveForComparison(tree.target.CStr()));
  }
  const OutermostFolders outermost(targets);
  for (const RunTree& tree : trees) {
    if (IsStopAsked(stop)) return false;
    const WString real = ResolveForComparison(tree.source.CStr());
    if (!outermost.Touch(real)) continue;
    for (size_t i = 0; i < trees.size(); i++) {
      if (!IsSameOrInside(real, targets[i]) && !IsSameOrInside(targets[i], real)) continue;
      source = tree.source;
      target = trees[i].target;
      return true;
    }
  }
  return false;
}

WString OverlapSentence(OperationKind kind, const wchar_t* source, const wchar_t* target) {
  const wchar_t* writer = nullptr;
  const wchar_t* wayOut = nullptr;
  switch (kind) {
    case kBackupOperation:
      writer = L"this backup";
      wayOut = L"Choose another folder for the backup, or leave that folder out.";
      break;
    case kRestoreOperation:
    case kRestoreFromOperation:
      writer = L"this restore";
      wayOut = L"Choose another account or another place for it, or leave that folder out.";
      break;
    case kCopyMoveOperation:
      writer = L"this copy";
      wayOut = L"Choose another folder.";
      break;
  }
  WString sentence;
  sentence.Concat(L"The folder \"", source, L"\" and the place \"", target, L"\" that ", writer,
                  L" writes to are the same or lie one inside the other. ", wayOut);
  return sentence;
}
