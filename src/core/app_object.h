// app_object.h
//
// The one application object, made before any window and there until the process ends: paths, settings,
// log, and the facts about the console user. Workers and screens are its member operations. The console
// programs use the same class; the members for windows are there and stay closed.
#pragma once
#include <windows.h>

#include <cstdint>

#include "core/application_log.h"
#include "foundation/ini_document.h"
#include "foundation/wstring.h"
#include "resources/version.h"
#include "toolkit/busy_window.h"
#include "toolkit/gui_event.h"
#include "toolkit/gui_message.h"
#include "toolkit/gui_window.h"

namespace Gdiplus {
class Image;
}
struct OperationContext;

inline constexpr wchar_t kVersionText[] = L"" NORVANE_VERSION_TEXT;
inline constexpr wchar_t kLogFileName[] = L"\\Norvane.log";
inline constexpr wchar_t kSettingsFileName[] = L"\\Norvane.ini";

// Which section of the application log is current.
enum LogSection : int32_t {
  kLogBackup = 1,
  kLogRestore = 2,
  kLogRestoreFrom = 3,
  kLogCopyMove = 4,  // any other value is Home
};

enum class StartMode { kHome = 0, kEditBackup = 1, kOpenBackup = 2 };

class AppObject {
 public:
  HINSTANCE instance;
  uint32_t buttonFill, buttonOutline, buttonHoverFill, buttonHoverOutline;  // ARGB
  int32_t helpLinkId, versionLinkId, homeButtonId, minimizeId, closeId, menuButtonId, viewLogItemId,
      resetLogItemId, currentPanelId, titleLabelId, previousPanelId;
  int32_t logSection;                // LogSection
  uint32_t frameColor, shadowColor;  // ARGB
  double windowsVersion;             // major + minor / 10
  GuiEvent event;
  GuiWindow mainWindow;
  WString helpUrl;
  WString exePath;
  WString appFolder;  // without a trailing backslash
  WString logPath;    // empty: no log is written
  WString pendingPath;
  WString computerName;
  WString consoleUserName;
  WString systemDrive;  // two characters, such as "C:"
  WString consoleUserSid;
  WString consoleUserProfile;
  HBITMAP checkedImage, uncheckedImage;  // owned; null in the console programs
  Gdiplus::Image* scaledImage;
  Gdiplus::Image** images;  // 25 entries, owned
  uint32_t imageCount;
  HICON* icons;  // 20 entries, owned
  uint32_t iconCount;
  GuiMessage messageBox;
  BusyWindow busyWindow;
  IniDocument settings;
  ApplicationLog log;  // the writer behind WriteLog

  AppObject();
  AppObject(const AppObject&) = delete;
  AppObject& operator=(const AppObject&) = delete;
  ~AppObject();

  // The steps of the start that come before the first window: paths, settings, command line.
  // `commandLine` is the arguments without the program's name. `keepSettings` is false in programs
  // that never write the settings file.
  struct StartResult {
    StartMode mode;
    bool postUpdate;
  };
  StartResult PrepareRun(HINSTANCE module, const wchar_t* commandLine, bool keepSettings);

  // Adds one entry to the application log. Callable from any thread. False if it couldn't be written
  // (an empty `logPath` counts as written).
  bool WriteLog(const wchar_t* text, const wchar_t* secondText = nullptr);

  void SetLastBackupDir(const wchar_t* path);

  // Workers; each runs on its own thread. Result: the number of phases that gave true, -1 if stopped.
  int32_t RunBackupWorker(OperationContext& context);
  int32_t RunRestoreWorker(OperationContext& context);
  int32_t RunCopyMoveWorker(OperationContext& context);
};
