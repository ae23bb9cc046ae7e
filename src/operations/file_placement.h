// file_placement.h
//
// The last step of writing a file: from its temporary name to its place.
#pragma once
#include <windows.h>

#include <cstdint>

enum class Placement {
  kPlaced,    // on a free place
  kReplaced,  // over an older file
  kLeft,      // what stands there was to stay, and stands there still
  kRefused,   // what stands there is no file, or a file that doesn't let itself be replaced
  kFailed,    // the rename failed for another reason
};

// What is known of a file's place, and what is to become of a file that stands there.
enum class Place {
  kUnknown,  // nobody has looked; an older file gives way
  kTaken,    // an older file stands there, and gives way
  kNotOurs,  // whatever stands there stays
};

// Renames `temporary` to `target`. A read-only file gives way, also one that denies its rights or that
// others hold and let be deleted; a directory or a link doesn't. Whatever fails, the old file isn't
// deleted before the new one stands in its place. `error` is the reason of a failure.
//
// A file that somebody has open for a moment is waited for, some hundred milliseconds at most. `patience`
// is how many milliseconds the run may still spend on waiting in vain; it goes down.
Placement PutInPlace(const wchar_t* temporary, const wchar_t* target, Place place, uint32_t& patience,
                     DWORD& error);

// Whether a rename or a making failed since there is something of that name.
bool SaysThatPlaceIsTaken(DWORD error);
