// privileges.h
//
// The privileges of this process.
#pragma once
#include <cstdint>

// Enables all privileges that the program uses, as far as the account has them. They stay for the life
// of the process. Gives their state before (a TOKEN_PRIVILEGES), which the caller frees with delete[],
// or null where that failed; GetLastError() is ERROR_NOT_ALL_ASSIGNED where the account lacks some.
uint8_t* EnableProcessPrivileges();
