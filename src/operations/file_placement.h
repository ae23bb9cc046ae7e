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
  kOldAside,  // the same, and the old file still bears the name under which it stepped aside
};

inline bool IsInPlace(Placement placement) {
  return placement == Placement::kPlaced || placement == Placement::kReplaced;
}

// How many milliseconds a run may still spend on waiting in vain for files in use. Old ones may be so for
// hours and by the thousand; a new one is in the hands of a scanner, which lets go of it.
struct Patience {
  uint32_t forOld = 10000;
  uint32_t forNew = 120000;
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
// A file that somebody has open for a moment is waited for: an old one for a tenth of a second, a new one
// for a second. What is spent in vain goes off `patience`.
Placement PutInPlace(const wchar_t* temporary, const wchar_t* target, Place place, Patience& patience,
                     DWORD& error);

// Whether a rename or a making failed since there is something of that name.
bool SaysThatPlaceIsTaken(DWORD error);
