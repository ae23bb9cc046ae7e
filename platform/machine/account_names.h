// account_names.h
//
// Names and SIDs of the machine's accounts and of the well-known groups beside them.
#pragma once
#include <windows.h>

#include <string>
#include <string_view>

namespace machine {

struct NamedSid {
  std::string sid;  // text
  std::string name;
  std::string domain;  // the computer's name, BUILTIN, NT AUTHORITY, or empty
  SID_NAME_USE use = SidTypeUnknown;
};

// `name` may be NAME, DOMAIN\NAME or .\NAME; without regard to case. Local accounts win over groups.
bool FindAccountName(std::string_view name, NamedSid& found);
bool FindAccountSid(std::string_view sid, NamedSid& found);

// Whether a new account can have the name: 1 to 20 units, none of "/\[]:;|=,+*?<>@, no control character,
// no blank at an end and no dot at the last one.
bool IsAccountName(std::string_view name);

// The computer that a call is to go to: null, empty, or this one's name with or without backslashes.
bool IsThisComputer(const wchar_t* name);

}  // namespace machine
