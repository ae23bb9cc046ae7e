#include "operations/restore_targets.h"

#include "operations/backup_set.h"
#include "operations/plain_path.h"
#include "operations/set_accounts.h"
#include "users/account_facts.h"
#include "users/account_lookup.h"
#include "users/local_groups.h"

namespace {

constexpr int32_t kCreateSuffixLength = 9;
constexpr int32_t kLongestAccountName = 20;  // UNLEN is 256, but SAM takes no more
constexpr int32_t kShortestFullName = 2;
constexpr wchar_t kForbiddenUnits[] = L"\"/\\[]:;|=,+*?<>@";

// The account's full name, or its name where it has none.
WString ShownName(const wchar_t* account) {
  AccountFacts facts;
  if (GetAccountFacts(account, facts) && !facts.fullName.IsEmpty()) return facts.fullName;
  return WString(account);
}

WString FindByName(const UserTable& accounts, const wchar_t* name) {
  for (uint32_t row = 0; row < accounts.count; row++) {
    if (accounts.userNames[row].EqualsNoCase(name)) return accounts.userNames[row];
  }
  return WString();
}

bool IsForbidden(wchar_t unit) {
  if (unit < L' ') return true;
  for (const wchar_t* other = kForbiddenUnits; *other; other++) {
    if (unit == *other) return true;
  }
  return false;
}

bool IsNamed(const WStringArray* names, const WString& name) {
  for (uint32_t i = 0; names && i < names->count; i++) {
    if ((*names)[i].EqualsNoCase(name)) return true;
  }
  return false;
}

}  // namespace

WString FindLocalMatch(const UserTable& accounts, const wchar_t* name, const wchar_t* fullName) {
  WString match = FindByName(accounts, name);
  if (!match.IsEmpty() || !fullName || !fullName[0]) return match;
  for (uint32_t row = 0; row < accounts.count; row++) {
    const WString& account = accounts.userNames[row];
    if (!account.IsEmpty() && ShownName(account.CStr()).EqualsNoCase(fullName)) return account;
  }
  return WString();
}

WString ChooseTargetByName(const UserTable& accounts, const wchar_t* name) {
  // The row keeps the folder's own spelling, so that two folders never look like one account.
  return FindByName(accounts, name).IsEmpty() ? TargetToCreate(name) : WString(name);
}

WString ChooseTarget(const UserTable& accounts, const wchar_t* name, const wchar_t* fullName) {
  const WString match = FindLocalMatch(accounts, name, fullName);
  return match.IsEmpty() ? TargetToCreate(name) : match;
}

void DestinationEntries(const UserTable& accounts, const wchar_t* name, WStringArray& entries) {
  entries.Clear();
  for (uint32_t row = 0; row < accounts.count; row++) entries.Add(accounts.userNames[row].CStr());
  if (FindLocalMatch(accounts, name, ShownName(name).CStr()).IsEmpty()) {
    entries.Add(TargetToCreate(name).CStr());
  }
}

WString TargetToCreate(const wchar_t* account) {
  WString target;
  target.Concat(account, kCreateSuffix);
  return target;
}

bool IsToBeCreated(const wchar_t* target, WString& account) {
  account = target;
  if (account.Find(kCreateSuffix, false) == 0) return false;
  account.Truncate(account.Length() - kCreateSuffixLength);
  return true;
}

bool IsPossibleAccountName(const WString& name) {
  const int32_t length = name.Length();
  if (length < 1 || length > kLongestAccountName) return false;
  for (int32_t i = 0; i < length; i++) {
    if (IsForbidden(name.buffer[i])) return false;
  }
  // Its profile couldn't be made otherwise, and the account would stay without one.
  return IsPlainRelativePath(name.CStr());
}

TargetState StateOfTarget(const WString& account) {
  AccountFacts facts;
  if (GetAccountFacts(account.CStr(), facts)) {
    return HasKnownProfile(account.CStr()) ? TargetState::kReady : TargetState::kLacksProfile;
  }
  if (!IsPossibleAccountName(account)) return TargetState::kImpossible;
  return IsGroupName(account.CStr()) ? TargetState::kGroup : TargetState::kNew;
}

AccountToCreate DescribeAccountToCreate(const wchar_t* value, const WString& source, const WString& account,
                                        const WStringArray* administrators) {
  AccountToCreate wanted;
  WString text(value && value[0] ? value : L"1");
  int32_t ignored = -1;
  ParseUserValue(text, ignored, wanted.fullName);
  // The number counts without a bar behind it, too.
  const bool hasNumber = text.buffer[0] >= L'0' && text.buffer[0] <= L'9';
  const uint32_t type = hasNumber ? text.ToUInt32() : kStandardAccount;
  wanted.type = type <= kAdministratorAccount ? type : kStandardAccount;
  wanted.isLowered = wanted.type == kAdministratorAccount && !IsNamed(administrators, source);
  if (wanted.isLowered) wanted.type = kStandardAccount;
  if (wanted.fullName.Length() < kShortestFullName) wanted.fullName = account;
  return wanted;
}
