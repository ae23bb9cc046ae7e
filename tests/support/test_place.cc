#include "support/test_place.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "foundation/unique_handle.h"
#include "support/place_root.h"

namespace {

const wchar_t kPrefix[] = L"\\\\?\\";

WString Long(const WString& path) { return path.Find(kPrefix) == 1 ? path : WString(kPrefix) + path; }

WString Backslashes(const std::string& relative) {
  WString path = Wide(relative);
  path.Replace(L"/", L"\\");
  return path;
}

// A failure that the test's own set-up meets, with its cause.
void FailSetup(const char* call, const WString& path) {
  const DWORD error = GetLastError();
  ADD_FAILURE() << call << " failed with " << error << " on " << Utf8(path);
}

void MakeFolders(const WString& path) {
  const DWORD attributes = GetFileAttributesW(Long(path).CStr());
  if (attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY) return;
  WString parent = path;
  parent.ParentPath();
  if (parent.Length() > 2) MakeFolders(parent);
  if (!CreateDirectoryW(Long(path).CStr(), nullptr)) FailSetup("CreateDirectoryW", path);
}

void AddTree(const WString& folder, const std::string& before, std::vector<std::string>& found) {
  WIN32_FIND_DATAW data;
  UniqueFind search(FindFirstFileW(Long(folder + L"\\*").CStr(), &data));
  if (!search) {
    if (GetLastError() != ERROR_FILE_NOT_FOUND) FailSetup("FindFirstFileW", folder);
    return;
  }
  do {
    const WString name(data.cFileName);
    if (name == L"." || name == L"..") continue;
    found.push_back(before + Utf8(name));
    const bool isLink = data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT;
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY && !isLink) {
      AddTree(folder + L"\\" + name, before + Utf8(name) + "/", found);
    }
  } while (FindNextFileW(search.Get(), &data));
}

}  // namespace

TestPlace::TestPlace() {
  static uint32_t last_number = 0;
  WString number;
  number.FromUInt32(++last_number);
  path_ = PlaceRoot() + L"\\" + number;
  MakeFolders(path_);
}

TestPlace::~TestPlace() { RemovePlace(path_); }

WString TestPlace::operator/(const std::string& relative) const {
  return relative.empty() ? path_ : path_ + L"\\" + Backslashes(relative);
}

WString TestPlace::Folder(const std::string& relative) {
  WString path = *this / relative;
  MakeFolders(path);
  return path;
}

WString TestPlace::File(const std::string& relative, const std::string& bytes) {
  WString path = *this / relative;
  WString parent = path;
  MakeFolders(parent.ParentPath());
  WriteBytes(path.CStr(), bytes);
  return path;
}

WString TestPlace::Link(const std::string& relative, const std::string& target) {
  WString path = *this / relative;
  WString parent = path;
  MakeFolders(parent.ParentPath());
  MakeDirectoryLink(path, *this / target);
  return path;
}

std::string TestPlace::Read(const std::string& relative) const {
  return ReadBytes((*this / relative).CStr());
}

bool TestPlace::Exists(const std::string& relative) const {
  return Attributes((*this / relative).CStr()) != INVALID_FILE_ATTRIBUTES;
}

std::vector<std::string> ListTree(const WString& folder) {
  std::vector<std::string> found;
  AddTree(folder, "", found);
  std::sort(found.begin(), found.end());
  return found;
}

std::string TestPlace::Shown(std::string text) const {
  const std::string folder = Utf8(path_);
  for (size_t at = text.find(folder); at != std::string::npos; at = text.find(folder)) {
    text.replace(at, folder.size(), "~");
  }
  return text;
}

std::vector<std::string> TestPlace::Files(const std::string& relative) const {
  std::vector<std::string> files = List(relative);
  std::erase_if(files, [&](const std::string& path) {
    return (Attributes((*this / (relative + "/" + path)).CStr()) & FILE_ATTRIBUTE_DIRECTORY) != 0;
  });
  return files;
}

void WriteBytes(const wchar_t* path, const std::string& bytes) {
  UniqueFile file(CreateFileW(Long(path).CStr(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return FailSetup("CreateFileW", path);
  DWORD written = 0;
  const DWORD size = static_cast<DWORD>(bytes.size());
  if (!WriteFile(file.Get(), bytes.data(), size, &written, nullptr) || written != size) {
    FailSetup("WriteFile", path);
  }
}

std::string ReadBytes(const wchar_t* path) {
  UniqueFile file(CreateFileW(Long(path).CStr(), GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) {
    FailSetup("CreateFileW", path);
    return {};
  }
  std::string bytes;
  std::vector<char> block(65536);
  DWORD got = 0;
  while (ReadFile(file.Get(), block.data(), static_cast<DWORD>(block.size()), &got, nullptr) && got != 0) {
    bytes.append(block.data(), got);
  }
  return bytes;
}

void SetAttributes(const wchar_t* path, uint32_t attributes) {
  if (!SetFileAttributesW(Long(path).CStr(), attributes)) FailSetup("SetFileAttributesW", path);
}

uint32_t Attributes(const wchar_t* path) { return GetFileAttributesW(Long(path).CStr()); }
