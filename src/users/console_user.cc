#include "users/console_user.h"

// The headers below need windows.h before them.
#include <psapi.h>
#include <sddl.h>
#include <shlobj.h>
#include <wtsapi32.h>

#include "foundation/unique_handle.h"

namespace {

constexpr DWORD kNoSession = 0xffffffff;

bool SessionUserName(DWORD session, WString& name) {
  LPWSTR text = nullptr;
  DWORD bytes = 0;
  bool known = WTSQuerySessionInformationW(WTS_CURRENT_SERVER_HANDLE, session, WTSUserName, &text, &bytes) &&
               text && bytes != 0;
  if (known) name.Assign(text);
  if (text) WTSFreeMemory(text);
  // At the logon screen the name is there and empty.
  return known && !name.IsEmpty();
}

// A token's user, and room for its SID behind it.
struct TokenUserBuffer {
  alignas(TOKEN_USER) BYTE bytes[1024];

  bool Read(HANDLE token) {
    DWORD size = 0;
    return GetTokenInformation(token, TokenUser, bytes, sizeof bytes, &size);
  }
  PSID Sid() const { return reinterpret_cast<const TOKEN_USER*>(bytes)->User.Sid; }
};

// The token of `process` if it belongs to `user`, otherwise none.
UniqueHandle TokenOfUser(HANDLE process, PSID user) {
  UniqueHandle token;
  TokenUserBuffer owner;
  if (!OpenProcessToken(process, TOKEN_QUERY, token.Receive())) return UniqueHandle();
  if (!owner.Read(token.Get()) || !EqualSid(owner.Sid(), user)) return UniqueHandle();
  return token;
}

UniqueHandle FindTokenInSession(DWORD session, PSID user) {
  constexpr DWORD kMostProcesses = 1024;
  DWORD ids[kMostProcesses];
  DWORD bytes = 0;
  if (!K32EnumProcesses(ids, sizeof ids, &bytes)) return UniqueHandle();
  for (DWORD i = 0; i < bytes / sizeof(DWORD); i++) {
    DWORD itsSession = kNoSession;
    if (!ProcessIdToSessionId(ids[i], &itsSession) || itsSession != session) continue;
    UniqueHandle process(OpenProcess(PROCESS_QUERY_INFORMATION, FALSE, ids[i]));
    if (!process) continue;
    UniqueHandle token = TokenOfUser(process.Get(), user);
    if (token) return token;
  }
  return UniqueHandle();
}

void WriteTokenFacts(HANDLE token, WString* profile, WString* sid) {
  if (sid) {
    TokenUserBuffer owner;
    LPWSTR text = nullptr;
    if (owner.Read(token) && ConvertSidToStringSidW(owner.Sid(), &text)) {
      UniqueLocalMemory memory(text);
      sid->Assign(text);
    }
  }
  if (profile) {
    wchar_t path[MAX_PATH] = {};
    if (SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_PROFILE, token, 0, path))) profile->Assign(path);
  }
}

}  // namespace

HANDLE GetConsoleUser(WString& name, WString* profile, WString* sid) {
  DWORD session = WTSGetActiveConsoleSessionId();
  if (session == kNoSession || !SessionUserName(session, name)) return nullptr;

  alignas(DWORD) BYTE user[256];
  wchar_t domain[260];
  DWORD userSize = sizeof user, domainSize = 260;
  SID_NAME_USE use;
  if (!LookupAccountNameW(nullptr, name.CStr(), user, &userSize, domain, &domainSize, &use)) return nullptr;

  // Mostly this process is the console user's own, which saves the walk over all processes.
  UniqueHandle token;
  DWORD ownSession = kNoSession;
  if (ProcessIdToSessionId(GetCurrentProcessId(), &ownSession) && ownSession == session) {
    token = TokenOfUser(GetCurrentProcess(), user);
  }
  if (!token) token = FindTokenInSession(session, user);
  if (!token) return nullptr;
  WriteTokenFacts(token.Get(), profile, sid);
  return token.Release();
}

WString ProcessUserSid() {
  WString sid;
  UniqueHandle token;
  if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Receive())) {
    WriteTokenFacts(token.Get(), nullptr, &sid);
  }
  return sid;
}
