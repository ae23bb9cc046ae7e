// complaint.h
//
// How what makes and opens machines says what is wrong.
#pragma once
#include <string>

namespace machine {

// Puts the sentence into `error`, if anybody wants it; for `return Complain(…)` in what gives a bool.
inline bool Complain(std::string* error, const std::string& text) {
  if (error) *error = text;
  return false;
}

}  // namespace machine
