#include "operations/backup_start.h"

#include <windows.h>

#include "foundation/system_text.h"
#include "operations/path_queries.h"

namespace {

void DescribeSaveFailure(const WString& path, DWORD error, WString& problem) {
  if (error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL) {
    problem.Concat(L"The file \"", path.CStr(),
                   L"\" could not be written, because the disk is full. Free some space, or choose another "
                   L"disk for the backup.");
    return;
  }
  const DWORD attributes = PathAttributes(path.CStr());
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY)) {
    problem.Concat(
        L"The file \"", path.CStr(),
        L"\" could not be written, because it is marked as read-only. Take the mark off, or choose "
        L"another folder for the backup.");
    return;
  }
  problem.Concat(L"The file \"", path.CStr(), L"\" could not be written (", SystemText(error).CStr(),
                 L"). Choose a folder that you may write to, and close other programs that use the file.");
}

// An owner that saves on destruction must not make the file again.
void ForgetDocument(IniDocument& document) {
  document.lines.Clear();
  document.path.Clear();
}

void RemoveInfoFile(const wchar_t* path) {
  WString name(path);
  DeleteFileW(name.AddLongPathPrefix().CStr());
}

bool FillAndSave(const BackupSelection& selection, IniDocument& document, bool isNew, WString& problem,
                 WStringArray* leftOut) {
  WriteBackupSelection(document, selection, leftOut);
  if (document.Save()) return true;
  DescribeSaveFailure(document.path, GetLastError(), problem);
  if (isNew) RemoveInfoFile(document.path.CStr());
  ForgetDocument(document);
  return false;
}

}  // namespace

bool StartBackupSet(const wchar_t* target, const BackupSelection& selection, IniDocument& document,
                    WString& problem, WStringArray* leftOut) {
  WString firstMade;
  if (!MakeBackupTarget(target, firstMade)) {
    problem.Assign(kFolderNotMadeText);
    return false;
  }
  bool isNew = false;
  if (PrepareBackupDocument(target, document, &problem, &isNew) &&
      FillAndSave(selection, document, isNew, problem, leftOut)) {
    return true;
  }
  UnmakeBackupTarget(target, firstMade);
  return false;
}
