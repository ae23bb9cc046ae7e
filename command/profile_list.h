// profile_list.h
//
// What is said where the system doesn't tell which folders belong to its accounts, as on a machine whose
// registry is damaged. Without a word, a list of accounts would look whole and be short.
#pragma once
#include <string>

#include "foundation/wstring.h"

// A sentence if the system's list of profiles can't be read, otherwise an empty text.
std::string ProfileListProblem();

// For an account that the system lists without a profile folder.
std::string MissingProfileSentence(const WString& account);
