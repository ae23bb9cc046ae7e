#include "operations/restore_start.h"

#include <windows.h>

#include "operations/path_queries.h"
#include "operations/real_path.h"

namespace {

constexpr int32_t kUnitsThatNameADrive = 7;  // "\\?\C:\" and shorter

}  // namespace

bool IsSystemRoot(const wchar_t* root, const wchar_t* systemDrive) {
  const WString real = ResolveForComparison(root), own = ResolveForComparison(systemDrive);
  return IsSameOrInside(real, own) && IsSameOrInside(own, real);
}

WString SystemRootText(const wchar_t* root) {
  WString text;
  text.Concat(L"Error: You can not restore from ", root,
              L". The source and destination locations are the same.\r\n\r\n",
              L"Please select a valid source such as D: or C:Windows.old.");
  return text;
}

bool IsOnSystemDrive(const wchar_t* root, const wchar_t* systemDrive) {
  return WString(root).Find(systemDrive, false, 1, 1, kUnitsThatNameADrive) != 0;
}

WString OfferedTarget(const wchar_t* root, const wchar_t* folder, const wchar_t* systemDrive) {
  WString rest(folder);
  rest.RemoveLeft(UnitCount(root));
  WString target;
  target.Concat(systemDrive, rest.CStr());
  return target;
}

bool OpenRootDocument(const wchar_t* root, IniDocument& document) {
  const WString path = ChooseCustomRootInfoFile(root);
  const DWORD attributes = PathAttributes(path.CStr());
  // What a link leads to is no part of the root.
  const bool isLink =
      attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  const InfoFileState state = isLink ? InfoFileState::kUnreadable : CheckInfoFile(path.CStr());
  document.lines.Clear();
  if (state == InfoFileState::kReadable) {
    document.Load(path.CStr(), false);  // false for an empty file, which will do
    return true;
  }
  document.path = path;
  return state == InfoFileState::kMissing;
}

bool StartRestore(const RestoreRoot& root, const RestoreSelection& selection, IniDocument& document,
                  bool isKept, WStringArray* leftOut) {
  WriteRestoreSelection(document, root, selection, leftOut);
  return !isKept || document.Save();
}
