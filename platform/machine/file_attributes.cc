// file_attributes.cc
#include "machine/file_attributes.h"

#include <fcntl.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_map>

#include "machine/kernel_calls.h"

namespace machine {
namespace {

constexpr char kDosAttribute[] = "user.DOSATTRIB";
constexpr char kNtfsAttributes[] = "system.ntfs_attrib_be";  // 4 bytes, the highest first
constexpr char kNtfsTimes[] = "system.ntfs_times_be";        // 8 bytes for each; creation is the first
constexpr uint32_t kHasAttributes = 1, kHasCreation = 0x10;
constexpr int64_t kUnixEpoch = 11644473600;  // seconds from 1601 to 1970
constexpr uint32_t kShownByNtfs = kSettableAttributes | FILE_ATTRIBUTE_REPARSE_POINT |
                                  FILE_ATTRIBUTE_SPARSE_FILE | FILE_ATTRIBUTE_COMPRESSED |
                                  FILE_ATTRIBUTE_ENCRYPTED;

template <typename T>
T ReadLittle(const uint8_t* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

template <typename T>
void AppendLittle(std::vector<uint8_t>& bytes, T value) {
  auto* first = reinterpret_cast<const uint8_t*>(&value);
  bytes.insert(bytes.end(), first, first + sizeof value);
}

struct KnownDevices {
  std::mutex lock;
  std::unordered_map<uint64_t, bool> isNtfs;
};
KnownDevices& Devices() {
  static KnownDevices& devices = *new KnownDevices;
  return devices;
}

// Whether an NTFS driver stands behind a device; asked of the first file without the other attribute.
bool IsNtfs(int directory, const char* name, uint64_t device) {
  KnownDevices& devices = Devices();
  {
    std::lock_guard hold(devices.lock);
    if (auto found = devices.isNtfs.find(device); found != devices.isNtfs.end()) return found->second;
  }
  uint8_t value[4];
  bool isNtfs = GetAttribute(directory, name, kNtfsAttributes, value, sizeof value) == sizeof value;
  std::lock_guard hold(devices.lock);
  devices.isNtfs[device] = isNtfs;
  return isNtfs;
}

bool ReadFromNtfs(int directory, const char* name, FileFacts& facts) {
  uint32_t attributes = 0;
  uint64_t times[4] = {};
  if (GetAttribute(directory, name, kNtfsAttributes, &attributes, 4) != 4) return false;
  if (GetAttribute(directory, name, kNtfsTimes, times, sizeof times) < 8) return false;
  facts.attributes |= __builtin_bswap32(attributes) & kShownByNtfs;
  facts.created = __builtin_bswap64(times[0]);
  return true;
}

bool WriteToNtfs(int directory, const char* name, uint32_t attributes, uint64_t created) {
  uint32_t value = 0;
  if (GetAttribute(directory, name, kNtfsAttributes, &value, 4) != 4) return false;
  value = __builtin_bswap32(value);
  value = __builtin_bswap32((value & ~kSettableAttributes) | (attributes & kSettableAttributes));
  if (SetAttribute(directory, name, kNtfsAttributes, &value, 4) != 0) return false;
  created = __builtin_bswap64(created);
  return created == 0 || SetAttribute(directory, name, kNtfsTimes, &created, 8) == 0;
}

}  // namespace

timespec ToTimespec(uint64_t fileTime) {
  return {static_cast<time_t>(static_cast<int64_t>(fileTime / 10'000'000) - kUnixEpoch),
          static_cast<long>(fileTime % 10'000'000 * 100)};
}

uint64_t FromTimespec(int64_t seconds, uint32_t nanoseconds) {
  if (seconds < -kUnixEpoch) return 0;
  return static_cast<uint64_t>(seconds + kUnixEpoch) * 10'000'000 + nanoseconds / 100;
}

std::vector<uint8_t> MakeDosAttribute(uint32_t attributes, uint64_t created) {
  char text[16];
  int length = std::snprintf(text, sizeof text, "0x%x", attributes);
  std::vector<uint8_t> bytes(text, text + length + 1);
  if (bytes.size() % 2 != 0) bytes.push_back(0);
  AppendLittle<uint16_t>(bytes, 3);  // the version, and once more as the switch of the union
  AppendLittle<uint16_t>(bytes, 3);
  while (bytes.size() % 4 != 0) bytes.push_back(0);
  AppendLittle<uint32_t>(bytes, kHasAttributes | (created != 0 ? kHasCreation : 0));
  AppendLittle<uint32_t>(bytes, attributes);
  AppendLittle<uint32_t>(bytes, 0);  // size of the extended attributes
  AppendLittle<uint64_t>(bytes, 0);  // size, not kept
  AppendLittle<uint64_t>(bytes, 0);  // allocated size, not kept
  AppendLittle<uint64_t>(bytes, created);
  AppendLittle<uint64_t>(bytes, 0);  // change time, not kept
  return bytes;
}

bool ReadDosAttribute(const uint8_t* bytes, size_t size, uint32_t& attributes, uint64_t& created) {
  size_t text = 0;
  while (text < size && bytes[text] != 0) ++text;
  if (text == size) {
    // Older still: the text "0x20" alone.
    std::string number(reinterpret_cast<const char*>(bytes), size);
    if (!number.starts_with("0x")) return false;
    attributes = static_cast<uint32_t>(std::strtoul(number.c_str(), nullptr, 16));
    return true;
  }
  size_t at = (text + 2) & ~size_t{1};
  if (at + 4 > size) return false;
  auto version = ReadLittle<uint16_t>(bytes + at);
  at = (at + 7) & ~size_t{3};
  size_t createdAt = version == 3 ? 28 : version == 4 ? 16 : 8;
  if (version < 3 || version > 5 || at + createdAt + 8 > size) return false;
  auto valid = ReadLittle<uint32_t>(bytes + at);
  if (valid & kHasAttributes) attributes = ReadLittle<uint32_t>(bytes + at + 4);
  if (valid & kHasCreation) created = ReadLittle<uint64_t>(bytes + at + createdAt);
  return true;
}

bool ReadStatus(int directory, const char* name, FileFacts& facts) {
  struct statx status;
  if (Stat(directory, name, status) != 0) return false;
  facts.device = uint64_t{status.stx_dev_major} << 32 | status.stx_dev_minor;
  facts.inode = status.stx_ino;
  facts.mode = status.stx_mode;
  facts.links = status.stx_nlink;
  facts.size = S_ISREG(status.stx_mode) ? status.stx_size : 0;
  facts.accessed = FromTimespec(status.stx_atime.tv_sec, status.stx_atime.tv_nsec);
  facts.written = FromTimespec(status.stx_mtime.tv_sec, status.stx_mtime.tv_nsec);
  facts.changed = FromTimespec(status.stx_ctime.tv_sec, status.stx_ctime.tv_nsec);
  facts.created = status.stx_mask & STATX_BTIME
                      ? FromTimespec(status.stx_btime.tv_sec, status.stx_btime.tv_nsec)
                      : facts.written;
  facts.attributes = S_ISDIR(status.stx_mode)   ? FILE_ATTRIBUTE_DIRECTORY
                     : S_ISLNK(status.stx_mode) ? FILE_ATTRIBUTE_REPARSE_POINT
                                                : 0;
  return true;
}

bool ReadAttributes(int directory, const char* name, FileFacts& facts) {
  if (facts.IsLink()) return true;  // a link takes no extended attributes of users
  uint8_t value[256];
  ssize_t size = GetAttribute(directory, name, kDosAttribute, value, sizeof value);
  uint32_t stored = 0;
  if (size >= 0 && ReadDosAttribute(value, static_cast<size_t>(size), stored, facts.created)) {
    facts.attributes |= stored & (kSettableAttributes | FILE_ATTRIBUTE_REPARSE_POINT);
  } else if (size < 0 && errno != ENODATA && errno != EOPNOTSUPP && errno != ERANGE) {
    return false;
  } else if (IsNtfs(directory, name, facts.device)) {
    if (!ReadFromNtfs(directory, name, facts)) return false;
  } else if (!facts.IsDirectory()) {
    facts.attributes |= FILE_ATTRIBUTE_ARCHIVE;
  }
  if (facts.attributes == 0) facts.attributes = FILE_ATTRIBUTE_NORMAL;
  return true;
}

bool ReadFacts(int directory, const char* name, FileFacts& facts) {
  return ReadStatus(directory, name, facts) && ReadAttributes(directory, name, facts);
}

bool WriteAttributes(int directory, const char* name, const FileFacts& facts, uint32_t attributes,
                     uint64_t created) {
  if (facts.IsLink()) {
    errno = EOPNOTSUPP;
    return false;
  }
  attributes &= kSettableAttributes | FILE_ATTRIBUTE_REPARSE_POINT;
  if (facts.IsDirectory()) attributes |= FILE_ATTRIBUTE_DIRECTORY;
  std::vector<uint8_t> value = MakeDosAttribute(attributes, created);
  if (IsNtfs(directory, name, facts.device)) return WriteToNtfs(directory, name, attributes, created);
  return SetAttribute(directory, name, kDosAttribute, value.data(), value.size()) == 0;
}

namespace {

// From 1902 to 2446 every file system of ours keeps a time; beyond that some take the nearest one that
// they have, and say nothing.
bool IsOrdinary(uint64_t ticks) {
  return ticks == 0 || (ticks > 95'000'000'000'000'000 && ticks < 266'000'000'000'000'000);
}

bool SetTimes(int directory, const char* name, const timespec (&times)[2]) {
  if (name[0] != 0) return utimensat(directory, name, times, AT_SYMLINK_NOFOLLOW) == 0;
  if (futimens(directory, times) == 0) return true;
  return errno == EBADF && utimensat(directory, "", times, AT_EMPTY_PATH) == 0;
}

}  // namespace

bool WriteTimes(int directory, const char* name, uint64_t accessed, uint64_t written) {
  timespec times[2] = {ToTimespec(accessed), ToTimespec(written)};
  if (accessed == 0) times[0].tv_nsec = UTIME_OMIT;
  if (written == 0) times[1].tv_nsec = UTIME_OMIT;
  if (!SetTimes(directory, name, times)) return false;
  if (IsOrdinary(accessed) && IsOrdinary(written)) return true;
  FileFacts now;
  if (!ReadStatus(directory, name, now)) return false;
  errno = EOPNOTSUPP;
  return (accessed == 0 || now.accessed == accessed) && (written == 0 || now.written == written);
}

void ForgetDevices() {
  std::lock_guard hold(Devices().lock);
  Devices().isNtfs.clear();
}

}  // namespace machine
