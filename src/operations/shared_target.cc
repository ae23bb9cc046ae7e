#include "operations/shared_target.h"

#include <windows.h>

#include <algorithm>

#include "foundation/directory_enumerator.h"
#include "operations/folder_rows.h"
#include "operations/path_queries.h"
#include "operations/real_path.h"

namespace {

using Exclusion = std::function<bool(const wchar_t*)>;

struct MovedTree {
  RunTree tree;            // as the run has it
  WString source, target;  // the real paths
};

// What of `inner` lies behind `outer`, which holds it.
const wchar_t* BehindFolder(const WString& inner, const WString& outer) {
  return inner.CStr() + outer.Length();
}

// Whether both move the same files to the same places.
bool IsPartOf(const MovedTree& inner, const MovedTree& outer) {
  return IsSameOrInside(inner.source, outer.source) &&
         CompareStringOrdinal(BehindFolder(inner.source, outer.source), -1,
                              BehindFolder(inner.target, outer.target), -1, TRUE) == CSTR_EQUAL;
}

// The desktop of an account may lie in a folder that counts as one of its others, such as that of a cloud
// service; and some of its others are links of the system's own to places inside its application data. Two
// folders of one account meet there only if the source has the same place twice.
bool MeetNowhere(const MovedTree& outer, const MovedTree& inner) {
  const MovedTree& other = outer.tree.bit == kMaskOther ? outer : inner;
  if (other.tree.bit != kMaskOther || other.tree.otherFolders) return false;
  WString profile(other.source);
  profile.ParentPath();
  return IsSameOrInside(outer.source, profile) && IsSameOrInside(inner.source, profile) &&
         IsMissingPath((outer.source + BehindFolder(inner.target, outer.target)).CStr());
}

// Whether no file of `inner`, whose target lies in that of `outer`, can meet another one of `outer`.
bool GoTogether(const MovedTree& outer, const MovedTree& inner) {
  // Its folders stand beside it one by one.
  if (outer.tree.otherFolders) return IsSameOrInside(inner.source, outer.source);
  return IsPartOf(inner, outer) || MeetNowhere(outer, inner);
}

class MovedTrees {
 public:
  MovedTrees(const Exclusion& isExcluded, const StopWord* stop) : isExcluded_(isExcluded), stop_(stop) {}

  void Add(const RunTree& tree);
  bool FindMeeting(SharedTarget& shared);

 private:
  void AddOtherFolders(const RunTree& tree);

  const Exclusion& isExcluded_;
  const StopWord* stop_;
  std::vector<MovedTree> trees_;
};

void MovedTrees::Add(const RunTree& tree) {
  // A tree inside another one stands behind that.
  if (tree.inner || IsMissingPath(tree.source.CStr())) return;
  trees_.push_back(
      {tree, ResolveForComparison(tree.source.CStr()), ResolveForComparison(tree.target.CStr())});
  if (tree.otherFolders) AddOtherFolders(tree);
}

// Each may have a link of the system's own at its place, which leads to another folder of the account.
void MovedTrees::AddOtherFolders(const RunTree& tree) {
  RunTree folder(tree);
  folder.otherFolders = false;
  DirectoryEnumerator search;
  WString pattern = PathBelow(tree.source, L"*");
  for (bool found = search.First(pattern.AddLongPathPrefix().CStr(), kSkipReparsePoints | kOnlyDirectories);
       found && !IsStopAsked(stop_); found = search.Next()) {
    const wchar_t* name = search.data.cFileName;
    if (isExcluded_(name)) continue;
    folder.source = PathBelow(tree.source, name);
    folder.target = PathBelow(tree.target, name);
    Add(folder);
  }
}

bool MovedTrees::FindMeeting(SharedTarget& shared) {
  std::stable_sort(trees_.begin(), trees_.end(),
                   [](const MovedTree& a, const MovedTree& b) { return IsPathBefore(a.target, b.target); });
  std::vector<const MovedTree*> around;  // the trees whose targets hold the one in hand
  for (const MovedTree& inner : trees_) {
    while (!around.empty() && !IsSameOrInside(inner.target, around.back()->target)) around.pop_back();
    for (const MovedTree* outer : around) {
      if (IsStopAsked(stop_)) return false;
      if (GoTogether(*outer, inner)) continue;
      shared = {outer->tree.source, inner.tree.source, inner.tree.target};
      return true;
    }
    // A tree that a stranger's file names a million times is looked at as one.
    const bool isSame = !around.empty() && !around.back()->tree.otherFolders &&
                        inner.target.Length() == around.back()->target.Length();
    if (!isSame) around.push_back(&inner);
  }
  return false;
}

}  // namespace

bool FindSharedTarget(const std::vector<RunTree>& trees, const Exclusion& isExcluded, SharedTarget& shared,
                      const StopWord* stop) {
  MovedTrees moved(isExcluded, stop);
  for (const RunTree& tree : trees) {
    if (IsStopAsked(stop)) return false;
    moved.Add(tree);
  }
  return moved.FindMeeting(shared);
}

WString SharedTargetSentence(const SharedTarget& shared) {
  WString sentence;
  sentence.Concat(L"The folders \"", shared.source.CStr(), L"\" and \"", shared.otherSource.CStr(),
                  L"\" would both be moved to \"", shared.target.CStr(),
                  L"\", where a file of the one could take the place of a file of the other and be lost. "
                  L"Give them different places, leave one of them out, or copy instead of moving.");
  return sentence;
}
