// version.cc
//
// Which Windows the machine has. The program's manifest declares the systems up to 10, so it is told the
// true numbers.
#include <windows.h>

#include "machine/call.h"
#include "machine/machine.h"

using namespace machine;

namespace {

// Where the condition of a type lies in a mask: three bits each, in the order of the types' bits.
constexpr int kBitsPerCondition = 3;

BYTE ConditionOf(ULONGLONG mask, DWORD type) {
  int place = __builtin_ctz(type);
  return static_cast<BYTE>(mask >> (place * kBitsPerCondition) & 7);
}

bool Holds(DWORD actual, DWORD wanted, BYTE condition) {
  switch (condition) {
    case VER_EQUAL:
      return actual == wanted;
    case VER_GREATER:
      return actual > wanted;
    case VER_GREATER_EQUAL:
      return actual >= wanted;
    case VER_LESS:
      return actual < wanted;
    case VER_LESS_EQUAL:
      return actual <= wanted;
  }
  Unsupported("VerifyVersionInfoW", "this condition");
}

}  // namespace

BOOL WINAPI GetVersionExW(OSVERSIONINFOW* info) {
  EnterCall();
  if (info->dwOSVersionInfoSize != sizeof(OSVERSIONINFOW) &&
      info->dwOSVersionInfoSize != sizeof(OSVERSIONINFOEXW)) {
    return Fail(ERROR_INSUFFICIENT_BUFFER);
  }
  const MachineSettings& settings = ThisMachine().settings;
  info->dwMajorVersion = settings.major;
  info->dwMinorVersion = settings.minor;
  info->dwBuildNumber = settings.build;
  info->dwPlatformId = VER_PLATFORM_WIN32_NT;
  info->szCSDVersion[0] = 0;
  if (info->dwOSVersionInfoSize == sizeof(OSVERSIONINFOEXW)) {
    auto* extended = reinterpret_cast<OSVERSIONINFOEXW*>(info);
    extended->wServicePackMajor = 0;
    extended->wServicePackMinor = 0;
    extended->wSuiteMask = 0;
    extended->wProductType = VER_NT_WORKSTATION;
    extended->wReserved = 0;
  }
  return TRUE;
}

ULONGLONG WINAPI VerSetConditionMask(ULONGLONG mask, DWORD types, BYTE condition) {
  if (types == 0 || condition == 0 || condition > 7) return mask;
  // Of several types, only that of the highest bit is set.
  int place = 31 - __builtin_clz(types);
  return mask | static_cast<ULONGLONG>(condition) << (place * kBitsPerCondition);
}

BOOL WINAPI VerifyVersionInfoW(OSVERSIONINFOEXW* wanted, DWORD types, DWORDLONG mask) {
  EnterCall();
  if (types == 0 || mask == 0) return Fail(ERROR_BAD_ARGUMENTS);
  if (types & ~static_cast<DWORD>(VER_MAJORVERSION | VER_MINORVERSION | VER_BUILDNUMBER)) {
    Unsupported("VerifyVersionInfoW", "more than the version and the build");
  }
  const MachineSettings& settings = ThisMachine().settings;
  if ((types & VER_BUILDNUMBER) &&
      !Holds(settings.build, wanted->dwBuildNumber, ConditionOf(mask, VER_BUILDNUMBER))) {
    return Fail(ERROR_OLD_WIN_VERSION);
  }
  // Of major and minor version together the first that differs decides, under the condition of the major.
  BYTE condition = ConditionOf(mask, (types & VER_MAJORVERSION) ? VER_MAJORVERSION : VER_MINORVERSION);
  bool majorDecides =
      (types & VER_MAJORVERSION) && (!(types & VER_MINORVERSION) || settings.major != wanted->dwMajorVersion);
  bool holds = true;
  if (majorDecides) {
    holds = Holds(settings.major, wanted->dwMajorVersion, condition);
  } else if (types & VER_MINORVERSION) {
    holds = Holds(settings.minor, wanted->dwMinorVersion, condition);
  }
  return holds ? TRUE : Fail(ERROR_OLD_WIN_VERSION);
}
