#include "core/format_date_time.h"

namespace {

// Writes the last `width` digits of `value`, with zeros in front.
wchar_t* PutDigits(wchar_t* end, uint32_t value, int width) {
  for (int place = width - 1; place >= 0; place--) {
    end[place] = static_cast<wchar_t>(L'0' + value % 10);
    value /= 10;
  }
  return end + width;
}

}  // namespace

void FormatDateTime(const SYSTEMTIME& time, WString& text) {
  constexpr int32_t kStampLength = 23;
  wchar_t* end = text.Reserve(kStampLength);
  end = PutDigits(end, time.wYear, 4);
  *end++ = L'/';
  end = PutDigits(end, time.wMonth, 2);
  *end++ = L'/';
  end = PutDigits(end, time.wDay, 2);
  *end++ = L' ';
  end = PutDigits(end, time.wHour, 2);
  *end++ = L':';
  end = PutDigits(end, time.wMinute, 2);
  *end++ = L':';
  end = PutDigits(end, time.wSecond, 2);
  *end++ = L':';
  end = PutDigits(end, time.wMilliseconds, 3);
  *end = 0;
  text.length = 0;
}
