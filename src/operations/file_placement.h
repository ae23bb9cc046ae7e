// file_placement.h
//
// The last step of writing a file: from its temporary name to its place.
#pragma once
#include <windows.h>

enum class Placement {
  kPlaced,    // on a free place
  kReplaced,  // over an older file
  kRefused,   // what stands there is no file, or a file that doesn't let itself be replaced
  kFailed,    // the rename failed for another reason
};

// Renames `temporary` to `target`. A read-only file gives way; a directory or a link doesn't. With
// `targetExists` the look whether the place is free is saved. `error` is the reason of a failure.
Placement PutInPlace(const wchar_t* temporary, const wchar_t* target, bool targetExists, DWORD& error);
