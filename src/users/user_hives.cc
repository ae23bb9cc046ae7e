#include "users/user_hives.h"

#include <shlwapi.h>

#include <mutex>
#include <vector>

#include "foundation/unique_handle.h"
#include "foundation/wstring.h"
#include "users/account_lookup.h"

namespace {

// Hives are the machine's, so what was loaded belongs to the process and to no object of it.
struct OwnHives {
  std::recursive_mutex lock;  // around test and load, too, so that two threads don't load the same hive
  std::vector<WString> sids;
};

OwnHives& Own() {
  static OwnHives hives;
  return hives;
}

}  // namespace

bool EnsureUserHiveLoaded(const wchar_t* sid) {
  std::lock_guard guard(Own().lock);
  UniqueKey key;
  LSTATUS status = RegOpenKeyExW(HKEY_USERS, sid, 0, KEY_READ, key.Receive());
  // A hive that refuses to be opened is there.
  if (status != ERROR_FILE_NOT_FOUND) return true;
  if (UnitCount(sid) == 0) return false;
  WString profile;
  if (!GetProfilePathFromSid(sid, &profile)) return false;
  return LoadUserHive(sid, profile.CStr()) == ERROR_SUCCESS;
}

LSTATUS LoadUserHive(const wchar_t* sid, const wchar_t* profile) {
  std::lock_guard guard(Own().lock);
  WString file;
  file.Concat(profile, L"\\NTUSER.DAT");
  // Where there is no file, the system would make an empty one in the profile.
  if (!PathFileExistsW(file.CStr())) return ERROR_FILE_NOT_FOUND;
  LSTATUS status = RegLoadKeyW(HKEY_USERS, sid, file.CStr());
  if (status == ERROR_SUCCESS) Own().sids.push_back(WString(sid));
  return status;
}

void UnloadOwnHives() {
  std::lock_guard guard(Own().lock);
  std::erase_if(Own().sids, [](const WString& sid) {
    LSTATUS status = RegUnLoadKeyW(HKEY_USERS, sid.CStr());
    // Somebody else may have unloaded it meanwhile.
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
  });
}
