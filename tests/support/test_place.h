// test_place.h
//
// Where a test puts its files: a real folder of the system that the test runs on. On Linux that is a
// machine folder which the test program makes for itself.
#pragma once
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "foundation/wstring.h"

// UTF-8 in and out, so that tests can be read.
WString Wide(const std::string& utf8);
std::string Utf8(const wchar_t* text);
inline std::string Utf8(const WString& text) { return Utf8(text.CStr()); }
void PrintTo(const WString& text, std::ostream* out);

std::vector<std::string> ListTree(const WString& folder);  // whole, sorted, "a/b"; links aren't followed

// An empty folder of this test alone, deleted with all it holds at the end.
class TestPlace {
 public:
  TestPlace();
  ~TestPlace();
  TestPlace(const TestPlace&) = delete;
  TestPlace& operator=(const TestPlace&) = delete;

  const WString& Path() const { return path_; }          // without a trailing backslash
  WString operator/(const std::string& relative) const;  // "a/b" becomes <path>\a\b

  // Files and folders of the place, all through the program's own long path prefix.
  WString Folder(const std::string& relative);  // made with its parents
  WString File(const std::string& relative, const std::string& bytes = "x");
  WString Link(const std::string& relative, const std::string& target);  // directory symbolic link
  std::string Read(const std::string& relative) const;  // the bytes; fails the test if missing
  bool Exists(const std::string& relative) const;
  std::vector<std::string> List(const std::string& relative = "") const { return ListTree(*this / relative); }
  std::vector<std::string> Files(const std::string& relative) const;  // the same without folders
  std::string Shown(std::string text) const;                          // with "~" for the place

 private:
  WString path_;
};

void WriteBytes(const wchar_t* path, const std::string& bytes);
std::string ReadBytes(const wchar_t* path);
void SetAttributes(const wchar_t* path, uint32_t attributes);
uint32_t Attributes(const wchar_t* path);  // INVALID_FILE_ATTRIBUTES if missing
