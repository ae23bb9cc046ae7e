// uuid.cc
#include <uuid/uuid.h>
#include <windows.h>
#include <rpcdce.h>

#include <cstdio>
#include <cstring>

#include "machine/call.h"
#include "machine/names.h"

using namespace machine;

namespace {
constexpr size_t kTextUnits = 36;
}

RPC_STATUS WINAPI UuidCreate(UUID* uuid) {
  EnterCall();
  uuid_t bytes;
  uuid_generate_random(bytes);
  // The library gives the number fields from their high byte on.
  uuid->Data1 = static_cast<uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
  uuid->Data2 = static_cast<uint16_t>(bytes[4] << 8 | bytes[5]);
  uuid->Data3 = static_cast<uint16_t>(bytes[6] << 8 | bytes[7]);
  std::memcpy(uuid->Data4, bytes + 8, sizeof(uuid->Data4));
  return RPC_S_OK;
}

RPC_STATUS WINAPI UuidToStringW(UUID* uuid, RPC_WSTR* text) {
  EnterCall();
  char digits[kTextUnits + 1];
  std::snprintf(digits, sizeof(digits), "%08x-%04x-%04x-%02x%02x-%02x%02x%02x%02x%02x%02x",
                static_cast<unsigned>(uuid->Data1), uuid->Data2, uuid->Data3, uuid->Data4[0], uuid->Data4[1],
                uuid->Data4[2], uuid->Data4[3], uuid->Data4[4], uuid->Data4[5], uuid->Data4[6],
                uuid->Data4[7]);
  auto* units = static_cast<RPC_WSTR>(HeapAlloc(GetProcessHeap(), 0, sizeof(digits) * sizeof(**text)));
  if (!units) return RPC_S_OUT_OF_MEMORY;
  for (size_t i = 0; i <= kTextUnits; ++i) units[i] = static_cast<unsigned char>(digits[i]);
  *text = units;
  return RPC_S_OK;
}

RPC_STATUS WINAPI RpcStringFreeW(RPC_WSTR* text) {
  EnterCall();
  if (*text) HeapFree(GetProcessHeap(), 0, *text);
  *text = nullptr;
  return RPC_S_OK;
}
