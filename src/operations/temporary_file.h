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

// The name for an old file in the moment in which the new one takes its place. It holds the file's own
// name, and is none of the above: what bears it may be the last good copy of somebody's data. False if it
// would be too long.
bool NameAside(const wchar_t* file, WString& aside);

// The name behind that of a file that has stepped aside, or null.
const wchar_t* NameOfAside(const wchar_t* name);

// The pattern of both kinds of names.
const wchar_t* LeftoverPattern();

// Removes a file in the making that didn't come to its place. False with the reason in GetLastError() if
// it stays.
bool RemoveTemporary(const wchar_t* path);
