// full_path.cc
#include <cstring>

#include "machine/call.h"
#include "machine/path_resolution.h"

using namespace machine;

namespace {

// Copies a text out, or gives the room that it needs.
DWORD CopyOut(const std::u16string& text, LPWSTR buffer, DWORD size) {
  if (text.size() >= size) return static_cast<DWORD>(text.size() + 1);
  std::memcpy(buffer, text.c_str(), (text.size() + 1) * sizeof(char16_t));
  SetLastError(ERROR_SUCCESS);
  return static_cast<DWORD>(text.size());
}

}  // namespace

DWORD WINAPI GetFullPathNameW(LPCWSTR path, DWORD size, LPWSTR buffer, LPWSTR* name) {
  EnterCall();
  if (!path || !*path) return Fail(ERROR_INVALID_NAME);
  std::u16string full = FullPath(reinterpret_cast<const char16_t*>(path));
  DWORD length = CopyOut(full, buffer, size);
  if (name && length < size) {
    size_t slash = full.rfind(u'\\');
    bool hasName = slash != full.npos && slash + 1 < full.size();
    *name = hasName ? buffer + slash + 1 : nullptr;
  }
  return length;
}

DWORD WINAPI GetCurrentDirectoryW(DWORD size, LPWSTR buffer) {
  EnterCall();
  return CopyOut(CurrentFolder(), buffer, size);
}

BOOL WINAPI SetCurrentDirectoryW(LPCWSTR path) {
  EnterCall();
  Location location;
  FileFacts facts;
  if (!Locate("SetCurrentDirectoryW", Effect::kReads, path, location)) return FALSE;
  std::u16string folder = location.path.text;
  if (!LookUp(location, Links::kFollow, facts, false)) return FALSE;
  if (!facts.IsDirectory()) return Fail(ERROR_DIRECTORY);
  SetCurrentFolder(std::move(folder));
  return TRUE;
}
