#include "operations/run_overlap.h"

#include <windows.h>

#include "foundation/unique_handle.h"
#include "operations/extra_folders.h"
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

}  // namespace

WString ResolveRealPath(const wchar_t* path) {
  WString whole = CleanExtraFolder(path);
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

bool FindOverlap(const std::vector<RunTree>& trees, WString& source, WString& target) {
  std::vector<WString> targets;
  targets.reserve(trees.size());
  for (const RunTree& tree : trees) targets.push_back(ResolveRealPath(tree.target.CStr()));
  for (const RunTree& tree : trees) {
    WString real = ResolveRealPath(tree.source.CStr());
    for (size_t i = 0; i < trees.size(); i++) {
      if (!IsSameOrInside(real, targets[i]) && !IsSameOrInside(targets[i], real)) continue;
      source = tree.source;
      target = trees[i].target;
      return true;
    }
  }
  return false;
}

WString OverlapSentence(OperationKind kind, const wchar_t* source, const wchar_t* target) {
  const wchar_t* writer = nullptr;
  const wchar_t* wayOut = nullptr;
  switch (kind) {
    case kBackupOperation:
      writer = L"this backup";
      wayOut = L"Choose another folder for the backup, or leave that folder out.";
      break;
    case kRestoreOperation:
    case kRestoreFromOperation:
      writer = L"this restore";
      wayOut = L"Choose another account or another place for it, or leave that folder out.";
      break;
    case kCopyMoveOperation:
      writer = L"this copy";
      wayOut = L"Choose another folder.";
      break;
  }
  WString sentence;
  sentence.Concat(L"The folder \"", source, L"\" and the place \"", target, L"\" that ", writer,
                  L" writes to are the same or lie one inside the other. ", wayOut);
  return sentence;
}
