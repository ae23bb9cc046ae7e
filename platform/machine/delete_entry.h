// delete_entry.h
//
// Taking an entry out of a directory, for all calls that do it.
#pragma once
#include "machine/path_resolution.h"

namespace machine {

class File;

// Whether the entry may go: not read only, not open without FILE_SHARE_DELETE, and its list lets us.
// False with ERROR_ACCESS_DENIED or ERROR_SHARING_VIOLATION.
bool MayRemove(Location& location, const FileFacts& facts);

// Removes the file, the link or the empty directory. False with the last error.
bool RemoveEntry(Location& location, const FileFacts& facts);

// At the close of a handle that was to delete its file: removes it if it is still the same.
void DeleteOpened(File& file);

}  // namespace machine
