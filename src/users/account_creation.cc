#include "users/account_creation.h"

#include <windows.h>
// The headers below need windows.h before them.
#include <lm.h>
#include <userenv.h>

#include "foundation/missing_declarations.h"
#include "foundation/unique_handle.h"
#include "users/account_lookup.h"
#include "users/local_groups.h"
#include "users/temporary_password.h"

namespace {

// Named in not every SDK: a logon as of a person who sits there, by the system's usual means; and no question
// to that person.
constexpr DWORD kInteractiveLogon = 2, kUsualProvider = 0;
constexpr DWORD kNoQuestions = 1;

bool HasText(const wchar_t* text) { return text && text[0]; }

bool AddAccount(const wchar_t* name, const wchar_t* password) {
  USER_INFO_1 info = {};
  info.usri1_name = const_cast<wchar_t*>(name);
  info.usri1_password = const_cast<wchar_t*>(password);
  info.usri1_priv = USER_PRIV_USER;
  info.usri1_flags = UF_SCRIPT | UF_DONT_EXPIRE_PASSWD;
  const NET_API_STATUS status = NetUserAdd(nullptr, 1, reinterpret_cast<BYTE*>(&info), nullptr);
  if (status != NERR_Success) SetLastError(status);
  return status == NERR_Success;
}

void SetFullName(const wchar_t* name, const wchar_t* fullName) {
  USER_INFO_1011 info = {const_cast<wchar_t*>(fullName)};
  NetUserSetInfo(nullptr, name, 1011, reinterpret_cast<BYTE*>(&info), nullptr);
}

bool SetPassword(const wchar_t* name, const wchar_t* password) {
  USER_INFO_1003 info = {const_cast<wchar_t*>(password)};
  return NetUserSetInfo(nullptr, name, 1003, reinterpret_cast<BYTE*>(&info), nullptr) == NERR_Success;
}

// What a bare account lacks. Who makes it looks afterwards whether it has a group.
void SetNameAndGroup(const wchar_t* name, const wchar_t* fullName, uint32_t type) {
  if (HasText(fullName) && !(WString(fullName) == name)) SetFullName(name, fullName);
  LocalGroupNames groups;
  if (GetLocalGroupNames(groups)) SetAccountGroup(name, type, &groups);
}

// The system's own way, which needs no logon. It isn't there on the oldest systems.
bool CreateProfileDirectly(const wchar_t* name) {
  HMODULE library = LoadLibraryW(L"Userenv.dll");
  if (!library) return false;
  using CreateProfileCall = HRESULT(WINAPI*)(LPCWSTR, LPCWSTR, LPWSTR, DWORD);
  auto create =
      reinterpret_cast<CreateProfileCall>(reinterpret_cast<void*>(GetProcAddress(library, "CreateProfile")));
  bool isCreated = false;
  WString sid(name);
  if (create && AccountNameToSid(sid)) {
    wchar_t path[MAX_PATH] = {};
    isCreated = create(sid.CStr(), name, path, MAX_PATH) == S_OK;
  }
  FreeLibrary(library);
  return isCreated;
}

// The first load of its profile makes the system create it, which is all that is wanted.
bool CreateProfileByLogon(const wchar_t* name, const wchar_t* password) {
  UniqueHandle token;
  if (!LogonUserW(name, nullptr, password, kInteractiveLogon, kUsualProvider, token.Receive())) return false;
  PROFILEINFOW profile = {};
  profile.dwSize = sizeof(profile);
  profile.dwFlags = kNoQuestions;
  profile.lpUserName = const_cast<wchar_t*>(name);
  if (!LoadUserProfileW(token.Get(), &profile)) return false;
  UnloadUserProfile(token.Get(), profile.hProfile);
  return true;
}

// An account without a password can't log on by a program, so it gets one for the moment. Were the
// program killed before it is taken back, nobody would know it, while one that is the same everywhere would
// leave the account open to everybody who has read this file.
bool CreateProfileByTemporaryPassword(const wchar_t* name) {
  const TemporaryPassword password;
  if (!password.IsDrawn() || !SetPassword(name, password.Text())) return false;
  const bool isCreated = CreateProfileByLogon(name, password.Text());
  // Twice, since an account with a password that nobody knows is of no use to anyone.
  const bool isTakenBack = SetPassword(name, L"") || SetPassword(name, L"");
  return isCreated && isTakenBack;
}

}  // namespace

bool CreateUserAccount(const wchar_t* name, const wchar_t* fullName, uint32_t type, const wchar_t* password) {
  if (!HasText(name) || !AddAccount(name, password)) return false;
  SetNameAndGroup(name, fullName, type);
  if (CreateProfileDirectly(name)) return true;
  return HasText(password) ? CreateProfileByLogon(name, password) : CreateProfileByTemporaryPassword(name);
}

bool CompleteUserAccount(const wchar_t* name, const wchar_t* fullName, uint32_t type) {
  if (!HasText(name)) return false;
  if (LacksGroup(name)) SetNameAndGroup(name, fullName, type);
  return CreateProfileDirectly(name);
}
