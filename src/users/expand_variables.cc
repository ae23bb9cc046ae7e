#include "users/expand_variables.h"

bool ExpandVariables(WString& text) {
  constexpr uint32_t kRoom = 4096;
  WString expanded;
  wchar_t* buffer = expanded.Reserve(kRoom, nullptr, true);
  // A number above the room is what would have been needed; the buffer is cut off then.
  uint32_t used = ExpandEnvironmentStringsW(text.CStr(), buffer, kRoom);
  if (used == 0 || used > kRoom) return false;
  text.Assign(buffer);
  return true;
}
