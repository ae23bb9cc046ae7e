// password_digest.h
//
// What accounts.ini keeps of a password, so that it can be compared and not read.
#pragma once
#include <string>
#include <string_view>

namespace machine {

// "pbkdf2-sha256:<salt>:<key>", both in hexadecimal; empty for an empty password.
std::string PasswordDigest(std::u16string_view password);

bool MatchesDigest(const std::string& digest, std::u16string_view password);

}  // namespace machine
