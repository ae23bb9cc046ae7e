#include "core/app_object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/test_place.h"

namespace {

// Everything else hangs from these; a wrong folder puts settings and log where nobody finds them.
TEST(AppObject, KnowsItsPathsAndItsMachine) {
  CreateDirectoryW(L"C:\\Windows", nullptr);  // a machine made for tests doesn't have it
  AppObject app;
  EXPECT_GT(app.windowsVersion, 5.0);
  EXPECT_FALSE(app.computerName.IsEmpty());
  EXPECT_EQ(Utf8(app.systemDrive), "C:");

  AppObject::StartResult result = app.PrepareRun(nullptr, L"/PostUpdate", false);
  EXPECT_EQ(result.mode, StartMode::kHome);
  EXPECT_TRUE(result.postUpdate);
  std::string folder = Utf8(app.appFolder);
  EXPECT_TRUE(Utf8(app.exePath).starts_with(folder + "\\"));
  EXPECT_EQ(Utf8(app.exePath).find('\\', folder.size() + 1), std::string::npos);
  EXPECT_EQ(Utf8(app.logPath), folder + "\\Norvane.log");
  EXPECT_EQ(Utf8(app.settings.path), folder + "\\Norvane.ini");
}

// Settings reach the disk at a normal end, and never from a program that isn't to write them.
TEST(AppObject, KeepsSettingsOnlyWhereItMay) {
  TestPlace place;
  for (bool keeps : {false, true}) {
    {
      AppObject app;
      app.PrepareRun(nullptr, L"", keeps);
      // Beside the test program it must not be written.
      app.settings.path = place / "settings.ini";
      app.SetLastBackupDir(L"D:\\Sets");
      EXPECT_FALSE(place.Exists("settings.ini"));
    }
    EXPECT_EQ(place.Exists("settings.ini"), keeps);
  }
  IniDocument settings((place / "settings.ini").CStr());
  EXPECT_EQ(Utf8(settings.GetValue(L"BackupAndRecovery", L"LastBackupDir")), "D:\\Sets");
}

// An entry under another screen's heading is one that nobody finds.
TEST(AppObject, WritesTheLogUnderTheScreensSection) {
  TestPlace place;
  const std::pair<int32_t, const wchar_t*> sections[] = {{kLogBackup, L" Backup "},
                                                         {kLogRestore, L" Restore "},
                                                         {kLogRestoreFrom, L" Restore from "},
                                                         {kLogCopyMove, L" Copy/Move user data "},
                                                         {0, L" Home "},
                                                         {77, L" Home "}};
  AppObject app;
  EXPECT_TRUE(app.WriteLog(L"no path: nothing to write"));
  app.logPath = place / "new folder/Norvane.log";
  for (const auto& [section, name] : sections) {
    app.logSection = section;
    EXPECT_TRUE(app.WriteLog(L"entry", (WString(name) + L"!").CStr()));
  }
  IniDocument log(app.logPath.CStr());
  for (const auto& [section, name] : sections) {
    uint32_t first, end;
    log.FindSection(name, first, end);
    ASSERT_GT(end, first) << Utf8(name);
    EXPECT_THAT(Utf8(log.lines[first]), testing::EndsWith("=entry" + Utf8(name) + "!"));
  }
}

}  // namespace
