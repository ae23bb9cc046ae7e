#include "operations/backup_set.h"

#include "operations/path_queries.h"

bool CanBeKey(const wchar_t* text) {
  WString key(text);
  if (key.IsEmpty() || key.Find(L"=") || key.Find(L"\r") || key.Find(L"\n")) return false;
  if (key.buffer[0] == L'[' || key.buffer[0] == L';') return false;
  WString trimmed(key);
  trimmed.Trim(kTrimLeading | kTrimTrailing);
  return trimmed == key;
}

WString UserFolderInSet(const wchar_t* setFolder, const wchar_t* userName) {
  WString folder;
  folder.Concat(setFolder, L"\\", kUsersFolder, L"\\", userName);
  return folder;
}

WString ExtraFolderInSet(const wchar_t* setFolder, const wchar_t* md5Name) {
  WString folder;
  folder.Concat(setFolder, L"\\", kExtraFoldersFolder, L"\\", md5Name);
  return folder;
}

WString ExtraFolderDestination(IniDocument& document, const wchar_t* setFolder, const wchar_t* path) {
  if (UnitCount(setFolder) == 0) return WString();
  WString name(document.GetValue(kNewExtraFoldersSection, path));
  if (!IsPlainName(name) && !Md5Name(path, name)) return WString();
  return ExtraFolderInSet(setFolder, name.CStr());
}

void RemoveUserFromSet(IniDocument& document, const wchar_t* userName) {
  document.DeleteKey(kUsersSection, userName);
  document.DeleteKey(kBackupUsersSection, userName);
  document.DeleteKey(kRestoreUsersSection, userName);
}

void RemoveExtraFolderFromSet(IniDocument& document, const wchar_t* path) {
  document.DeleteKey(kExtraFoldersSection, path);
  document.DeleteKey(kNewExtraFoldersSection, path);
}
