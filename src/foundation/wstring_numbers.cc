// Numbers, code pages and identifiers.
#include <rpc.h>

#include "foundation/wstring.h"

namespace {

void PutDecimal(WString& output, uint64_t value, bool negative) {
  wchar_t digits[24];
  wchar_t* first = digits + 23;
  *first = 0;
  do {
    *--first = static_cast<wchar_t>(L'0' + value % 10);
    value /= 10;
  } while (value != 0);
  if (negative) *--first = L'-';
  output.Assign(first);
}

bool IsSpace(wchar_t unit) { return unit == L' ' || (unit >= 9 && unit <= 13); }

// As strtoul for base 10: white space, a sign, digits; what follows is left alone. Too large a number
// gives `limit`, a negative one its complement, which the caller cuts to its width.
uint64_t ParseDecimal(const wchar_t* text, uint64_t limit) {
  while (IsSpace(*text)) ++text;
  const bool negative = *text == L'-';
  if (*text == L'-' || *text == L'+') ++text;
  uint64_t value = 0;
  for (; *text >= L'0' && *text <= L'9'; ++text) {
    const uint64_t digit = static_cast<uint64_t>(*text - L'0');
    if (value > (limit - digit) / 10) return limit;
    value = value * 10 + digit;
  }
  return negative ? 0 - value : value;
}

void FromCodePage(WString& output, UINT codePage, const char* bytes) {
  output.Assign(nullptr);
  output.ok = false;
  if (bytes == nullptr || bytes[0] == 0) return;
  const int units = MultiByteToWideChar(codePage, 0, bytes, -1, nullptr, 0);  // with the terminator
  if (units <= 1) return;
  const int written = MultiByteToWideChar(codePage, 0, bytes, -1, output.Reserve(units - 1), units);
  output.ok = written > 1;
}

}  // namespace

void WString::FromUInt32(uint32_t value) { PutDecimal(*this, value, false); }

void WString::FromInt32(int32_t value) {
  const int64_t wide = value;
  PutDecimal(*this, static_cast<uint64_t>(wide < 0 ? -wide : wide), wide < 0);
}

void WString::FromUInt64(uint64_t value) { PutDecimal(*this, value, false); }

uint32_t WString::ToUInt32() {
  ok = !IsEmpty();
  return ok ? static_cast<uint32_t>(ParseDecimal(buffer, 0xffffffffu)) : 0;
}

uint64_t WString::ToUInt64() {
  ok = !IsEmpty();
  return ok ? ParseDecimal(buffer, ~uint64_t{0}) : 0;
}

void WString::FromAnsi(const char* bytes) { FromCodePage(*this, CP_ACP, bytes); }

void WString::FromUtf8(const char* bytes) { FromCodePage(*this, CP_UTF8, bytes); }

void WString::FromUtf16BE(const wchar_t* units, int32_t count) {
  if (!ok) return;
  int32_t copied = 0;
  if (units != nullptr) {
    while ((count < 1 || copied < count) && units[copied] != 0) ++copied;
  }
  wchar_t* swapped = AllocateUnits(copied);
  for (int32_t index = 0; index < copied; ++index) {
    const uint32_t unit = static_cast<uint16_t>(units[index]);
    swapped[index] = static_cast<wchar_t>(unit >> 8 | (unit & 0xff) << 8);
  }
  swapped[copied] = 0;
  FreeUnits(buffer);
  buffer = swapped;
  length = copied;
}

void WString::NewGuid() {
  ok = false;
  UUID id;
  const RPC_STATUS status = UuidCreate(&id);
  if (status != RPC_S_OK && status != RPC_S_UUID_LOCAL_ONLY) return;
  RPC_WSTR text = nullptr;
  if (UuidToStringW(&id, &text) != RPC_S_OK) return;
  Concat(L"{", reinterpret_cast<const wchar_t*>(text), L"}");
  RpcStringFreeW(&text);
}
