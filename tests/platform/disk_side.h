// disk_side.h
//
// The other side of the platform's files: what lies on the disk, seen and made without the platform.
#pragma once
#include <fcntl.h>
#include <unistd.h>

#include <string>

#include "foundation/unique_handle.h"
#include "machine/machine.h"
#include "support/test_place.h"

// The folder or file of the disk behind a path of the machine; each name must be plain.
inline std::string OnDisk(const WString& path) {
  std::string text = Utf8(path);
  std::string disk = machine::ThisMachine().DriveFolder(text[0]) + text.substr(2);
  for (char& letter : disk) {
    if (letter == '\\') letter = '/';
  }
  return disk;
}

inline bool MakeOnDisk(const std::string& file, const std::string& bytes = "x") {
  int descriptor = open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  bool isWritten = write(descriptor, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  return close(descriptor) == 0 && isWritten;
}

// The error of a call that gives FALSE; 0 where it worked.
template <typename Result>
DWORD ErrorOf(Result result) {
  return result ? ERROR_SUCCESS : GetLastError();
}

inline UniqueFile Open(const WString& path, DWORD access, DWORD share = 7, DWORD disposition = OPEN_EXISTING,
                       DWORD flags = 0) {
  return UniqueFile(CreateFileW(path.CStr(), access, share, nullptr, disposition, flags, nullptr));
}

// As a walk does, so that nobody moves it.
inline UniqueFile HoldDirectory(const WString& path) {
  return Open(path, FILE_LIST_DIRECTORY, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_EXISTING,
              FILE_FLAG_BACKUP_SEMANTICS);
}

// The error of opening a file that is there to read it, or with another disposition to write it.
inline DWORD OpenError(const WString& path, DWORD disposition = OPEN_EXISTING) {
  return ErrorOf(Open(path, disposition == OPEN_EXISTING ? GENERIC_READ : GENERIC_WRITE, 7, disposition));
}
