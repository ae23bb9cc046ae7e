#include "core/command_line.h"

#include <shellapi.h>
#include <shlwapi.h>

#include "foundation/unique_handle.h"

namespace {

// The text behind the last dot of the file's name; empty for a name that begins or ends with its dot.
WString ExtensionOf(const WString& path) {
  int32_t dot = path.Find(L".", true, -1);
  WString extension;
  if (dot > 1 && dot > path.LastBackslash() && dot < path.Length()) {
    extension.AssignMid(path.CStr(), dot + 1, 0);
  }
  return extension;
}

bool IsInfoFile(const WString& path) {
  WString extension = ExtensionOf(path);
  return extension.EqualsNoCase(L"grxsv") || extension.EqualsNoCase(L"nvsav");
}

}  // namespace

AppObject::StartResult ParseCommandLine(const wchar_t* commandLine, WString& pendingPath) {
  AppObject::StartResult result = {StartMode::kHome, false};
  if (UnitCount(commandLine) <= 2) return result;
  int count = 0;
  UniqueLocalMemory memory(CommandLineToArgvW(commandLine, &count));
  if (!memory) return result;
  wchar_t** arguments = static_cast<wchar_t**>(memory.Get());
  bool wantsEdit = false;
  for (int i = 0; i < count; i++) {
    WString argument(arguments[i]);
    argument.Replace(L"\"", L"");
    if (argument.EqualsNoCase(L"/EditBackup")) {
      wantsEdit = true;
    } else if (argument.EqualsNoCase(L"/PostUpdate")) {
      result.postUpdate = true;
    } else if (PathFileExistsW(argument.CStr()) && IsInfoFile(argument)) {
      pendingPath = argument;
    }
  }
  if (!pendingPath.IsEmpty()) result.mode = wantsEdit ? StartMode::kEditBackup : StartMode::kOpenBackup;
  return result;
}
