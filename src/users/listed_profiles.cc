#include "users/listed_profiles.h"

#include <windows.h>

#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "users/account_lookup.h"

namespace {

constexpr wchar_t kSetAsideSuffix[] = L".bak";
constexpr int32_t kSetAsideSuffixLength = 4;
constexpr DWORD kKeyNameRoom = 256;

bool IsFolder(WString path) {
  const DWORD attributes = GetFileAttributesW(path.AddLongPathPrefix().CStr());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool StartsWith(const WString& text, const wchar_t* beginning) {
  return text.Find(beginning, false, 1, 1, UnitCount(beginning)) == 1;
}

// Local, domain and cloud accounts, but no services.
bool IsPersonSid(const WString& sid) {
  return StartsWith(sid, L"S-1-5-21-") || StartsWith(sid, L"S-1-12-1-");
}

void TakeSetAsideSuffix(WString& key) {
  const int32_t stem = key.Length() - kSetAsideSuffixLength;
  if (stem > 0 && WString(key.CStr() + stem).EqualsNoCase(kSetAsideSuffix)) key.Truncate(stem);
}

bool HasText(const WStringArray& list, uint32_t count, const WString& text) {
  for (uint32_t row = 0; row < count; row++) {
    if (list[row].EqualsNoCase(text)) return true;
  }
  return false;
}

}  // namespace

bool IsTemporaryProfile(const WString& profile) {
  WString name(profile);
  name.LastComponent();
  return name.EqualsNoCase(L"TEMP") || StartsWith(name, L"TEMP.");
}

bool GetSetAsideProfile(const wchar_t* sid, const wchar_t* profile, WString& setAside) {
  WString key;
  key.Concat(sid, kSetAsideSuffix);
  if (!GetProfilePathFromSid(key.CStr(), &setAside) || setAside.EqualsNoCase(profile)) return false;
  // Who repairs the entries by hand may leave the temporary one under this name.
  if (IsTemporaryProfile(setAside) && !IsTemporaryProfile(WString(profile))) return false;
  return IsFolder(setAside);
}

void FindOtherProfiles(const UserTable& accounts, WStringArray& folders) {
  folders.Clear();
  UniqueKey list(OpenKey(kProfileListKey, KEY_READ));
  if (!list) return;
  for (DWORD index = 0;; index++) {
    wchar_t name[kKeyNameRoom];
    DWORD units = kKeyNameRoom;
    if (RegEnumKeyExW(list.Get(), index, name, &units, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
      return;
    }
    const WString key(name);
    WString sid(key), folder;
    TakeSetAsideSuffix(sid);
    if (!IsPersonSid(sid) || HasText(accounts.sids, accounts.count, sid)) continue;
    if (!GetProfilePathFromSid(key.CStr(), &folder) || !IsFolder(folder)) continue;
    if (HasText(accounts.profilePaths, accounts.count, folder)) continue;
    if (!HasText(folders, folders.count, folder)) folders.Add(folder.CStr());
  }
}
