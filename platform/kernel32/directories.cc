// directories.cc
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "machine/access_check.h"
#include "machine/call.h"
#include "machine/delete_entry.h"
#include "machine/directory_memory.h"
#include "machine/open_files.h"
#include "machine/path_resolution.h"
#include "machine/reparse_points.h"

using namespace machine;

namespace {

// Makes the directory; its attributes are those of a new one.
bool MakeDirectory(Location& location) {
  if (location.path.IsRoot()) return Fail(ERROR_ACCESS_DENIED);
  if (!(location.pin && IsKnownAbsent(location.pin->id, location.path.Name()))) {
    FileFacts present;
    if (LookUp(location, Links::kKeep, present, false)) return Fail(ERROR_ALREADY_EXISTS);
    if (GetLastError() != ERROR_FILE_NOT_FOUND) return false;
  }
  if (!MayAdd(location, FILE_ADD_SUBDIRECTORY)) return false;
  DirectoryId parent = location.ParentId();
  OwnChange change;
  if (mkdirat(location.parent, location.name.c_str(), 0777) != 0) return Fail(ErrorFromErrno(errno));
  change.Added(parent, location.path.Name());
  OwnChange::Settle(location.parent, parent);
  return InheritSecurity(location, true);
}

bool RemoveAt(const char* call, const wchar_t* path, bool wantsDirectory) {
  Location location;
  FileFacts facts;
  if (!Locate(call, Effect::kChanges, path, location) || !LookUp(location, Links::kKeep, facts)) return false;
  DescribeReparsePoint(location, facts);
  bool isDirectory = facts.attributes & FILE_ATTRIBUTE_DIRECTORY;
  if (isDirectory != wantsDirectory) return Fail(isDirectory ? ERROR_ACCESS_DENIED : ERROR_DIRECTORY);
  return MayRemove(location, facts) && RemoveEntry(location, facts);
}

}  // namespace

BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
  EnterCall();
  if (security && security->lpSecurityDescriptor) {
    Unsupported("CreateDirectoryW", "a security descriptor for the new directory");
  }
  Location location;
  return Locate("CreateDirectoryW", Effect::kChanges, path, location, PathUse::kNewDirectory) &&
         MakeDirectory(location);
}

BOOL WINAPI CreateDirectoryExW(LPCWSTR templatePath, LPCWSTR path, LPSECURITY_ATTRIBUTES security) {
  EnterCall();
  if (security && security->lpSecurityDescriptor) {
    Unsupported("CreateDirectoryExW", "a security descriptor for the new directory");
  }
  Location source, target;
  FileFacts facts, made;
  if (!Locate("CreateDirectoryExW", Effect::kReads, templatePath, source) ||
      !LookUp(source, Links::kKeep, facts)) {
    return FALSE;
  }
  if (!facts.IsDirectory() && !facts.IsLink()) return Fail(ERROR_DIRECTORY);
  if (!Locate("CreateDirectoryExW", Effect::kChanges, path, target, PathUse::kNewDirectory)) return FALSE;
  if (facts.IsLink()) {
    // A template that is a link would be made as a link, which isn't here. No end of the program: a link
    // may have taken the template's place a moment ago. Where something is, it gives way to that.
    return Fail(LookUp(target, Links::kKeep, made, false) ? ERROR_ALREADY_EXISTS : ERROR_NOT_SUPPORTED);
  }
  if (!MakeDirectory(target)) return FALSE;
  uint32_t attributes = facts.attributes & kSettableAttributes;
  if (attributes == 0) return TRUE;
  const char* name = target.name.c_str();
  bool isDone = ReadStatus(target.parent, name, made) &&
                WriteAttributes(target.parent, name, made, attributes, made.created);
  return isDone || Fail(ErrorFromErrno(errno));
}

BOOL WINAPI RemoveDirectoryW(LPCWSTR path) {
  EnterCall();
  return RemoveAt("RemoveDirectoryW", path, true);
}

BOOL WINAPI DeleteFileW(LPCWSTR path) {
  EnterCall();
  return RemoveAt("DeleteFileW", path, false);
}
