#include "profile_list.h"

#include <windows.h>

#include "operations/copy_failure.h"
#include "operations/path_queries.h"
#include "plan_problem.h"
#include "system_reason.h"
#include "users/account_lookup.h"
#include "users/listed_profiles.h"
#include "users/user_hives.h"
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

std::string SetAsideText(const WString& account, const WString& profile, const WString& setAside) {
  return "the account " + Quoted(account) + " stands on " +
         (IsTemporaryProfile(profile) ? "the temporary profile " : "the profile ") + Quoted(profile) +
         ", since Windows has set its own one, " + Quoted(setAside) + ", aside";
}

std::string SetAsideSentence(const WString& account, const WString& profile, const WString& setAside) {
  std::string sentence = SetAsideText(account, profile, setAside);
  sentence[0] = 'T';
  return sentence + "; back up that folder with --extra.";
}

std::vector<std::string> OtherProfileNotes(const UserTable& accounts, const WStringArray& covered) {
  std::vector<std::string> notes;
  WStringArray folders;
  FindOtherProfiles(accounts, folders);
  for (uint32_t row = 0; row < folders.count; ++row) {
    if (IsInOneOf(folders[row], covered)) continue;
    notes.push_back("The profile " + Quoted(folders[row]) +
                    " belongs to no local account of this list (it may be that of an account of a domain, or "
                    "of a deleted one), and isn't backed up with them; back it up with --extra.");
  }
  return notes;
}

void AddHiveFailure(const WString& sid, const WString& profile, std::vector<std::string>& failures) {
  HiveProblem problem;
  if (!FindHiveProblem(sid.CStr(), profile.CStr(), problem)) return;
  failures.push_back(Escaped(kCannotLoadHive + problem.file) + " (" +
                     SystemReason(static_cast<uint32_t>(problem.status)) + ")");
}
