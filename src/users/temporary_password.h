// temporary_password.h
//
// A password for one logon of the program itself, which nobody else ever learns.
#pragma once
#include <windows.h>

// Drawn by chance and wiped at the end. It has upper and lower case letters, digits and signs, as strict
// password policies ask for.
class TemporaryPassword {
 public:
  TemporaryPassword();
  ~TemporaryPassword();
  TemporaryPassword(const TemporaryPassword&) = delete;
  TemporaryPassword& operator=(const TemporaryPassword&) = delete;

  bool IsDrawn() const { return text_[0] != 0; }  // false if the system has no random numbers
  const wchar_t* Text() const { return text_; }

 private:
  static constexpr DWORD kLength = 36;
  wchar_t text_[kLength + 1] = {};
};
