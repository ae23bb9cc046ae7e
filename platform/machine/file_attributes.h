// file_attributes.h
//
// What Windows tells of a file: attributes, times, size, identity. Attributes and the creation time lie
// in the extended attribute user.DOSATTRIB, in the layout that Samba documents (versions 3 to 5 are read,
// 3 is written), or, on a disk that an NTFS driver mounts, in that disk's own fields. A file without the
// attribute shows FILE_ATTRIBUTE_ARCHIVE, as every new file does, and its birth time.
#pragma once
#include <windows.h>

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <vector>

namespace machine {

// Attributes that a caller may set.
constexpr uint32_t kSettableAttributes =
    FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
    FILE_ATTRIBUTE_TEMPORARY | FILE_ATTRIBUTE_OFFLINE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;

struct FileFacts {
  uint64_t device = 0, inode = 0, size = 0;
  uint32_t mode = 0, links = 0;
  uint32_t attributes = 0;  // as Windows shows them; a link's FILE_ATTRIBUTE_DIRECTORY is set by
                            // DescribeLink (reparse_points.h)
  uint64_t created = 0, accessed = 0, written = 0, changed = 0;  // as in a FILETIME

  bool IsDirectory() const { return S_ISDIR(mode); }  // a real one
  bool IsLink() const { return S_ISLNK(mode); }
  bool IsPlain() const { return S_ISREG(mode); }
};

// Names as in kernel_calls.h: an empty one means the descriptor itself. Both give false with errno.
bool ReadStatus(int directory, const char* name, FileFacts& facts);      // one call; all but attributes
bool ReadAttributes(int directory, const char* name, FileFacts& facts);  // behind ReadStatus: one more
bool ReadFacts(int directory, const char* name, FileFacts& facts);       // both

// Sets the stored attributes (of which only those matter that a caller may set, and
// FILE_ATTRIBUTE_REPARSE_POINT) and the creation time; a time of 0 leaves none stored. False with errno,
// EOPNOTSUPP where the file system has no place for them.
bool WriteAttributes(int directory, const char* name, const FileFacts& facts, uint32_t attributes,
                     uint64_t created);

// Sets access and write time, 0 for one that stays. False with errno.
bool WriteTimes(int directory, const char* name, uint64_t accessed, uint64_t written);

timespec ToTimespec(uint64_t fileTime);
uint64_t FromTimespec(int64_t seconds, uint32_t nanoseconds);
inline FILETIME ToFileTime(uint64_t ticks) {
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}
inline uint64_t FromFileTime(FILETIME time) {
  return uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
}

void ForgetDevices();  // which of them are NTFS; a number may come back after another mount

// The attribute's bytes, for tests and norvane-machine.
std::vector<uint8_t> MakeDosAttribute(uint32_t attributes, uint64_t created);
bool ReadDosAttribute(const uint8_t* bytes, size_t size, uint32_t& attributes, uint64_t& created);

}  // namespace machine
