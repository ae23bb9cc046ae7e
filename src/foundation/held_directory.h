// held_directory.h
//
// A directory that stays where it is while it is walked. Whoever looks at a directory and then works
// on paths below it could be led elsewhere by a link that took its place in between; while it is held,
// nobody can rename or delete it.
#pragma once
#include "foundation/unique_handle.h"

enum class HoldResult {
  kHeld,
  kLink,    // a link stands there now; it isn't followed and not held
  kFailed,  // the reason is in GetLastError(); ERROR_DIRECTORY for a file
};

class HeldDirectory {
 public:
  // Releases what was held before. The components in front of the last one are taken as they are:
  // they must be held, too, or be trusted. With `followLink` so is the last one, for the root of a
  // tree that somebody asked for by this path; then kLink doesn't occur.
  HoldResult Open(const wchar_t* path, bool followLink = false);
  void Release() { handle_.Reset(); }

 private:
  UniqueFile handle_;
};
