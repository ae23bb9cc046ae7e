#include <gtest/gtest.h>
#include <windows.h>

#include "platform/machine_settings.h"

namespace {

bool Verify(DWORD type, BYTE condition, DWORD value) {
  OSVERSIONINFOEXW wanted = {};
  wanted.dwOSVersionInfoSize = sizeof(wanted);
  (type == VER_MAJORVERSION   ? wanted.dwMajorVersion
   : type == VER_MINORVERSION ? wanted.dwMinorVersion
                              : wanted.dwBuildNumber) = value;
  bool holds = VerifyVersionInfoW(&wanted, type, VerSetConditionMask(0, type, condition));
  EXPECT_TRUE(holds || GetLastError() == ERROR_OLD_WIN_VERSION);
  return holds;
}

}  // namespace

// A machine would be taken for another Windows, and folders of the wrong layout be used.
TEST(Version, IsThatOfTheMachine) {
  ChangedSettings machine;
  for (auto [major, minor, build] : {std::tuple{5, 1, 2600}, {6, 1, 7601}, {10, 0, 22621}}) {
    machine.settings.major = static_cast<uint32_t>(major);
    machine.settings.minor = static_cast<uint32_t>(minor);
    machine.settings.build = static_cast<uint32_t>(build);
    OSVERSIONINFOEXW info = {};
    info.dwOSVersionInfoSize = sizeof(info);
    ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
    EXPECT_EQ(info.dwMajorVersion, machine.settings.major);
    EXPECT_EQ(info.dwMinorVersion, machine.settings.minor);
    EXPECT_EQ(info.dwBuildNumber, machine.settings.build);

    EXPECT_TRUE(Verify(VER_MAJORVERSION, VER_EQUAL, info.dwMajorVersion));
    EXPECT_TRUE(Verify(VER_MAJORVERSION, VER_GREATER_EQUAL, 5));
    EXPECT_EQ(Verify(VER_MAJORVERSION, VER_GREATER_EQUAL, 10), major >= 10);
    EXPECT_FALSE(Verify(VER_MAJORVERSION, VER_GREATER_EQUAL, 11));
    EXPECT_EQ(Verify(VER_MINORVERSION, VER_EQUAL, 1), minor == 1);
    EXPECT_EQ(Verify(VER_BUILDNUMBER, VER_GREATER_EQUAL, 22000), build >= 22000);
    EXPECT_EQ(Verify(VER_BUILDNUMBER, VER_LESS, 22000), build < 22000);
  }
}

// The size says which structure it is; another one would be written past its end.
TEST(Version, StructureOfAnotherSizeIsRefused) {
  OSVERSIONINFOEXW info = {};
  info.dwOSVersionInfoSize = sizeof(info) - 4;
  EXPECT_FALSE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
}

// Major and minor together are one number: 6.3 is above 6.2, and 10.0 above both.
TEST(Version, MinorCountsOnlyBelowTheSameMajor) {
  ChangedSettings machine;
  OSVERSIONINFOEXW wanted = {};
  wanted.dwOSVersionInfoSize = sizeof(wanted);
  wanted.dwMajorVersion = 6;
  wanted.dwMinorVersion = 2;
  DWORD types = VER_MAJORVERSION | VER_MINORVERSION;
  ULONGLONG mask = VerSetConditionMask(VerSetConditionMask(0, VER_MAJORVERSION, VER_GREATER_EQUAL),
                                       VER_MINORVERSION, VER_GREATER_EQUAL);
  for (auto [major, minor, holds] :
       {std::tuple{6u, 1u, false}, {6u, 2u, true}, {6u, 3u, true}, {10u, 0u, true}}) {
    machine.settings.major = major;
    machine.settings.minor = minor;
    EXPECT_EQ(VerifyVersionInfoW(&wanted, types, mask) != FALSE, holds) << major << "." << minor;
  }
}

// Functions are taken by name; one that isn't there must be seen as missing.
TEST(Version, FunctionsAreTakenAtRunTime) {
  HMODULE kernel = LoadLibraryW(L"Kernel32.dll");
  ASSERT_NE(kernel, nullptr);
  EXPECT_EQ(GetModuleHandleW(L"kernel32"), kernel);
  EXPECT_EQ(reinterpret_cast<void*>(GetProcAddress(kernel, "GetVersionExW")),
            reinterpret_cast<void*>(GetVersionExW));
  EXPECT_EQ(GetProcAddress(kernel, "NoSuchFunction"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
  EXPECT_TRUE(FreeLibrary(kernel));
  EXPECT_EQ(LoadLibraryW(L"NoSuch.dll"), nullptr);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_MOD_NOT_FOUND));
}

// The program's folder, where settings and log lie, comes from this path.
TEST(Version, ProgramPathIsThatOfTheMachine) {
  ChangedSettings machine;
  machine.settings.programPath = "E:\\Rescue\\Norvane.exe";
  wchar_t path[30] = {};
  EXPECT_EQ(GetModuleFileNameW(nullptr, path, 30), 21u);
  EXPECT_EQ(CompareStringOrdinal(path, -1, L"E:\\Rescue\\Norvane.exe", -1, FALSE), CSTR_EQUAL);
  EXPECT_EQ(GetModuleFileNameW(nullptr, path, 10), 10u);
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(CompareStringOrdinal(path, -1, L"E:\\Rescue", -1, FALSE), CSTR_EQUAL);
}
