// held_way.h
//
// The way from the root of a tree to a folder deep inside it, each step of it a real directory that is
// held. A phase takes its root as it is, also if that is a link; where the root of a phase lies inside
// a tree that somebody else writes to, this is what keeps a link planted there from leading it astray.
#pragma once
#include <windows.h>

#include <vector>

#include "foundation/held_directory.h"
#include "foundation/wstring.h"

class HeldWay {
 public:
  enum class Result {
    kHeld,
    kLink,     // one of the steps is a link
    kMissing,  // one of the steps doesn't exist
    kFailed,   // the reason is in GetLastError()
  };

  // Holds all steps from `root` (which is taken as it is) down to `root`\`relative`. With `makes`,
  // missing ones are made. Everything that was held stays so until this object goes.
  Result Hold(const wchar_t* root, const wchar_t* relative, bool makes);

  // Why not, for a result other than kHeld; to be asked at once.
  static DWORD ErrorOf(Result result);

 private:
  Result HoldStep(const wchar_t* path, bool makes);

  std::vector<HeldDirectory> steps_;
};
