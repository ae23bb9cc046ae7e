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

}  // namespace machine
