// temporary_file.h
//
// The names under which files are written at the target before they take their place.
#pragma once
#include "operations/walk_path.h"

// Whether a file of this name is what a run that was cut off has left. Such a file is nobody's data: a
// walk passes it over, in source and target.
bool IsTemporaryName(const wchar_t* name);

// Goes through the three names that a folder has for a file in the making, so that two runs into one
// folder don't meet:
//
//   TemporaryName name(path);            // `path` is the folder
//   do {
//     made = <create path.CStr(), failing if it exists>
//   } while (!made && name.IsWorthRetry(GetLastError()));
class TemporaryName {
 public:
  explicit TemporaryName(WalkPath& path);

  // After a failed create: whether to try once more, on the path as it is now. A leftover is removed
  // first if it is a plain file. One that resists belongs to another run, and the next name is taken.
  bool IsWorthRetry(DWORD error);

  // False if the path is too long for such a name.
  bool IsValid() const { return isValid_; }

 private:
  WalkPath& path_;
  int32_t folderLength_;
  int index_;
  bool removedLeftover_;
  bool isValid_;
};

// The temporary names of the folder of `temporary` but its own: the one of `index`, counted from 0, goes
// to `name`. A leftover of that name is removed. False where there are no more.
bool NameOtherTemporary(const wchar_t* temporary, int index, WString& name);

// Removes what runs that were cut off have left in the folder of that path; the path is changed.
void RemoveLeftovers(WalkPath& folder);

// Removes a file in the making that didn't come to its place.
void RemoveTemporary(const wchar_t* path);
