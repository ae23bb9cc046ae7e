// logon.cc
//
// A logon by a program: a token of an account for its password.
#include "machine/account_names.h"
#include "machine/accounts_file.h"
#include "machine/call.h"
#include "machine/faults.h"
#include "machine/names.h"
#include "machine/password_digest.h"
#include "machine/sessions.h"
#include "machine/token.h"

using namespace machine;

namespace {

// The SDK's headers don't name these: as a person who sits there, by the usual means.
constexpr DWORD kInteractive = 2, kUsualProvider = 0;

DWORD CheckLogon(const std::string& name, const wchar_t* password) {
  const AccountsHold hold;
  const Account* account = ThisMachine().FindAccount(name);
  const std::u16string_view given = password ? reinterpret_cast<const char16_t*>(password) : u"";
  if (!account || !MatchesDigest(account->passwordDigest, given)) return ERROR_LOGON_FAILURE;
  if (account->flags & kAccountDisabled) return ERROR_ACCOUNT_DISABLED;
  // Without a password an account logs on only where a person sits.
  return given.empty() ? ERROR_ACCOUNT_RESTRICTION : ERROR_SUCCESS;
}

}  // namespace

BOOL WINAPI LogonUserW(const wchar_t* name, const wchar_t* domain, const wchar_t* password, DWORD type,
                       DWORD provider, HANDLE* token) {
  EnterCall();
  if (type != kInteractive || provider != kUsualProvider) Unsupported("LogonUserW", "this kind of logon");
  if (domain) Unsupported("LogonUserW", "a domain");
  if (!name || !token) return Fail(ERROR_INVALID_PARAMETER);
  const std::string account = ToUtf8(name);
  if (FaultHits("LogonUserW", account)) return FALSE;
  if (const DWORD error = CheckLogon(account, password)) return Fail(error);
  *token = AddHandle(MakeToken(account, OwnSession()));
  return TRUE;
}
