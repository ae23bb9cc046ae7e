#include "operations/backup_start.h"

#include <windows.h>

namespace {

void DescribeSaveFailure(const WString& path, DWORD error, WString& problem) {
  bool full = error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL;
  const wchar_t* reason =
      full ? L"\" could not be written, because the disk is full. Free some space, or choose "
             L"another disk for the backup."
           : L"\" could not be written. Choose a folder that you may write to, and close "
             L"other programs that use the file.";
  problem.Concat(L"The file \"", path.CStr(), reason);
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
