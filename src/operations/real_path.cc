#include "operations/real_path.h"

#include <windows.h>

#include "foundation/unique_handle.h"
#include "operations/path_queries.h"

namespace {

// The path of what `handle` stands for, as the disk spells it. Empty if the system doesn't say.
WString FinalPath(HANDLE handle) {
  // A volume without a letter has only its other name.
  for (DWORD form : {DWORD{VOLUME_NAME_DOS}, DWORD{VOLUME_NAME_GUID}}) {
    DWORD room = GetFinalPathNameByHandleW(handle, nullptr, 0, form);
    if (room == 0 && GetLastError() != ERROR_PATH_NOT_FOUND) break;
    if (room == 0) continue;
    WString path;
    wchar_t* buffer = path.Reserve(static_cast<int32_t>(room), nullptr, true);
    DWORD used = GetFinalPathNameByHandleW(handle, buffer, room + 1, form);
    return used != 0 && used <= room ? path : WString();
  }
  return WString();
}

// Opens for no access at all, which even a file that denies its reader allows.
UniqueFile OpenForName(const WString& path) {
  WString name(path);
  // Without a backslash, "C:" would be the current folder of that drive.
  if (name.Length() == 2) name.Append(L"\\");
  return UniqueFile(CreateFileW(name.AddLongPathPrefix().CStr(), 0,
                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

// "\\?\C:\a" and "\\?\UNC\server\a" as the program keeps paths.
void StripPrefix(WString& path) {
  if (path.Find(L"\\\\?\\UNC\\", false, 1, 1, 8) == 1) {
    path.RemoveLeft(7);
    path.Prepend(L"\\");
  } else if (path.Find(L"\\\\?\\", true, 1, 1, 4) == 1 && path.Length() > 5 && path.buffer[5] == L':') {
    path.RemoveLeft(4);
  }
  path.StripTrailingBackslashes();
}

// "\\server\share\path" in its parts. False for other paths.
bool SplitSharePath(const WString& path, WString& server, WString& share, WString& rest) {
  if (path.Find(L"\\\\", true, 1, 1, 2) != 1) return false;
  const int32_t first = path.Find(L"\\", true, 1, 3);
  if (first < 4) return false;
  const int32_t second = path.Find(L"\\", true, 1, first + 1);
  server.AssignMid(path.CStr(), 3, first - 3);
  share.AssignMid(path.CStr(), first + 1, (second ? second : path.Length() + 1) - first - 1);
  rest = second ? path.CStr() + second - 1 : L"";
  return true;
}

// What the system shares for administrators, on this machine: "C:" for "C$". Empty for other shares.
WString FolderOfShare(const WString& share) {
  WString folder;
  if (share.Length() == 2 && share.buffer[1] == L'$') {
    folder = share;
    folder.buffer[1] = L':';
  } else if (share.EqualsNoCase(L"ADMIN$")) {
    wchar_t path[MAX_PATH] = {};
    if (GetSystemWindowsDirectoryW(path, MAX_PATH) != 0) folder = path;
  }
  return folder;
}

bool IsNameOfThisMachine(const WString& server) {
  if (server.EqualsNoCase(L"localhost") || server.Find(L"127.", true, 1, 1, 4) == 1) return true;
  wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
  DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
  if (!GetComputerNameW(name, &size)) return false;
  WString host(server);
  if (const int32_t dot = host.Find(L".")) host.Truncate(dot - 1);  // its domain
  return host.EqualsNoCase(name);
}

// A machine has more names and addresses than it knows itself. Copies of one disk share its number, but
// their roots don't stay alike.
bool AreOneFolder(const WString& a, const WString& b) {
  BY_HANDLE_FILE_INFORMATION first, second;
  const UniqueFile one = OpenForName(a), other = OpenForName(b);
  return one && other && GetFileInformationByHandle(one.Get(), &first) &&
         GetFileInformationByHandle(other.Get(), &second) &&
         first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
         first.nFileIndexLow == second.nFileIndexLow && first.nFileIndexHigh == second.nFileIndexHigh &&
         CompareFileTime(&first.ftCreationTime, &second.ftCreationTime) == 0 &&
         CompareFileTime(&first.ftLastWriteTime, &second.ftLastWriteTime) == 0;
}

}  // namespace

WString ResolveRealPath(const wchar_t* path) {
  WString whole = CleanPath(path);
  StripPrefix(whole);
  WString existing(whole);
  while (!existing.IsEmpty()) {
    UniqueFile handle = OpenForName(existing);
    WString real = handle ? FinalPath(handle.Get()) : WString();
    if (!real.IsEmpty()) {
      StripPrefix(real);
      real.Append(whole.CStr() + existing.Length());
      return real;
    }
    int32_t before = existing.Length();
    existing.ParentPath();
    if (existing.Length() == before) break;
  }
  return whole;
}

WString ResolveForComparison(const wchar_t* path, ShareServer server) {
  WString real = ResolveRealPath(path);
  WString name, share, rest;
  if (!SplitSharePath(real, name, share, rest)) return real;
  const WString folder = FolderOfShare(share);
  if (folder.IsEmpty()) return real;
  WString root;
  root.Concat(L"\\\\", name.CStr(), L"\\", share.CStr());
  if (server == ShareServer::kThisMachine && !IsNameOfThisMachine(name) && !AreOneFolder(root, folder)) {
    return real;
  }
  // Links that the server has followed on its own don't show in the path through it.
  return ResolveRealPath((folder + rest).CStr());
}
