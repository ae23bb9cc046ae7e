#include "profile_list.h"

#include <windows.h>

#include "system_reason.h"
#include "users/account_lookup.h"
#include "utf8_text.h"

std::string ProfileListProblem() {
  if (CanReadProfileList()) return std::string();
  const DWORD error = GetLastError();
  return "The list of profiles (registry key HKEY_LOCAL_MACHINE\\SOFTWARE\\Microsoft\\Windows NT\\"
         "CurrentVersion\\ProfileList) can't be read (" +
         SystemReason(error) + "), so that accounts or their folders are missing here; " +
         (error == ERROR_ACCESS_DENIED ? "start norvanectl as administrator."
                                       : "bring back a good Windows\\System32\\config\\SOFTWARE, or back up "
                                         "the folders below Users with --extra.");
}

std::string MissingProfileSentence(const WString& account) {
  return "The system doesn't tell the profile folder of the account \"" + Escaped(account) +
         "\"; start norvanectl as administrator, or back up the folder itself with --extra.";
}
