#include "operations/extra_folders.h"

#include <windows.h>

#include "operations/path_queries.h"
#include "operations/redirected_path.h"

ExtraFolderProblem CheckExtraFolder(const wchar_t* folder, const WStringArray& rows) {
  WString path(folder);
  path.StripTrailingBackslashes();
  if (path.IsEmpty()) return ExtraFolderProblem::kMissing;
  if (path.Length() <= kDriveRootLength) return ExtraFolderProblem::kDriveRoot;
  if (path.Find(L"=")) return ExtraFolderProblem::kEqualsSign;
  DWORD attributes = PathAttributes(path.CStr());
  if (attributes == INVALID_FILE_ATTRIBUTES) return ExtraFolderProblem::kMissing;
  if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) return ExtraFolderProblem::kFile;
  if (!RedirectionSentence(path.CStr()).IsEmpty()) return ExtraFolderProblem::kRedirected;
  std::vector<uint32_t> superseded;
  bool covered = CoversFolder(rows, path.CStr(), superseded);
  return covered ? ExtraFolderProblem::kCovered : ExtraFolderProblem::kNone;
}

WString ExtraFolderSentence(ExtraFolderProblem problem, const wchar_t* folder) {
  const wchar_t* reason = nullptr;
  switch (problem) {
    case ExtraFolderProblem::kNone:
      return WString();
    case ExtraFolderProblem::kMissing:
      reason = L"\" does not exist. Check the path.";
      break;
    case ExtraFolderProblem::kFile:
      reason = L"\" is a file. Indicate the folder that holds it.";
      break;
    case ExtraFolderProblem::kDriveRoot:
      reason = L"\" is the root of a drive, which can not be selected. Please select a sub folder.";
      break;
    case ExtraFolderProblem::kEqualsSign:
      reason =
          L"\" has a \"=\" in its path, which a backup's info file can not hold. Rename the folder, or "
          L"select one above it.";
      break;
    case ExtraFolderProblem::kRedirected:
      return RedirectionSentence(folder);
    case ExtraFolderProblem::kCovered:
      reason = L"\" is already marked for backup, by itself or with a folder that holds it. Leave it out.";
      break;
  }
  WString sentence;
  sentence.Concat(L"The folder \"", folder, reason);
  return sentence;
}

bool CoversFolder(const WStringArray& rows, const wchar_t* folder, std::vector<uint32_t>& superseded) {
  superseded.clear();
  for (uint32_t row = rows.count; row-- > 0;) {
    const WString& path = rows[row];
    if (IsSameOrInside(folder, path)) return true;
    if (IsSameOrInside(path, folder)) superseded.push_back(row);
  }
  return false;
}

bool IsFolderCovered(const wchar_t* folder, WStringArray& rows, std::vector<bool>* ticked) {
  std::vector<uint32_t> superseded;
  if (CoversFolder(rows, folder, superseded)) return true;
  for (uint32_t row : superseded) {
    rows.Remove(row);
    if (ticked && row < ticked->size()) ticked->erase(ticked->begin() + row);
  }
  return false;
}
