// profile_file.h
//
// Files in the profile of an account that a command has made, wherever the system put that.
#pragma once
#include <string>

#include "operations/path_queries.h"
#include "support/test_place.h"
#include "users/account_lookup.h"

// The path of "a/b" in the profile; empty if there is no such account.
inline WString InProfile(const std::string& account, std::string relative) {
  for (char& unit : relative) {
    if (unit == '/') unit = '\\';
  }
  WString sid, profile;
  if (!GetAccountSidAndProfile(Wide(account).CStr(), sid, &profile)) return WString();
  return PathBelow(profile, Wide(relative).CStr());
}

// "(missing)" if it isn't there.
inline std::string ReadInProfile(const std::string& account, const std::string& relative) {
  const WString path = InProfile(account, relative);
  return IsFilePath(path.CStr()) ? ReadBytes(path.CStr()) : "(missing)";
}
