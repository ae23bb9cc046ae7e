// sid_text.h
//
// Security identifiers: their text form, their bytes, and the well-known ones.
#pragma once
#include <cstddef>
#include <string>
#include <string_view>

namespace machine {

constexpr const char* kSystemSid = "S-1-5-18";
constexpr const char* kEveryoneSid = "S-1-1-0";
constexpr const char* kAdministratorsSid = "S-1-5-32-544";
constexpr const char* kUsersSid = "S-1-5-32-545";
constexpr const char* kGuestsSid = "S-1-5-32-546";

// The bytes of a SID; empty if the text is none.
std::string SidBytes(std::string_view text);
// The text of a SID in memory that is known to be whole.
std::string SidText(const void* sid);
// The text of a SID within bytes of unknown origin; empty if it isn't whole and valid.
std::string SidText(std::string_view bytes);
// Its length, at most `room`; 0 if it isn't valid or doesn't fit.
size_t SidLength(const void* sid, size_t room);

}  // namespace machine
