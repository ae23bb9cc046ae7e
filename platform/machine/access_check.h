// access_check.h
//
// Whether the calling thread may do something with a file, by its access list and that of its directory.
#pragma once
#include "machine/path_resolution.h"
#include "machine/security_store.h"

namespace machine {

// The descriptor of the directory that `location` is in.
SecurityBytes ParentSecurity(Location& location);

// Whether what is at `location` may be opened with all of `wanted` (specific rights). With `isBackup`
// (FILE_FLAG_BACKUP_SEMANTICS) SE_BACKUP grants reading and SE_RESTORE writing, whatever the list says.
// The list is read only if something is left to be granted by it. False with ERROR_ACCESS_DENIED.
bool MayOpen(Location& location, uint32_t wanted, bool isBackup);

// Whether the attributes of what is at `location` may be asked for by its path, which no privilege helps: who
// may list its directory sees them there. False with ERROR_ACCESS_DENIED.
bool MayReadAttributes(Location& location);

// Whether entries may be made in the directory: FILE_ADD_FILE or FILE_ADD_SUBDIRECTORY.
bool MayAdd(Location& location, uint32_t wanted);

// Whether the entry may be deleted or renamed: by its directory's list or its own.
bool MayDelete(Location& location);

// Gives the new entry at `location` what its directory hands down. False with the last error.
bool InheritSecurity(Location& location, bool isDirectory);

}  // namespace machine
