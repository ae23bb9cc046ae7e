#include "foundation/windows_version.h"

#include <initializer_list>

#include "foundation/kernel_function.h"
#include "foundation/split_list.h"

namespace {

constexpr uint32_t kComparedParts = 4;
constexpr DWORD kFirstBuildOf11 = 22000;

// Through memory: a floating point unit that computes with more digits than a double has would give a
// 6.2 that is below the 6.2 of a comparison.
double Version(DWORD major, DWORD minor) {
  volatile double version = major + minor / 10.0;
  return version;
}

bool SystemIs(DWORD field, DWORD value, BYTE condition) {
  OSVERSIONINFOEXW asked = {};
  asked.dwOSVersionInfoSize = sizeof(asked);
  asked.dwMajorVersion = value;
  asked.dwMinorVersion = value;
  return VerifyVersionInfoW(&asked, field, VerSetConditionMask(0, field, condition)) != 0;
}

}  // namespace

double GetWindowsVersion() {
  OSVERSIONINFOEXW told = {};
  told.dwOSVersionInfoSize = sizeof(told);
  const auto getVersion = KernelFunction<BOOL(WINAPI*)(OSVERSIONINFOW*)>("GetVersionExW");
  if (getVersion != nullptr && getVersion(reinterpret_cast<OSVERSIONINFOW*>(&told))) {
    const double version = Version(told.dwMajorVersion, told.dwMinorVersion);
    if (version > 0 && version <= 6.2) return version;
  }
  if (SystemIs(VER_MAJORVERSION, 11, VER_GREATER_EQUAL)) return 11.0;
  if (SystemIs(VER_MAJORVERSION, 10, VER_GREATER_EQUAL)) {
    return told.dwBuildNumber >= kFirstBuildOf11 ? 11.0 : 10.0;
  }
  for (const DWORD major : {6u, 5u}) {
    if (!SystemIs(VER_MAJORVERSION, major, VER_EQUAL)) continue;
    for (const DWORD minor : {3u, 2u, 1u}) {
      if (SystemIs(VER_MINORVERSION, minor, VER_EQUAL)) return Version(major, minor);
    }
    return Version(major, 0);
  }
  return 0.0;
}

int CompareVersionStrings(const wchar_t* a, const wchar_t* b) {
  SplitList left, right;
  left.Split(a, L".,", false);
  right.Split(b, L".,", false);
  for (uint32_t part = 0; part < kComparedParts; ++part) {
    const uint64_t leftPart = part < left.count ? WString(left.pieces[part]).ToUInt64() : 0;
    const uint64_t rightPart = part < right.count ? WString(right.pieces[part]).ToUInt64() : 0;
    if (leftPart != rightPart) return leftPart > rightPart ? 1 : -1;
  }
  return 0;
}
