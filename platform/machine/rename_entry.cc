// rename_entry.cc
#include "machine/rename_entry.h"

#include <fcntl.h>
#include <stdio.h>
#include <unistd.h>

#include <cerrno>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/directory_memory.h"
#include "machine/kernel_calls.h"
#include "machine/open_files.h"

namespace machine {
namespace {

bool IsSame(const FileFacts& a, const FileFacts& b) { return a.device == b.device && a.inode == b.inode; }

void Remember(const OwnChange& change, Location& from, const FileFacts& facts, Location& to) {
  change.Renamed(from.ParentId(), from.WindowsName(), to.ParentId(), to.WindowsName());
  if (!facts.IsPlain()) DropPinsThroughLinks();
  MoveOpenFiles(facts, to.path);
}

// Whether what is at the target may go.
bool MayReplace(Location& to, const FileFacts& source, FileFacts& target) {
  if (target.IsDirectory() || source.IsDirectory()) return Fail(ERROR_ACCESS_DENIED);
  if (!ReadAttributes(to.parent, to.name.c_str(), target)) return Fail(ErrorFromErrno(errno));
  if ((target.attributes & FILE_ATTRIBUTE_READONLY) || IsOpen(target)) return Fail(ERROR_ACCESS_DENIED);
  return MayDelete(to);
}

// Puts the source in the place of `target`, whose name may be spelled in another case.
bool Replace(Location& from, const FileFacts& facts, Location& to, const FileFacts& target,
             const std::string& wantedName) {
  bool isOtherSpelling = to.name != wantedName;
  if (IsSame(facts, target) && from.name != to.name) {
    // Two names of one file: the kernel would leave both.
    OwnChange removal;
    if (unlinkat(from.parent, from.name.c_str(), 0) != 0) return Fail(ErrorFromErrno(errno));
    removal.Removed(from.ParentId(), from.WindowsName());
    MoveOpenFiles(facts, to.path);
    return true;
  }
  OwnChange change;
  if (!IsSame(facts, target)) {
    if (renameat(from.parent, from.name.c_str(), to.parent, to.name.c_str()) != 0) {
      return Fail(ErrorFromErrno(errno));
    }
    change.Removed(to.ParentId(), to.WindowsName());
  }
  // The old file is replaced by then; only its spelling is left to be made the new one.
  const std::string& present = to.name;
  if (isOtherSpelling && RenameNew(to.parent, present.c_str(), to.parent, wantedName.c_str()) != 0) {
    return Fail(ErrorFromErrno(errno));
  }
  Remember(change, from, facts, to);
  return true;
}

}  // namespace

bool RenameEntry(Location& from, const FileFacts& facts, Location& to, bool replaces) {
  if (from.path.IsRoot() || to.path.IsRoot()) return Fail(ERROR_ACCESS_DENIED);
  if (!IsWritable(from.path) || !IsWritable(to.path) || !MayDelete(from)) return false;
  if (!SharesDelete(facts)) return Fail(ERROR_SHARING_VIOLATION);
  if (facts.IsDirectory() && HasOpenBelow(from.path)) return Fail(ERROR_ACCESS_DENIED);
  if (!MayAdd(to, facts.IsDirectory() ? FILE_ADD_SUBDIRECTORY : FILE_ADD_FILE)) return false;
  if (from.path.text[0] != to.path.text[0]) return Fail(ERROR_NOT_SAME_DEVICE);
  std::string wantedName = to.name;
  FileFacts target;
  bool isFree = to.pin && IsKnownAbsent(to.pin->id, to.path.Name());
  for (int tries = 0; tries < 3; ++tries) {
    if (!isFree && LookUp(to, Links::kKeep, target, false)) {
      bool isSelf = IsSame(facts, target) && from.ParentId() == to.ParentId() && from.name == to.name;
      if (isSelf && to.name == wantedName) return true;
      if (!isSelf && !replaces) return Fail(ERROR_ALREADY_EXISTS);
      if (!isSelf && !MayReplace(to, facts, target)) return false;
      return Replace(from, facts, to, target, wantedName);
    }
    if (!isFree && GetLastError() != ERROR_FILE_NOT_FOUND) return false;
    to.name = wantedName;
    OwnChange change;
    if (RenameNew(from.parent, from.name.c_str(), to.parent, to.name.c_str()) == 0) {
      Remember(change, from, facts, to);
      return true;
    }
    // Into itself, or onto what another program has just made.
    if (errno == EINVAL) return Fail(ERROR_SHARING_VIOLATION);
    if (errno != EEXIST) return Fail(ErrorFromErrno(errno));
    isFree = false;
  }
  return Fail(ERROR_ALREADY_EXISTS);
}

}  // namespace machine
