// source_walk.h
//
// The walk of the copy engine through a source tree. It keeps one path for all entries and uses its
// levels again, so that neither a file nor a directory costs an allocation, and no depth costs stack.
// Each directory on the way down is held (foundation/held_directory.h) until the walk has left it.
#pragma once
#include <memory>
#include <vector>

#include "foundation/directory_enumerator.h"
#include "foundation/held_directory.h"
#include "operations/walk_path.h"

class SourceWalk {
 public:
  enum class Step {
    kEntry,      // `Entry` and `path` show the next entry of the innermost directory
    kTooLong,    // the same, but its path can't be formed: `path` is that of the directory
    kLink,       // the same, and the entry is a link
    kEnd,        // the directory has no more entries
    kBrokenOff,  // its listing failed; `error` tells why
  };
  enum class Entrance { kEntered, kLink, kFailed };

  WalkPath path;
  DWORD error;

  explicit SourceWalk(const wchar_t* root);

  // Goes into the directory at `path`: the root first, later the entry in hand. kLink: it has become a
  // link since it was listed. kFailed: it can't be opened or listed, `error` tells why.
  Entrance Enter();

  // On to the next entry of the innermost directory.
  Step Next();

  // Leaves the innermost directory. `path` is that of the directory afterwards.
  void Leave();

  // How many directories the walk is inside of; 1 while it is in the root.
  uint32_t Depth() const { return depth_; }
  const WIN32_FIND_DATAW& Entry() const { return levels_[depth_ - 1]->search.data; }
  bool IsDirectory() const { return (Entry().dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
  int64_t Size() const;

 private:
  struct Level {
    DirectoryEnumerator search;
    HeldDirectory held;
    int32_t length = 0;     // of the directory's path
    bool hasFirst = false;  // the search stands on an entry that Next hasn't given yet
    bool isAtEnd = false;
  };

  Level& Top() { return *levels_[depth_ - 1]; }
  bool Advance(Level& level);

  // Levels are used again, so that a directory costs no allocation.
  std::vector<std::unique_ptr<Level>> levels_;
  uint32_t depth_;
};
