#include "operations/walk_path.h"

#include <cstring>

#include "foundation/wstring.h"

namespace {

constexpr wchar_t kLongPrefix[] = L"\\\\?\\";
constexpr wchar_t kServerPrefix[] = L"\\\\?\\UNC\\";

bool BeginsWith(const WString& path, const wchar_t* prefix) {
  return path.Find(prefix, false, 1, 1, UnitCount(prefix)) == 1;
}

// A drive's path gets the prefix as everywhere. A server's path gets its own form here, since a walk
// goes deeper than the calls reach without one.
void AddPrefix(WString& path) {
  path.AddLongPathPrefix();
  if (!BeginsWith(path, L"\\\\") || BeginsWith(path, kLongPrefix) || BeginsWith(path, L"\\\\.\\")) return;
  path.RemoveLeft(2);
  path.Prepend(kServerPrefix);
}

}  // namespace

WalkPath::WalkPath(const wchar_t* root) : units_(AllocateUnits(kMostUnits)), length_(0) {
  units_[0] = 0;
  WString path(root);
  path.StripTrailingBackslashes();
  AddPrefix(path);
  // "\\?\D:" alone would be the volume, not its root folder.
  if (path.Length() == 6 && path.buffer[5] == L':') path.Append(L"\\");
  if (path.Length() >= kMostUnits) return;
  length_ = path.Length();
  memcpy(units_, path.CStr(), (static_cast<size_t>(length_) + 1) * sizeof(wchar_t));
}

WalkPath::~WalkPath() { FreeUnits(units_); }

bool WalkPath::Push(const wchar_t* name) {
  bool needsBackslash = length_ == 0 || units_[length_ - 1] != L'\\';
  int32_t count = UnitCount(name);
  int32_t start = length_ + (needsBackslash ? 1 : 0);
  if (count >= kMostUnits - start) return false;
  if (needsBackslash) units_[length_] = L'\\';
  memcpy(units_ + start, name, (static_cast<size_t>(count) + 1) * sizeof(wchar_t));
  length_ = start + count;
  return true;
}

void WalkPath::Cut(int32_t length) {
  length_ = length;
  units_[length] = 0;
}

void WalkPath::AssignFolder(const WalkPath& other, int32_t length) {
  memcpy(units_, other.units_, static_cast<size_t>(length) * sizeof(wchar_t));
  Cut(length);
}

WString PathForPeople(const wchar_t* path) {
  WString shown(path);
  if (BeginsWith(shown, kServerPrefix)) {
    shown.RemoveLeft(UnitCount(kServerPrefix));
    shown.Prepend(L"\\\\");
  } else if (BeginsWith(shown, kLongPrefix)) {
    shown.RemoveLeft(UnitCount(kLongPrefix));
  }
  return shown;
}
