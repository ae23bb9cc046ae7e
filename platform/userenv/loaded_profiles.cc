// loaded_profiles.cc
//
// Profiles that a program loads for an account that isn't logged on, and that are made where there is none.
#include <windows.h>

#include <userenv.h>

#include <mutex>
#include <set>

#include "machine/account_names.h"
#include "machine/call.h"
#include "machine/current_token.h"
#include "machine/faults.h"
#include "machine/hive_store.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/profile_list.h"
#include "userenv/profile_making.h"

using namespace machine;

namespace {

// SIDs of the hives that were loaded here, under the registry's lock.
std::set<std::string>& Loaded() {
  static auto* sids = [] {
    OnLeaveMachine([] { Loaded().clear(); });
    return new std::set<std::string>;
  }();
  return *sids;
}

DWORD LoadProfileHive(const std::string& sid, const std::string& profile) {
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<Hive> hive;
  if (FindHive(HiveRoot::kUsers, sid, hive) == ERROR_SUCCESS) return ERROR_SUCCESS;
  const std::u16string file = ToUtf16(profile + "\\NTUSER.DAT");
  // Loading a file that isn't there would make an empty one.
  if (GetFileAttributesW(AsWide(file)) == INVALID_FILE_ATTRIBUTES) return GetLastError();
  const DWORD error = LoadHive(HiveRoot::kUsers, sid, AsWide(file));
  if (error == ERROR_SUCCESS) Loaded().insert(sid);
  return error;
}

DWORD LoadProfile(const Token& token, const std::string& name, HANDLE* key) {
  const std::string sid = TokenUserText(token);
  std::string profile = ProfileOf(sid);
  if (profile.empty()) {
    if (const DWORD error = MakeProfile(sid, name, profile)) return error;
  }
  if (const DWORD error = LoadProfileHive(sid, profile)) return error;
  const AsSystem system;
  return static_cast<DWORD>(
      RegOpenKeyExW(HKEY_USERS, AsWide(ToUtf16(sid)), 0, KEY_ALL_ACCESS, reinterpret_cast<HKEY*>(key)));
}

}  // namespace

BOOL WINAPI LoadUserProfileW(HANDLE handle, PROFILEINFOW* info) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  if (!info || info->dwSize != sizeof *info || !info->lpUserName) return Fail(ERROR_INVALID_PARAMETER);
  if (info->lpProfilePath || info->lpDefaultPath || info->lpServerName || info->lpPolicyPath) {
    Unsupported("LoadUserProfileW", "roaming profiles");
  }
  if (!ThreadToken()->IsAdministrator()) return Fail(ERROR_ACCESS_DENIED);
  const std::string name = ToUtf8(info->lpUserName);
  if (!IsAccountName(name)) return Fail(ERROR_INVALID_PARAMETER);
  if (FaultHits("LoadUserProfileW", name)) return FALSE;
  const DWORD error = LoadProfile(*token, name, &info->hProfile);
  return error == ERROR_SUCCESS || Fail(error);
}

BOOL WINAPI UnloadUserProfile(HANDLE handle, HANDLE key) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  if (const LSTATUS error = RegCloseKey(static_cast<HKEY>(key))) return Fail(static_cast<DWORD>(error));
  const std::lock_guard hold(RegistryLock());
  const std::string sid = TokenUserText(*token);
  if (Loaded().erase(sid) == 0) return TRUE;
  const DWORD error = UnloadHive(HiveRoot::kUsers, sid);
  return error == ERROR_SUCCESS || Fail(error);
}
