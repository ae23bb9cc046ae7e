#include "operations/drive_presence.h"

#include "operations/walk_path.h"

bool IsMissingOnItsDrive(const wchar_t* path, DWORD error) {
  if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) return false;
  const WString shown = PathForPeople(path);
  // A server that doesn't answer has errors of its own.
  if (shown.Length() < 2 || shown.buffer[1] != L':') return true;
  const wchar_t root[] = {shown.buffer[0], L':', L'\\', 0};
  return GetFileAttributesW(root) != INVALID_FILE_ATTRIBUTES;
}
