// Saving, so that the file is the old or the new one at every moment.
#include "foundation/file_object.h"
#include "foundation/ini_document.h"

namespace {

// Told apart from names that a person would give: whatever bears them is a leftover of ours.
constexpr const wchar_t* kSaveSuffixes[] = {L".norvane-save", L".norvane-save2", L".norvane-save3"};

constexpr DWORD kHiding = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;  // a hidden file stays hidden

void RemoveLeftover(const wchar_t* name) {
  const DWORD attributes = GetFileAttributesW(name);
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return;
  DeleteFileW(name);
}

// A new file beside `path`, open in `file`; its name goes to `name`. A leftover is replaced; one that
// resists belongs to a program that is saving at this moment, so the next name is taken.
bool CreateBeside(const wchar_t* path, FileObject& file, WString& name) {
  for (const wchar_t* suffix : kSaveSuffixes) {
    WString candidate;
    candidate.Concat(path, suffix);
    name = PathForCalls(candidate.CStr());
    RemoveLeftover(name.CStr());
    // CREATE_NEW, and never through a link that somebody has put there.
    const HANDLE created =
        CreateFileW(name.CStr(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_WRITE_THROUGH | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (created != INVALID_HANDLE_VALUE && created != nullptr) {
      file.Close();
      file.handle = created;
      file.flags = kFileUtf16LE;
      return true;
    }
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS && error != ERROR_SHARING_VIOLATION &&
        error != ERROR_ACCESS_DENIED) {
      return false;
    }
  }
  return false;
}

}  // namespace

bool IniDocument::Save() {
  if (path.IsEmpty()) {
    SetLastError(ERROR_INVALID_NAME);
    return false;
  }
  const WString target = PathForCalls(path.CStr());
  const DWORD attributes = GetFileAttributesW(target.CStr());
  const bool exists = attributes != INVALID_FILE_ATTRIBUTES;
  if (exists && (attributes & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_DIRECTORY)) != 0) {
    SetLastError(ERROR_ACCESS_DENIED);  // marked by somebody as not to be changed
    return false;
  }
  FileObject file;
  WString temporary;
  if (!MakeFolderOfFile(path.CStr()) || !CreateBeside(path.CStr(), file, temporary)) return false;

  BuildText();
  const bool isEmpty = scratch.IsEmpty();
  static constexpr wchar_t kMark[] = {0xfeff, 0};
  bool done = file.WriteText(kMark) && (isEmpty || file.WriteText(scratch.CStr()));
  scratch.Clear();  // may be as large as the document
  file.Close();

  if (done && exists && (attributes & kHiding) != 0) {
    SetFileAttributesW(temporary.CStr(), attributes & (kHiding | FILE_ATTRIBUTE_ARCHIVE));
  }
  done = done &&
         MoveFileExW(temporary.CStr(), target.CStr(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
  if (!done) {
    const DWORD error = GetLastError();
    DeleteFileW(temporary.CStr());
    SetLastError(error);
    return false;
  }
  if (isEmpty) SetLastError(NO_ERROR);
  return !isEmpty;
}
