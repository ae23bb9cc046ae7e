// system_reason.h
//
// The system's own words for one of its error codes, for the console.
#pragma once
#include <cstdint>
#include <string>

// "Access is denied." and the like, in the system's language, in UTF-8; "error 5" where it has no words.
std::string SystemReason(uint32_t error);
