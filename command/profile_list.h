// profile_list.h
//
// What is said where the system doesn't tell which folders belong to its accounts, as on a machine whose
// registry is damaged. Without a word, a list of accounts would look whole and be short.
#pragma once
#include <string>
#include <vector>

#include "foundation/wstring.h"
#include "users/user_table.h"

// A sentence if the system's list of profiles can't be read, otherwise an empty text.
std::string ProfileListProblem();

// For an account that the system lists without a profile folder.
std::string MissingProfileSentence(const WString& account);

// Where an account stands on another profile than its own (see GetSetAsideProfile): that, as a part of a
// sentence, and the whole sentence.
std::string SetAsideText(const WString& account, const WString& profile, const WString& setAside);
std::string SetAsideSentence(const WString& account, const WString& profile, const WString& setAside);

// For each folder that FindOtherProfiles gives, unless it lies in one of `covered`.
std::vector<std::string> OtherProfileNotes(const UserTable& accounts, const WStringArray& covered);

// Adds what a run says where the hive of an account can't be loaded, if that is so.
void AddHiveFailure(const WString& sid, const WString& profile, std::vector<std::string>& failures);
