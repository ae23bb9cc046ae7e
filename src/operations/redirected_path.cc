#include "operations/redirected_path.h"

#include <windows.h>

#include "operations/path_queries.h"
#include "operations/real_path.h"

WString RedirectionSentence(const wchar_t* path) {
  wchar_t windows[MAX_PATH] = {};
  WString sentence;
  if (GetSystemWindowsDirectoryW(windows, MAX_PATH) == 0) return sentence;
  const WString system = PathBelow(WString(windows), L"System32"), folder(path);
  // What goes to or comes from the root of a drive isn't meant for Windows.
  if (folder.Length() <= kDriveRootLength) return sentence;
  const bool isBelow = IsSameOrInside(folder, system);
  if (!isBelow && !IsSameOrInside(system, folder)) return sentence;
  // Some folders of it are shown as they are, and so is all of it to a 64-bit program.
  const WString& asked = isBelow ? folder : system;
  const WString shown = ResolveRealPath(asked.CStr());
  if (IsSameOrInside(shown, system)) return sentence;
  WString native = PathBelow(WString(windows), L"Sysnative");
  native.Append(asked.CStr() + system.Length());
  sentence.Concat(L"The folder \"", path, isBelow ? L"\" is" : L"\" holds System32, which is",
                  L" another one to this 32-bit program: \"", shown.CStr(), L"\". Indicate \"", native.CStr(),
                  isBelow ? L"\" instead." : L"\" for it, and the other folders one by one.");
  return sentence;
}
