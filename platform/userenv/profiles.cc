// profiles.cc
//
// Where profiles are.
#include <windows.h>

#include <userenv.h>

#include <cstring>

#include "machine/call.h"
#include "machine/names.h"
#include "machine/profile_list.h"
#include "machine/token.h"

using namespace machine;

namespace {

// `size` counts units with the terminator; what is needed where it isn't enough.
BOOL PutPath(const std::string& path, wchar_t* buffer, DWORD* size) {
  if (path.empty()) return Fail(ERROR_FILE_NOT_FOUND);
  const std::u16string text = ToUtf16(path);
  const DWORD needed = static_cast<DWORD>(text.size() + 1), room = *size;
  *size = needed;
  if (!buffer || room < needed) return Fail(ERROR_INSUFFICIENT_BUFFER);
  memcpy(buffer, text.c_str(), needed * sizeof(wchar_t));
  return TRUE;
}

}  // namespace

BOOL WINAPI GetProfilesDirectoryW(wchar_t* buffer, DWORD* size) {
  EnterCall();
  return size ? PutPath(ProfilesDirectory(), buffer, size) : Fail(ERROR_INVALID_PARAMETER);
}

BOOL WINAPI GetUserProfileDirectoryW(HANDLE handle, wchar_t* buffer, DWORD* size) {
  EnterCall();
  const auto token = HandleTo<Token>(handle);
  if (!token) return FALSE;
  return size ? PutPath(ProfileOf(TokenUserText(*token)), buffer, size) : Fail(ERROR_INVALID_PARAMETER);
}
