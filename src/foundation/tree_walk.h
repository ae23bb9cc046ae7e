// tree_walk.h
//
// A walk through a directory tree that can't be led out of it. Every directory on the way down is held,
// so that the paths below it stay what they were when they were looked at.
#pragma once
#include <memory>
#include <vector>

#include "foundation/directory_enumerator.h"
#include "foundation/held_directory.h"
#include "foundation/wstring.h"

class TreeWalk {
 public:
  // Only names that match `pattern` are shown, at every level.
  explicit TreeWalk(const wchar_t* pattern) : pattern_(pattern) {}

  // Goes down into `folder`, the root of the walk or the entry in hand. Only with kHeld the walk is in
  // it. With kFailed the last error tells why.
  HoldResult Enter(const wchar_t* folder, bool followLink = false);

  bool IsInside() const { return !levels_.empty(); }

  // Steps to the next entry of the innermost folder. False when there are no more, or when its listing
  // broke off, which ListingEnded() tells.
  bool Next();

  const WIN32_FIND_DATAW& Entry() const { return levels_.back()->search.data; }
  WString EntryPath() const { return folder_ + L"\\" + Entry().cFileName; }
  const WString& Folder() const { return folder_; }

  // Goes up one level and lets go of the folder that was left.
  void Leave();

 private:
  struct Level {
    HeldDirectory held;
    DirectoryEnumerator search;
    int32_t folderLength = 0;
    bool isAtFirst = true;  // First has given the entry that Next is to show
    bool hasEntry = false;
  };

  // On the heap, not on the stack, and with one path for all: a tree may be 16,000 levels deep.
  std::vector<std::unique_ptr<Level>> levels_;
  WString folder_;
  WString pattern_;
};
