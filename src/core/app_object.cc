#include "core/app_object.h"

#include <shlobj.h>

#include "core/command_line.h"
#include "foundation/privileges.h"
#include "foundation/unique_handle.h"
#include "foundation/windows_version.h"
#include "toolkit/pictures.h"
#include "users/console_user.h"

namespace {

constexpr uint32_t kImageCount = 25;
constexpr uint32_t kIconCount = 20;
constexpr int32_t kExePathUnits = 2048;
constexpr wchar_t kBackupAndRecovery[] = L"BackupAndRecovery";

const wchar_t* LogSectionName(int32_t section) {
  switch (section) {
    case kLogBackup:
      return L" Backup ";
    case kLogRestore:
      return L" Restore ";
    case kLogRestoreFrom:
      return L" Restore from ";
    case kLogCopyMove:
      return L" Copy/Move user data ";
  }
  return L" Home ";
}

// The two characters of the drive that the system lies on.
void FindSystemDrive(WString& drive) {
  wchar_t folder[MAX_PATH] = {};
  bool found = SUCCEEDED(SHGetFolderPathW(nullptr, CSIDL_WINDOWS, nullptr, 0, folder));
  if (found && UnitCount(folder) >= 2) {
    drive.AssignMid(folder, 1, 2);
  } else {
    drive.ok = false;
  }
}

void FindComputerName(WString& name) {
  constexpr DWORD kNameUnits = 256;
  DWORD size = kNameUnits;
  if (!GetComputerNameW(name.Reserve(kNameUnits), &size)) name.buffer[0] = 0;
  name.length = 0;
}

}  // namespace

AppObject::AppObject()
    : instance(nullptr),
      buttonFill(0xff1e2233),
      buttonOutline(0xffafa8a0),
      buttonHoverFill(0xff3e4253),
      buttonHoverOutline(0xffd8d0c8),
      helpLinkId(-1),
      versionLinkId(-1),
      homeButtonId(-1),
      minimizeId(-1),
      closeId(-1),
      menuButtonId(-1),
      viewLogItemId(-1),
      resetLogItemId(-1),
      currentPanelId(-1),
      titleLabelId(-1),
      previousPanelId(-1),
      logSection(0),
      frameColor(0xa0302010),
      shadowColor(0x7f808097),
      windowsVersion(GetWindowsVersion()),
      checkedImage(nullptr),
      uncheckedImage(nullptr),
      scaledImage(nullptr),
      images(new Gdiplus::Image*[kImageCount]()),
      imageCount(kImageCount),
      icons(new HICON[kIconCount]()),
      iconCount(kIconCount) {
  checkedImage = PaintCheckBox(1);
  uncheckedImage = PaintCheckBox(0);
  FindComputerName(computerName);
  // Kept to the end: the privileges are taken while the console user's token is open.
  UniqueHandle consoleToken(GetConsoleUser(consoleUserName, &consoleUserProfile, &consoleUserSid));
  FindSystemDrive(systemDrive);
  delete[] EnableProcessPrivileges();
  // No box of the system's asks for a disk in the middle of a run.
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
}

AppObject::~AppObject() {
  mainWindow.Hide();
  mainWindow.Destroy();
  if (settings.saveOnDestroy) settings.Save();
  settings.saveOnDestroy = false;
  // Before the pictures that these windows show.
  busyWindow.window.Destroy();
  messageBox.window.Destroy();
  for (uint32_t i = 0; i < iconCount; i++) ReleaseIcon(icons[i]);
  delete[] icons;
  for (uint32_t i = 0; i < imageCount; i++) ReleaseImage(images[i]);
  delete[] images;
  ReleaseBitmap(uncheckedImage);
  ReleaseBitmap(checkedImage);
}

AppObject::StartResult AppObject::PrepareRun(HINSTANCE module, const wchar_t* commandLine,
                                             bool keepSettings) {
  instance = module;
  DWORD used = GetModuleFileNameW(module, exePath.Reserve(kExePathUnits), kExePathUnits);
  exePath.buffer[used < kExePathUnits ? used : kExePathUnits - 1] = 0;
  exePath.length = 0;
  appFolder = exePath;
  appFolder.StripTrailingBackslashes();
  int32_t backslash = appFolder.LastBackslash();
  if (backslash >= 3) appFolder.Truncate(backslash - 1);
  logPath.Concat(appFolder.CStr(), kLogFileName);

  WString settingsPath;
  settingsPath.Concat(appFolder.CStr(), kSettingsFileName);
  settings.Load(settingsPath.CStr(), true);
  settings.saveOnDestroy = keepSettings;
  return ParseCommandLine(commandLine, pendingPath);
}

bool AppObject::WriteLog(const wchar_t* text, const wchar_t* secondText) {
  if (logPath.IsEmpty()) return true;
  WString message;
  message.Concat(text, secondText);
  SYSTEMTIME now;
  GetLocalTime(&now);
  return log.Write(logPath.CStr(), LogSectionName(logSection), message.CStr(), now);
}

void AppObject::SetLastBackupDir(const wchar_t* path) {
  settings.SetValue(kBackupAndRecovery, L"LastBackupDir", path);
}
