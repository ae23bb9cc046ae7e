#include "foundation/force_delete.h"

#include <windows.h>

#include <shlobj.h>

#include "foundation/acl_buffer.h"
#include "foundation/file_queries.h"
#include "foundation/tree_walk.h"
#include "foundation/waiting_messages.h"

namespace {

constexpr DWORD kResistingAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM;

// What stands at a path, by the entry itself: a link isn't followed.
struct Found {
  bool isThere = false;
  bool isDirectory = false;
  bool isLink = false;
};

Found Look(const wchar_t* path) {
  Found found;
  WIN32_FIND_DATAW entry = {};
  entry.dwFileAttributes = FileAttributesOf(path);
  if (entry.dwFileAttributes == INVALID_FILE_ATTRIBUTES) return found;
  // The directory's entry knows the tag of a reparse point.
  if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
    const UniqueFind search(FindFirstFileW(path, &entry));
  }
  found.isThere = true;
  found.isDirectory = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  found.isLink = IsLink(entry);
  return found;
}

// Through a handle of the thing itself: by its path, a link's target would lose the attributes.
bool ClearResistingAttributes(const wchar_t* path) {
  const UniqueFile file(CreateFileW(path, FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                    nullptr));
  FILE_BASIC_INFO info;
  if (!file || !GetFileInformationByHandleEx(file.Get(), FileBasicInfo, &info, sizeof(info))) return false;
  if ((info.FileAttributes & kResistingAttributes) == 0) return false;
  FILE_BASIC_INFO changed = {};  // a time of 0 stays as it is
  changed.FileAttributes = info.FileAttributes & ~kResistingAttributes;
  if (changed.FileAttributes == 0) changed.FileAttributes = FILE_ATTRIBUTE_NORMAL;
  return SetFileInformationByHandle(file.Get(), FileBasicInfo, &changed, sizeof(changed)) != 0;
}

// One failure makes the whole a failure, and something delayed makes it delayed.
void Fold(uint32_t result, uint32_t& total) {
  if (result == kDeleteFailed || (result == kDeleteDelayed && total != kDeleteFailed)) total = result;
}

// One run of ForceDelete.
class Deletion {
 public:
  Deletion(uint32_t flags, bool inherit) : flags_(flags), inherit_(inherit) {}

  uint32_t DeleteOne(const wchar_t* path, bool isDirectory);
  uint32_t DeleteTree(const wchar_t* folder, const wchar_t* pattern, bool isPattern);

  // Gives rights that open what resists, and an owner that may give them. False only where that is not
  // asked for: in a tree some may have been given although not all could.
  bool GiveRights(const wchar_t* path, uint32_t options);

 private:
  void DeleteFolder(TreeWalk& walk, const WString& folder, uint32_t& total);
  HoldResult Enter(TreeWalk& walk, const wchar_t* folder, bool followLink);
  void PrepareRights();

  uint32_t flags_;
  bool inherit_;
  AclBuffer rights_;
  BYTE administrators_[SECURITY_MAX_SID_SIZE] = {};
};

void Deletion::PrepareRights() {
  if (rights_.acl != nullptr || !rights_.Prepare()) return;
  for (const WELL_KNOWN_SID_TYPE kind : {WinWorldSid, WinLocalSystemSid, WinBuiltinAdministratorsSid}) {
    BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD size = sizeof(sid);
    if (!CreateWellKnownSid(kind, nullptr, sid, &size)) continue;
    rights_.AddAllowAll(sid, inherit_ ? OBJECT_INHERIT_ACE | CONTAINER_INHERIT_ACE : 0);
    if (kind == WinBuiltinAdministratorsSid) CopyMemory(administrators_, sid, size);
  }
}

bool Deletion::GiveRights(const wchar_t* path, uint32_t options) {
  if ((flags_ & kDeleteTakeOwnership) == 0) return false;
  PrepareRights();
  if (rights_.acl == nullptr) return false;
  rights_.ApplyToPath(path, options, administrators_);
  return true;
}

uint32_t Deletion::DeleteOne(const wchar_t* path, bool isDirectory) {
  DWORD error = NO_ERROR;
  const auto remove = [&] {
    if (isDirectory ? RemoveDirectoryW(path) : DeleteFileW(path)) return true;
    error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND;
  };
  if (remove()) return kDeleted;
  // Nothing opens a directory that isn't empty, and what it still holds keeps the rights that it has.
  if (error != ERROR_DIR_NOT_EMPTY && ClearResistingAttributes(path) && remove()) return kDeleted;
  if (error != ERROR_DIR_NOT_EMPTY &&
      GiveRights(path, isDirectory ? kAclWholeTree | kAclProtected : kAclProtected)) {
    if (remove()) return kDeleted;
    // The change of the attributes may have been what was denied.
    if (ClearResistingAttributes(path) && remove()) return kDeleted;
  }
  if ((flags_ & kDeleteAtNextStart) != 0 && MoveFileExW(path, nullptr, MOVEFILE_DELAY_UNTIL_REBOOT)) {
    return kDeleteDelayed;
  }
  return kDeleteFailed;
}

// A folder that can't be listed for lack of rights is given them first.
HoldResult Deletion::Enter(TreeWalk& walk, const wchar_t* folder, bool followLink) {
  const HoldResult held = walk.Enter(folder, followLink);
  if (held != HoldResult::kFailed || GetLastError() != ERROR_ACCESS_DENIED) return held;
  return GiveRights(folder, kAclWholeTree | kAclProtected) ? walk.Enter(folder, followLink) : held;
}

// Goes down into a folder. One that turns out to be a link, or that can't be listed, is deleted as it
// stands, if it lets itself be.
void Deletion::DeleteFolder(TreeWalk& walk, const WString& folder, uint32_t& total) {
  if (Enter(walk, folder.CStr(), false) != HoldResult::kHeld) Fold(DeleteOne(folder.CStr(), true), total);
}

uint32_t Deletion::DeleteTree(const wchar_t* folder, const wchar_t* pattern, bool isPattern) {
  const bool keepFolder = (flags_ & kDeleteKeepDirectory) != 0;
  uint32_t total = kDeleted;
  TreeWalk walk(pattern);
  if (keepFolder) {
    // The folder in front of a pattern is where the caller says, by way of a link, too.
    if (Enter(walk, folder, isPattern) != HoldResult::kHeld) return kDeleteFailed;
  } else {
    DeleteFolder(walk, folder, total);
  }
  while (walk.IsInside()) {
    if (walk.Next()) {
      const bool isDirectory = (walk.Entry().dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
      const WString path = walk.EntryPath();
      if (isDirectory && !IsLink(walk.Entry())) {
        DeleteFolder(walk, path, total);
      } else {
        Fold(DeleteOne(path.CStr(), isDirectory), total);
      }
      HandleWaitingMessages();
      continue;
    }
    if (!ListingEnded()) Fold(kDeleteFailed, total);
    const WString left = walk.Folder();
    walk.Leave();
    if (walk.IsInside() || !keepFolder) DeleteOne(left.CStr(), true);
  }
  return total;
}

void TellShell(LONG event, const WString& path) {
  // It knows no long path prefix.
  const bool hasPrefix = path.Find(L"\\\\?\\", true, 1, 1, 4) == 1;
  SHChangeNotify(event, SHCNF_PATHW, path.CStr() + (hasPrefix ? 4 : 0), nullptr);
}

uint32_t DeletePattern(const WString& folder, const WString& pattern, uint32_t flags) {
  WString working(folder);
  working.AddLongPathPrefix();
  Deletion deletion(flags | kDeleteKeepDirectory, true);
  const uint32_t result = deletion.DeleteTree(working.CStr(), pattern.CStr(), true);
  if (result == kDeleted) TellShell(SHCNE_UPDATEDIR, folder);
  return result;
}

uint32_t DeletePath(const WString& path, uint32_t flags) {
  WString working(path);
  working.AddLongPathPrefix();
  Found found = Look(working.CStr());
  if (!found.isThere && GetLastError() == ERROR_ACCESS_DENIED &&
      Deletion(flags, false).GiveRights(working.CStr(), kAclProtected)) {
    found = Look(working.CStr());
  }
  Deletion deletion(flags, found.isDirectory);
  // What isn't there goes by the same call as a link: it tells a missing file from a missing folder.
  if (!found.isThere || (found.isDirectory && found.isLink)) return deletion.DeleteOne(working.CStr(), true);

  const uint32_t result = found.isDirectory ? deletion.DeleteTree(working.CStr(), L"*", false)
                                            : deletion.DeleteOne(working.CStr(), false);
  if (result == kDeleted) {
    const bool isKept = found.isDirectory && (flags & kDeleteKeepDirectory) != 0;
    TellShell(isKept ? SHCNE_UPDATEDIR : found.isDirectory ? SHCNE_RMDIR : SHCNE_DELETE, path);
  }
  return result;
}

}  // namespace

uint32_t ForceDelete(const wchar_t* path, uint32_t flags) {
  WString stripped(path);
  stripped.StripTrailingBackslashes();
  const int32_t backslash = stripped.LastBackslash();
  if (backslash == 0) return kDeleteFailed;
  const WString name(stripped.CStr() + backslash);
  if (name.Find(L"*") == 0 && name.Find(L"?") == 0) return DeletePath(stripped, flags);
  stripped.Truncate(backslash - 1);
  // A pattern without a folder would mean the root of whichever drive is the current one.
  return stripped.IsEmpty() ? kDeleteFailed : DeletePattern(stripped, name, flags);
}

bool TakeOverFile(const wchar_t* path) {
  return Deletion(kDeleteTakeOwnership, false).GiveRights(path, kAclProtected);
}
