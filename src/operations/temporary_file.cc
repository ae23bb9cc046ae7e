#include "operations/temporary_file.h"

#include <cstring>

#include "foundation/force_delete.h"

namespace {

constexpr int kNames = 3;
constexpr wchar_t kStem[] = L"~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}.";

constexpr size_t kStemLength = sizeof(kStem) / sizeof(wchar_t) - 1;

// Makes `path`, of which `length` units are the folder, the temporary name of `index` in it. False if that
// is too long.
bool UseName(WalkPath& path, int32_t length, int index) {
  wchar_t name[kStemLength + 2];
  memcpy(name, kStem, sizeof(kStem));
  name[kStemLength] = static_cast<wchar_t>(L'1' + index);
  name[kStemLength + 1] = 0;
  path.Cut(length);
  return path.Push(name);
}

bool IsPlainFile(const wchar_t* path) {
  DWORD attributes = GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES &&
         !(attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT));
}

}  // namespace

bool IsTemporaryName(const wchar_t* name) {
  for (size_t i = 0; i < kStemLength; i++) {
    if (name[i] != kStem[i]) return false;
  }
  return name[kStemLength] >= L'1' && name[kStemLength] < L'1' + kNames && name[kStemLength + 1] == 0;
}

TemporaryName::TemporaryName(WalkPath& path)
    : path_(path),
      folderLength_(path.Length()),
      index_(0),
      removedLeftover_(false),
      isValid_(UseName(path, folderLength_, 0)) {}

bool TemporaryName::IsWorthRetry(DWORD error) {
  // A file that is being deleted by somebody refuses access until it is gone.
  bool isTaken = error == ERROR_FILE_EXISTS || error == ERROR_ALREADY_EXISTS || error == ERROR_ACCESS_DENIED;
  if (!isValid_ || !isTaken) return false;
  if (!removedLeftover_ && error != ERROR_ACCESS_DENIED && IsPlainFile(path_.CStr()) &&
      ForceDelete(path_.CStr(), 0) == kDeleted) {
    removedLeftover_ = true;
    return true;
  }
  removedLeftover_ = false;
  SetLastError(error);
  if (++index_ >= kNames) return false;
  return UseName(path_, folderLength_, index_);
}

bool NameOtherTemporary(const wchar_t* temporary, int index, WString& name) {
  name.Assign(temporary);
  const int32_t last = name.Length() - 1;
  const int own = name.buffer[last] - L'1';
  const int other = index < own ? index : index + 1;
  if (other >= kNames) return false;
  name.buffer[last] = static_cast<wchar_t>(L'1' + other);
  if (IsPlainFile(name.CStr())) ForceDelete(name.CStr(), 0);
  return true;
}

void RemoveLeftovers(WalkPath& folder) {
  const int32_t length = folder.Length();
  for (int index = 0; index < kNames; index++) {
    if (UseName(folder, length, index) && IsPlainFile(folder.CStr())) ForceDelete(folder.CStr(), 0);
  }
}

void RemoveTemporary(const wchar_t* path) {
  if (!DeleteFileW(path) && IsPlainFile(path)) ForceDelete(path, kDeleteTakeOwnership);
}
