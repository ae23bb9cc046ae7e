// path_resolution.h
//
// From a path of Windows to a directory of the disk and a name in it. Names match without regard to
// case, an exact one first. No path leads out of the machine's drives: the kernel is asked for names
// below an open directory and refuses links, and links are read and resolved here.
#pragma once
#include <memory>
#include <string>

#include "machine/file_attributes.h"
#include "machine/pinned_directories.h"
#include "machine/windows_path.h"

namespace machine {

struct Location {
  WindowsPath path;  // with the links on the way taken out
  int parent = -1;   // the directory's descriptor, held by `holder`
  std::shared_ptr<Descriptor> holder;
  std::shared_ptr<PinnedDirectory> pin;  // of `parent`, if it is a pinned one
  std::string name;                      // in `parent`, as on the disk; "." for the root of a drive
  bool passedLink = false;
  std::u16string asked;  // the folded path before the first link that was passed just now
  int links = 0;

  // The parent's identity, asked of the kernel where it isn't pinned.
  const DirectoryId& ParentId();
  std::u16string_view WindowsName() const { return path.IsRoot() ? u"." : path.Name(); }

 private:
  DirectoryId id_;
};

// Finds the directory that the last component is in. False with the last error: ERROR_PATH_NOT_FOUND,
// ERROR_CANT_RESOLVE_FILENAME (too many links), ERROR_INVALID_NAME (no name of the disk can spell it),
// or the kernel's reason.
bool FindParent(WindowsPath path, Location& location);

// Whether the call changes the disk, for the faults that are counted by changes.
enum class Effect { kReads, kChanges };

// For the calls that take a path: ParsePath, the fault that may be asked for, ERROR_WRITE_PROTECT where
// something is to be changed on a drive that is read only, and FindParent.
bool Locate(const char* call, Effect effect, const wchar_t* path, Location& location,
            PathUse use = PathUse::kFile);

// The same for a path that is known, such as that of a handle: whether a fault is asked for here.
bool HasFault(const char* call, Effect effect, const WindowsPath& path);
bool IsWritable(char drive);  // false with ERROR_WRITE_PROTECT
inline bool IsWritable(const WindowsPath& path) { return IsWritable(static_cast<char>(path.text[0])); }

// After a call of the kernel gave ENOENT for `location.name`: takes the entry that differs in case
// alone. False with ERROR_FILE_NOT_FOUND, or the reason why the directory can't be read.
bool TakeVariant(Location& location);

// `location` is a link: goes to where it leads. False as FindParent; what it leads to need not exist.
bool FollowLink(Location& location);

enum class Links { kFollow, kKeep };

// What is at `location`, which moves to the entry's own spelling and behind links. False with the last
// error, ERROR_FILE_NOT_FOUND if nothing is there. The attributes are read only with `withAttributes`.
bool LookUp(Location& location, Links links, FileFacts& facts, bool withAttributes = true);

// The path of Windows that a path of Linux is; empty if it lies on no drive of the machine.
std::u16string PathOfDisk(const std::string& linuxPath);

// The name of an open file or directory as the kernel knows it, as a path of Windows: all links
// resolved, each name as it is spelled. Empty if it is deleted or on no drive.
std::u16string PathOfDescriptor(int descriptor);

}  // namespace machine
