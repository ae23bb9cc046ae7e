// force_delete.h
//
// A delete that doesn't give up at read-only attributes, missing rights or files in use.
#pragma once
#include <cstdint>

enum : uint32_t {
  kDeleteAtNextStart = 1,    // what can't be deleted goes at the next start of the system
  kDeleteTakeOwnership = 2,  // what resists is given rights and an owner that let it go
  kDeleteKeepDirectory = 4,  // what the directory holds goes, the directory itself stays
};

enum : uint32_t {
  kDeleteFailed = 0,
  kDeleted = 1,  // also if there was nothing to delete
  kDeleteDelayed = 2,
};

// Gives a file the rights and the owner that kDeleteTakeOwnership gives, so that it can be replaced. Never
// follows a link. False if they couldn't be prepared; whether they help, the next call tells.
bool TakeOverFile(const wchar_t* path);

// Deletes a file, a directory with all it holds, or with "*" or "?" in its last component what matches
// there, by long or short name, and in matching subdirectories in turn. A path without a backslash,
// such as a bare drive, is left alone. A link goes as the link that it is: what it leads to is never
// deleted and keeps its attributes and rights, also if it takes a directory's place under way. A part
// of a tree that can't be deleted doesn't keep the rest; the result is then kDeleteFailed. That of the
// emptied directories themselves isn't in the result.
//
// Handles waiting window messages between the entries of a directory, so a long one belongs on the
// user interface thread. Shows and logs nothing.
uint32_t ForceDelete(const wchar_t* path, uint32_t flags);
