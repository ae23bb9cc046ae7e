#include "operations/set_accounts.h"

#include <set>

#include "operations/document_keys.h"
#include "operations/path_queries.h"

namespace {

// Names as keys are matched: the first unit exactly, the others without regard to case.
struct KeyOrder {
  bool operator()(const WString& a, const WString& b) const {
    const wchar_t* left = a.CStr();
    const wchar_t* right = b.CStr();
    if (*left != *right) return *left < *right;
    while (*left != 0 && LowerUnit(*left) == LowerUnit(*right)) {
      ++left;
      ++right;
    }
    return LowerUnit(*left) < LowerUnit(*right);
  }
};

// The accounts of the last run. All at once, since a lookup in the document takes a walk through it.
std::set<WString, KeyOrder> ReadChosen(IniDocument& document, const StopWord* stop) {
  std::set<WString, KeyOrder> seen, chosen;
  VisitKeys(document, kBackupUsersSection, [&](const WString& name, WString& value) {
    if (IsStopAsked(stop)) return;
    const bool isFirst = seen.insert(name).second;
    if (isFirst && value.ToUInt32() != 0) chosen.insert(name);
  });
  return chosen;
}

bool HasFolder(const wchar_t* setFolder, const WString& name) {
  return IsPlainName(name) && IsFolderPath(UserFolderInSet(setFolder, name.CStr()).CStr());
}

}  // namespace

void ParseUserValue(const WString& value, int32_t& privilege, WString& displayName) {
  privilege = -1;
  displayName = value;
  const int32_t bar = value.Find(L"|");
  if (bar == 0) return;
  displayName.RemoveLeft(bar);
  const wchar_t first = value.buffer[0];
  if (first < L'0' || first > L'9') return;
  const uint32_t level = WString(value).ToUInt32();  // ends at the bar
  if (level <= 2) privilege = static_cast<int32_t>(level);
}

std::vector<SetAccount> ReadSetAccounts(IniDocument& document, const wchar_t* setFolder, LeftOutKeys* leftOut,
                                        const StopWord* stop) {
  std::vector<SetAccount> accounts;
  const std::set<WString, KeyOrder> chosen = ReadChosen(document, stop);
  std::set<WString, KeyOrder> seen;
  VisitKeys(document, kUsersSection, [&](const WString& name, const WString& value) {
    if (IsStopAsked(stop)) return;
    if (!seen.insert(name).second) {  // of two keys of one name the first counts
      if (leftOut && HasFolder(setFolder, name)) leftOut->repeated.Add(name.CStr());
      return;
    }
    if (leftOut && !IsPlainName(name)) leftOut->notPlain.Add(name.CStr());
    SetAccount account;
    account.name = name;
    ParseUserValue(value, account.privilege, account.displayName);
    account.fullName = account.displayName;
    if (account.displayName.IsEmpty()) account.displayName = account.name;
    account.isBackedUp = chosen.count(account.name) != 0;
    account.hasFolder = HasFolder(setFolder, account.name);
    accounts.push_back(std::move(account));
  });
  return accounts;
}
