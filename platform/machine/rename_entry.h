// rename_entry.h
//
// Giving a file or directory another name or place.
#pragma once
#include "machine/path_resolution.h"

namespace machine {

// `from` and what is there, looked up without following a link; `to` is where it goes. Error codes as
// Windows gives them: ERROR_ALREADY_EXISTS without `replaces`, ERROR_ACCESS_DENIED where the target is a
// directory, read only or open, ERROR_SHARING_VIOLATION where the source is open without
// FILE_SHARE_DELETE, ERROR_NOT_SAME_DEVICE between drives.
bool RenameEntry(Location& from, const FileFacts& facts, Location& to, bool replaces);

}  // namespace machine
