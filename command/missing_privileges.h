// missing_privileges.h
//
// Whether this process may read and write what access lists deny it.
#pragma once
#include <string>

// A sentence that says which of the privileges for backup and restore aren't enabled and what that
// means; empty if both are. Asks for the state after AppObject's constructor has taken what it can get.
std::string MissingPrivilegesSentence();
