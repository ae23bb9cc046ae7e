// kernel_calls.h
//
// Calls of the kernel that name a file by an open directory and a name in it, and never follow a link.
// An empty name means what the descriptor itself stands for. All give -1 with errno on failure.
#pragma once
#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace machine {

// The largest extended attribute that the kernel keeps.
constexpr size_t kLongestAttribute = 65536;

ssize_t GetAttribute(int directory, const char* name, const char* attribute, void* value, size_t size);
int SetAttribute(int directory, const char* name, const char* attribute, const void* value, size_t size);

// Opens a path of several names below `directory`; any link on the way is refused (ELOOP), also at its
// end.
int OpenBelow(int directory, const char* path, int flags);

// All of statx's basic fields and the birth time.
int Stat(int directory, const char* name, struct statx& result);

// The text of a link, of any length.
bool ReadLink(int directory, const char* name, std::string& text);

// Renames within or between directories; fails with EEXIST where the new name is taken.
int RenameNew(int fromDirectory, const char* from, int toDirectory, const char* to);

// The read buffer of a directory: entries as the kernel gives them.
class DirectoryReader {
 public:
  // Opens its own position in the directory `name` of `directory`.
  bool Open(int directory, const char* name);
  ~DirectoryReader();
  DirectoryReader() = default;
  DirectoryReader(const DirectoryReader&) = delete;
  DirectoryReader& operator=(const DirectoryReader&) = delete;

  int Get() const { return descriptor_; }

  // The next name but "." and "..", valid until the next call; null at the end, and also at an error,
  // which `Error()` tells (0: none).
  const char* Next();
  int Error() const { return error_; }

 private:
  int descriptor_ = -1;
  int error_ = 0;
  char* buffer_ = nullptr;
  size_t position_ = 0;
  size_t filled_ = 0;
};

}  // namespace machine
