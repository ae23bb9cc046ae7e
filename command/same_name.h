// same_name.h
//
// Names of accounts and folders as the system tells them apart.
#pragma once
#include <windows.h>

#include "foundation/wstring.h"

inline bool IsSameName(const WString& a, const WString& b) {
  return CompareStringOrdinal(a.CStr(), -1, b.CStr(), -1, TRUE) == CSTR_EQUAL;
}
