#include "support/place_root.h"

#include <gtest/gtest.h>

#include "foundation/unique_handle.h"
#include "support/test_place.h"

namespace {

// Tests deny themselves access, hide files and make them read-only. What resists is a failure of the test
// that left it.
void RemoveTree(const WString& path) {
  WIN32_FIND_DATAW data;
  UniqueFind search(FindFirstFileW((path + L"\\*").CStr(), &data));
  const bool found = static_cast<bool>(search);
  do {
    const WString name(found ? data.cFileName : L".");
    if (name == L"." || name == L"..") continue;
    const WString entry = path + L"\\" + name;
    SetFileAttributesW(entry.CStr(), FILE_ATTRIBUTE_NORMAL);
    if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
      DeleteFileW(entry.CStr());
    } else if (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) {
      RemoveDirectoryW(entry.CStr());
    } else {
      RemoveTree(entry);
    }
  } while (found && FindNextFileW(search.Get(), &data));
  search.Reset();
  SetFileAttributesW(path.CStr(), FILE_ATTRIBUTE_NORMAL);
  RemoveDirectoryW(path.CStr());
}

}  // namespace

WString PlaceRoot() {
  // Not in the folder for temporary files: that lies in the profile of the account that runs the tests, where
  // a restore writes nothing for other accounts.
  WString number;
  number.FromUInt32(GetCurrentProcessId());
  return L"C:\\norvane-test-" + number;
}

void RemovePlace(const WString& path) {
  const WString full = WString(L"\\\\?\\") + path;
  RemoveTree(full);
  if (GetFileAttributesW(full.CStr()) != INVALID_FILE_ATTRIBUTES) {
    ADD_FAILURE() << "left behind: " << Utf8(path);
  }
}

void MakeDirectoryLink(const WString& path, const WString& target) {
  if (!CreateSymbolicLinkW(path.CStr(), target.CStr(), SYMBOLIC_LINK_FLAG_DIRECTORY)) {
    ADD_FAILURE() << "CreateSymbolicLinkW failed with " << GetLastError() << "; Wine has no links to make";
  }
}
