#include "operations/backup_selection.h"

#include "foundation/file_object.h"
#include "foundation/system_text.h"
#include "operations/document_keys.h"
#include "operations/path_queries.h"
#include "users/account_facts.h"

namespace {

// Level, bar, display name. False if the database doesn't know the account.
bool DescribeUser(const wchar_t* name, WString& value) {
  AccountFacts facts;
  if (!GetAccountFacts(name, facts)) return false;
  value.FromUInt32(facts.privilege);
  value.Append(L"|").Append(facts.fullName.IsEmpty() ? name : facts.fullName.CStr());
  // A line end would begin a line of its own in the file.
  value.Replace(L"\r", L" ");
  value.Replace(L"\n", L" ");
  return true;
}

void LeaveOut(const WString& row, bool ticked, WStringArray* leftOut) {
  if (ticked && leftOut) leftOut->Add(row.CStr());
}

void WriteUsers(IniDocument& document, const BackupSelection& selection, WStringArray* leftOut) {
  document.RemoveSections(kBackupUsersSection);
  for (uint32_t row = 0; row < selection.users.count; row++) {
    const WString& name = selection.users[row];
    bool ticked = selection.IsUserTicked(row);
    WString value;
    if (!CanBeKey(name.CStr()) || !DescribeUser(name.CStr(), value)) {
      LeaveOut(name, ticked, leftOut);
      continue;
    }
    document.SetValue(kUsersSection, name.CStr(), value.CStr());
    if (ticked) document.SetValue(kBackupUsersSection, name.CStr(), L"1");
  }
}

void WriteExtraFolders(IniDocument& document, const BackupSelection& selection, WStringArray* leftOut) {
  document.RemoveSections(kNewExtraFoldersSection);
  for (uint32_t row = 0; row < selection.extraFolders.count; row++) {
    const WString& path = selection.extraFolders[row];
    bool ticked = selection.IsExtraTicked(row);
    if (path.Length() <= kDriveRootLength) continue;  // the root of a drive doesn't count
    if (!CanBeKey(path.CStr())) {
      LeaveOut(path, ticked, leftOut);
      continue;
    }
    document.SetValue(kExtraFoldersSection, path.CStr(), ticked ? L"1" : L"0");
    if (!ticked) continue;
    WString name;
    if (Md5Name(path.CStr(), name)) {
      document.SetValue(kNewExtraFoldersSection, path.CStr(), name.CStr());
    } else {
      LeaveOut(path, ticked, leftOut);
    }
  }
}

bool MakeInfoFile(const wchar_t* path, WString* problem) {
  FileObject file;
  if (file.Open(path, kFileCreateAlways | kFileUtf16LE)) return true;
  const DWORD error = GetLastError();
  // On a full disk the file is made, and its mark is what didn't fit.
  WString name(path);
  DeleteFileW(name.AddLongPathPrefix().CStr());
  if (problem) {
    problem->Concat(L"The file \"", path, L"\" could not be created (", SystemText(error).CStr(),
                    L"). Choose a folder with free space that you may write to.");
  }
  return false;
}

}  // namespace

bool PrepareBackupDocument(const wchar_t* target, IniDocument& document, WString* problem, bool* fileMade) {
  WString path = ChooseInfoFile(target);
  InfoFileState state = CheckInfoFile(path.CStr());
  bool isNew = state == InfoFileState::kMissing;
  if (fileMade) *fileMade = isNew;
  if (isNew) {
    if (!MakeInfoFile(path.CStr(), problem)) return false;
  } else if (state != InfoFileState::kReadable) {
    if (problem) *problem = InfoFileSentence(state, path.CStr());
    return false;
  }
  // An empty file gives false and an empty document of this path, which is what is wanted.
  document.Load(path.CStr(), true);
  return true;
}

void WriteBackupSelection(IniDocument& document, const BackupSelection& selection, WStringArray* leftOut) {
  SetNumber(document, kUserFoldersKey, selection.folderMask & kMaskAll);
  SetNumber(document, kBackupOptionsKey, selection.updateOnly ? 1 : 0);
  SetNumber(document, kSkipAttributesKey, selection.skipAttributes & (kSkipHiddenFiles | kSkipSystemFiles));
  WriteUsers(document, selection, leftOut);
  WriteExtraFolders(document, selection, leftOut);
}

void ReadBackupSelection(IniDocument& document, BackupSelection& selection) {
  selection.userTicked.assign(selection.users.count, false);
  for (uint32_t row = 0; row < selection.users.count; row++) {
    selection.userTicked[row] = document.GetNumber(kBackupUsersSection, selection.users[row].CStr()) != 0;
  }
  selection.folderMask = document.GetNumber(kSettingsSection, kUserFoldersKey) & kMaskAll;
  selection.extraFolders.Clear();
  selection.extraTicked.clear();
  VisitKeys(document, kExtraFoldersSection, [&selection](const WString& path, WString& ticked) {
    selection.extraFolders.Add(path.CStr());
    selection.extraTicked.push_back(ticked.ToUInt32() != 0);
  });
  selection.updateOnly = (document.GetNumber(kSettingsSection, kBackupOptionsKey) & 1) != 0;
  selection.skipAttributes =
      document.GetNumber(kSettingsSection, kSkipAttributesKey) & (kSkipHiddenFiles | kSkipSystemFiles);
}
