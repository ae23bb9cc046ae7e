#include "foundation/system_text.h"

WString SystemText(DWORD error) {
  constexpr int32_t kRoom = 512;
  WString text;
  wchar_t* buffer = text.Reserve(kRoom);
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      error, 0, buffer, kRoom, nullptr);
  buffer[length] = 0;
  text.length = 0;
  text.Replace(L"\r\n", L" ");
  text.Trim(kTrimLeading | kTrimTrailing);
  if (!text.IsEmpty()) return text;
  WString number;
  number.FromUInt32(error);
  text.Concat(L"error ", number.CStr());
  return text;
}
