#include "users/user_hives.h"

#include <algorithm>
#include <mutex>

#include "foundation/file_queries.h"
#include "foundation/registry.h"
#include "foundation/unique_handle.h"
#include "users/account_lookup.h"
#include "users/console_user.h"

namespace {

// Hives are the machine's, so what was loaded belongs to the process and to no object of it.
struct OwnHives {
  std::recursive_mutex lock;  // around test and load, too, so that two threads don't load the same hive
  std::vector<UserHive> hives;
  std::vector<WString> others;  // SIDs whose hives were there already and aren't to be touched
};

OwnHives& Own() {
  static OwnHives hives;
  return hives;
}

bool IsUserKeyThere(const wchar_t* sid, const wchar_t* suffix) {
  WString key;
  key.Concat(L"HKU\\", sid, suffix);
  return KeyExists(key.CStr());
}

bool IsLoggedOn(const wchar_t* sid) {
  // A logon leaves these beside the hive.
  if (IsUserKeyThere(sid, L"_Classes") || IsUserKeyThere(sid, L"\\Volatile Environment")) return true;
  // Who runs this program and who sits at the console are logged on, whatever the registry shows.
  if (ProcessUserSid().EqualsNoCase(sid)) return true;
  WString name;
  const UniqueHandle token(GetConsoleUser(name));
  return AccountNameToSid(name) && name.EqualsNoCase(sid);
}

// A hive that is there although no logon has loaded it was left behind by a run that was killed. The
// system's own accounts have no logon either, so only what is an account of people counts.
void TakeOverStrayHive(const wchar_t* sid, const wchar_t* knownProfile) {
  const auto isIt = [sid](const WString& other) { return other.EqualsNoCase(sid); };
  const auto isHiveOfIt = [&](const UserHive& hive) { return isIt(hive.sid); };
  if (WString(sid).Find(L"S-1-5-21-", false, 1, 1, 9) != 1 ||
      std::any_of(Own().hives.begin(), Own().hives.end(), isHiveOfIt) ||
      std::any_of(Own().others.begin(), Own().others.end(), isIt)) {
    return;
  }
  WString profile(knownProfile);
  const bool isListed = !profile.IsEmpty() || GetProfilePathFromSid(sid, &profile);
  if (isListed && !IsLoggedOn(sid)) {
    Own().hives.push_back({WString(sid), profile, true});
  } else {
    Own().others.push_back(WString(sid));
  }
}

bool IsHiveThere(const wchar_t* sid, const wchar_t* profile) {
  UniqueKey key;
  const LSTATUS status = RegOpenKeyExW(HKEY_USERS, sid, 0, KEY_READ, key.Receive());
  if (status == ERROR_SUCCESS) TakeOverStrayHive(sid, profile);
  // A hive that refuses to be opened is there.
  return status != ERROR_FILE_NOT_FOUND;
}

// Forgets what is unloaded, and gives whether another try may unload more: who has a key below a hive open,
// as scanners and indexers do for a moment, keeps it.
bool UnloadOnce() {
  bool isInUse = false;
  std::erase_if(Own().hives, [&isInUse](const UserHive& hive) {
    // The account may have been about to log on when its hive was found.
    if (hive.wasThere && IsLoggedOn(hive.sid.CStr())) return true;
    const LSTATUS status = RegUnLoadKeyW(HKEY_USERS, hive.sid.CStr());
    if (status == ERROR_ACCESS_DENIED) isInUse = true;
    // Somebody else may have unloaded it meanwhile.
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND;
  });
  return isInUse;
}

}  // namespace

bool EnsureUserHiveLoaded(const wchar_t* sid, const wchar_t* knownProfile) {
  std::lock_guard guard(Own().lock);
  if (IsHiveThere(sid, knownProfile)) return true;
  if (UnitCount(sid) == 0) return false;
  WString profile(knownProfile);
  if (!knownProfile && !GetProfilePathFromSid(sid, &profile)) return false;
  return LoadUserHive(sid, profile.CStr()) == ERROR_SUCCESS;
}

LSTATUS LoadUserHive(const wchar_t* sid, const wchar_t* profile) {
  std::lock_guard guard(Own().lock);
  WString file;
  file.Concat(profile, L"\\NTUSER.DAT");
  // Where there is no file, the system would make an empty one in the profile.
  if (FileAttributesOf(file.CStr()) == INVALID_FILE_ATTRIBUTES) return static_cast<LSTATUS>(GetLastError());
  // An empty one, too, it would take for a hive to be made.
  if (GetFileSize64(file.CStr()) == 0) return ERROR_BADDB;
  LSTATUS status = RegLoadKeyW(HKEY_USERS, sid, file.CStr());
  if (status == ERROR_SUCCESS) Own().hives.push_back({WString(sid), WString(profile), false});
  return status;
}

bool FindHiveProblem(const wchar_t* sid, const wchar_t* profile, HiveProblem& problem) {
  std::lock_guard guard(Own().lock);
  if (IsHiveThere(sid, profile)) return false;
  problem.file.Concat(profile, L"\\NTUSER.DAT");
  problem.status = LoadUserHive(sid, profile);
  return problem.status != ERROR_SUCCESS;
}

std::vector<UserHive> UnloadOwnHives() {
  constexpr DWORD kPauses[] = {20, 80, 200, 400};  // milliseconds, less than a second together
  std::lock_guard guard(Own().lock);
  Own().others.clear();
  bool isInUse = UnloadOnce();
  for (DWORD pause : kPauses) {
    if (!isInUse) break;
    Sleep(pause);
    isInUse = UnloadOnce();
  }
  return Own().hives;
}
