#include "operations/temporary_file.h"

#include <cstring>

#include "foundation/file_queries.h"
#include "foundation/force_delete.h"

namespace {

constexpr int kNames = 3;
// No other program makes such names.
#define NORVANE_STEM L"~{5B1F0C8E-6D0A-4E57-9C43-2A7E1D9F6B34}."
constexpr wchar_t kStem[] = NORVANE_STEM;
constexpr wchar_t kAsideStem[] = NORVANE_STEM L"old.";
constexpr int32_t kAsideLength = sizeof(kAsideStem) / sizeof(wchar_t) - 1;
constexpr int32_t kMostNameUnits = 255;

constexpr int32_t kStemLength = sizeof(kStem) / sizeof(wchar_t) - 1;

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

bool BeginsWith(const wchar_t* name, const wchar_t* stem, int32_t length) {
  for (int32_t i = 0; i < length; i++) {
    if (name[i] != stem[i]) return false;
  }
  return true;
}

bool IsPlainFile(const wchar_t* path) {
  DWORD attributes = FileAttributesOf(path);
  return attributes != INVALID_FILE_ATTRIBUTES &&
         !(attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT));
}

}  // namespace

bool IsTemporaryName(const wchar_t* name) {
  return BeginsWith(name, kStem, kStemLength) && name[kStemLength] >= L'1' &&
         name[kStemLength] < L'1' + kNames && name[kStemLength + 1] == 0;
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

bool NameAside(const wchar_t* file, WString& aside) {
  const WString path(file);
  const int32_t folder = path.LastBackslash();
  if (path.Length() - folder + kAsideLength > kMostNameUnits) return false;
  aside.AssignMid(file, 1, folder);
  aside.Append(kAsideStem).Append(file + folder);
  return true;
}

const wchar_t* NameOfAside(const wchar_t* name) {
  return BeginsWith(name, kAsideStem, kAsideLength) ? name + kAsideLength : nullptr;
}

const wchar_t* LeftoverPattern() { return NORVANE_STEM L"*"; }

bool RemoveTemporary(const wchar_t* path) {
  if (DeleteFileW(path)) return true;
  const DWORD error = GetLastError();
  if (!IsPlainFile(path)) return true;  // it is gone, or somebody else's
  if (ForceDelete(path, kDeleteTakeOwnership) == kDeleted) return true;
  SetLastError(error);
  return false;
}
