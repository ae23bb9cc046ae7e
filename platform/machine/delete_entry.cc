// delete_entry.cc
#include "machine/delete_entry.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/faults.h"
#include "machine/open_files.h"

namespace machine {

bool MayRemove(Location& location, const FileFacts& facts) {
  if (facts.attributes & FILE_ATTRIBUTE_READONLY) return Fail(ERROR_ACCESS_DENIED);
  if (!SharesDelete(facts)) return Fail(ERROR_SHARING_VIOLATION);
  return MayDelete(location);
}

bool RemoveEntry(Location& location, const FileFacts& facts) {
  if (location.path.IsRoot()) return Fail(ERROR_ACCESS_DENIED);
  DirectoryId id = location.ParentId();
  OwnChange change;
  if (unlinkat(location.parent, location.name.c_str(), facts.IsDirectory() ? AT_REMOVEDIR : 0) != 0) {
    return Fail(errno == EEXIST ? ERROR_DIR_NOT_EMPTY : ErrorFromErrno(errno));
  }
  change.Removed(id, location.WindowsName());
  OwnChange::Settle(location.parent, id);
  if (facts.IsLink()) DropPinsThroughLinks();
  return true;
}

void DeleteOpened(File& file) {
  Location location;
  FileFacts facts;
  if (!FindParent(file.Path(), location) || !LookUp(location, Links::kKeep, facts, false)) return;
  if (facts.device != file.facts.device || facts.inode != file.facts.inode) return;
  CountChange();
  RemoveEntry(location, facts);
}

}  // namespace machine
