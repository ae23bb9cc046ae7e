#include "system_reason.h"

#include <windows.h>

#include "foundation/wstring.h"
#include "utf8_text.h"

std::string SystemReason(uint32_t error) {
  constexpr int32_t kRoom = 512;
  WString text;
  wchar_t* buffer = text.Reserve(kRoom);
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      error, 0, buffer, kRoom, nullptr);
  buffer[length] = 0;
  text.length = 0;
  text.Replace(L"\r\n", L" ");
  text.Trim(kTrimLeading | kTrimTrailing);
  return text.IsEmpty() ? "error " + std::to_string(error) : Escaped(text);
}
