// placing.h
#pragma once
#include <windows.h>

#include "foundation/unique_handle.h"
#include "operations/file_placement.h"
#include "operations/operation_context.h"
#include "support/test_place.h"

inline constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// A finished file under its temporary name, beside an older one in its place.
struct Placing {
  TestPlace place;
  const std::string temporaryName = "~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.1";
  WString target = place.File("file", "old"), temporary = place.File(temporaryName, "new");
  Patience patience;
  DWORD error = NO_ERROR;

  Placement Put(Place known = Place::kTaken) {
    return PutInPlace(temporary.CStr(), target.CStr(), known, patience, error);
  }
  UniqueFile Hold(const WString& path, DWORD share) {
    return UniqueFile(CreateFileW(path.CStr(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr));
  }
};
