// Putting an access list on files and folders. Everything is done through a handle of the thing itself:
// the system's calls by name set the rights of what a link leads to, and those for a tree walk into it.
#include "foundation/access_list.h"
#include "foundation/acl_buffer.h"
#include "foundation/tree_walk.h"

namespace {

// What is wanted at the top of the tree, or of the one thing that there is.
struct Setting {
  ACL* list;  // null: only the owner is set
  PSID owner;
  bool isProtected;
  bool keepExplicit;
};

UniqueFile OpenThing(const wchar_t* path, DWORD access) {
  return UniqueFile(CreateFileW(path, access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT,
                                nullptr));
}

// `list` (null: no entries) with what the folder above passes on to `path` behind it.
std::unique_ptr<BYTE[]> WithInherited(const wchar_t* path, ACL* list, bool isDirectory) {
  WString above(path);
  above.ParentPath(true);  // of "C:" alone it would be the volume
  // The road to the thing is the caller's own, so a link on it is followed.
  const UniqueFile folder(CreateFileW(above.CStr(), READ_CONTROL,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  ReadList passed;
  if (!folder || !passed.Read(folder.Get())) return nullptr;
  auto space = EmptyListFor(list, passed.Get());
  if (space == nullptr) return nullptr;
  const auto whole = reinterpret_cast<ACL*>(space.get());
  const bool isWhole = AddExplicit(whole, list) && AddInherited(whole, passed.Get(), isDirectory);
  return isWhole ? std::move(space) : nullptr;
}

bool SetThing(const wchar_t* path, const Setting& setting, bool isTop) {
  const bool keepsEntries = setting.keepExplicit && !isTop && setting.list != nullptr;
  const UniqueFile file =
      OpenThing(path, (setting.list != nullptr ? WRITE_DAC : 0) | (keepsEntries ? READ_CONTROL : 0) |
                          (setting.owner != nullptr ? WRITE_OWNER : 0));
  BY_HANDLE_FILE_INFORMATION info;
  if (!file || !GetFileInformationByHandle(file.Get(), &info)) return false;
  const bool isDirectory = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  // The rights are those of the file, whatever its name: somebody may have given a system file a name
  // in this tree.
  if (!isDirectory && info.nNumberOfLinks > 1) {
    SetLastError(ERROR_TOO_MANY_LINKS);
    return false;
  }
  if (setting.list == nullptr || (isTop && setting.isProtected)) {
    return SetSecurity(file.Get(), setting.list, setting.owner, true);
  }
  ReadList own;
  if (keepsEntries && !own.Read(file.Get())) return false;
  const auto whole = WithInherited(path, isTop ? setting.list : own.Get(), isDirectory);
  return whole != nullptr &&
         SetSecurity(file.Get(), reinterpret_cast<ACL*>(whole.get()), setting.owner, false);
}

// Who may not change the list may take the thing, and then change it as its owner.
bool TakeAndSet(const wchar_t* path, const Setting& setting, bool isTop) {
  if (SetThing(path, setting, isTop)) return true;
  if (setting.owner == nullptr || setting.list == nullptr) return false;
  const Setting ownerAlone = {nullptr, setting.owner, false, false};
  return SetThing(path, ownerAlone, isTop) && SetThing(path, setting, isTop);
}

bool SetBelow(const wchar_t* folder, const Setting& setting) {
  TreeWalk walk(L"*");
  const HoldResult held = walk.Enter(folder);
  if (held != HoldResult::kHeld) return held == HoldResult::kLink;
  bool isWhole = true;
  while (walk.IsInside()) {
    if (!walk.Next()) {
      isWhole = isWhole && ListingEnded();
      walk.Leave();
      continue;
    }
    const WString path = walk.EntryPath();
    const bool isFolder =
        (walk.Entry().dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 && !IsLink(walk.Entry());
    if (!TakeAndSet(path.CStr(), setting, false)) isWhole = false;
    if (isFolder && walk.Enter(path.CStr()) == HoldResult::kFailed) isWhole = false;
  }
  return isWhole;
}

}  // namespace

bool AclBuffer::ApplyToPath(const wchar_t* path, uint32_t options, PSID owner) {
  const Setting setting = {(options & kAclOwnerOnly) != 0 ? nullptr : acl, owner,
                           (options & kAclProtected) != 0, (options & kAclKeepExplicit) != 0};
  if (setting.list == nullptr && owner == nullptr) return (options & kAclOwnerOnly) != 0;
  if (!TakeAndSet(path, setting, true)) return false;
  if ((options & kAclWholeTree) == 0) return true;
  const DWORD attributes = GetFileAttributesW(path);
  const bool isFolder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return !isFolder || SetBelow(path, setting);
}
