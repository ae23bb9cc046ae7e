#include "machine/hive_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "machine/call.h"

namespace machine {
namespace {

constexpr size_t kBlock = 4096;
constexpr uint32_t kRootCell = 32;             // behind the header of the first bin
constexpr size_t kNameLengthAt = 0x4C;         // in a key cell, behind its size
constexpr uint64_t kLargestHive = 512u << 20;  // it is read whole, and may be a stranger's
constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr char kRootName[] = "ROOT";

// Administrators own it; full rights for the system and administrators, read for everyone, inherited
// by the keys below.
constexpr uint8_t kDescriptor[] = {
    1,    0, 0x04, 0x80, 0x64, 0, 0,    0, 0x74, 0, 0, 0, 0,    0, 0, 0, 0x14, 0, 0, 0,  // header
    2,    0, 0x50, 0,    3,    0, 0,    0,                                               // list
    0,    2, 0x14, 0,    0x3F, 0, 0x0F, 0, 1,    1, 0, 0, 0,    0, 0, 5, 18,   0, 0, 0,  // SYSTEM
    0,    2, 0x18, 0,    0x3F, 0, 0x0F, 0, 1,    2, 0, 0, 0,    0, 0, 5, 32,   0, 0, 0,
    0x20, 2, 0,    0,                                                                    // Administrators
    0,    2, 0x14, 0,    0x19, 0, 0x02, 0, 1,    1, 0, 0, 0,    0, 0, 1, 0,    0, 0, 0,  // Everyone
    0,    0, 0,    0,    0,    0, 0,    0,                                               // room
    1,    2, 0,    0,    0,    0, 0,    5, 32,   0, 0, 0, 0x20, 2, 0, 0,                 // owner
    1,    1, 0,    0,    0,    0, 0,    5, 18,   0, 0, 0,                                // group
};
static_assert(sizeof kDescriptor == 0x80);

template <typename T>
void Put(std::string& bytes, size_t at, T value) {
  memcpy(bytes.data() + at, &value, sizeof value);
}
template <typename T>
T Get(const char* bytes, size_t at) {
  T value;
  memcpy(&value, bytes + at, sizeof value);
  return value;
}

uint32_t Checksum(const char* base) {
  uint32_t sum = 0;
  for (size_t at = 0; at < 508; at += 4) sum ^= Get<uint32_t>(base, at);
  if (sum == 0) return 1;
  return sum == kNone ? kNone - 1 : sum;
}

size_t Aligned(size_t size) { return (size + 7) & ~static_cast<size_t>(7); }

// All of `size` bytes at `at`, or false with errno; a shorter file gives errno 0.
bool ReadAt(int file, char* bytes, size_t size, off_t at) {
  for (size_t done = 0; done < size;) {
    const ssize_t count = pread(file, bytes + done, size - done, at + static_cast<off_t>(done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      if (count == 0) errno = 0;
      return false;
    }
    done += static_cast<size_t>(count);
  }
  return true;
}

}  // namespace

std::string EmptyHive() {
  std::string bytes(2 * kBlock, '\0');
  memcpy(bytes.data(), "regf", 4);
  Put<uint32_t>(bytes, 4, 1);  // both sequence numbers agree: the hive is closed
  Put<uint32_t>(bytes, 8, 1);
  Put<uint32_t>(bytes, 20, 1);  // version 1.5
  Put<uint32_t>(bytes, 24, 5);
  Put<uint32_t>(bytes, 32, 1);
  Put<uint32_t>(bytes, 36, kRootCell);
  Put<uint32_t>(bytes, 40, kBlock);
  Put<uint32_t>(bytes, 44, 1);
  Put<uint32_t>(bytes, 508, Checksum(bytes.data()));

  const size_t bin = kBlock;
  memcpy(bytes.data() + bin, "hbin", 4);
  Put<uint32_t>(bytes, bin + 8, kBlock);

  const size_t nameLength = sizeof kRootName - 1;
  const size_t keySize = Aligned(kNameLengthAt + 4 + nameLength);
  const uint32_t securityCell = kRootCell + static_cast<uint32_t>(keySize);
  const size_t key = bin + kRootCell;
  Put<int32_t>(bytes, key, -static_cast<int32_t>(keySize));
  memcpy(bytes.data() + key + 4, "nk", 2);
  Put<uint16_t>(bytes, key + 6, 0x2C);    // root of a hive, not to be deleted, name in Latin-1
  Put<uint32_t>(bytes, key + 20, kNone);  // parent
  Put<uint32_t>(bytes, key + 32, kNone);  // lists of subkeys, kept and volatile
  Put<uint32_t>(bytes, key + 36, kNone);
  Put<uint32_t>(bytes, key + 44, kNone);  // list of values
  Put<uint32_t>(bytes, key + 48, securityCell);
  Put<uint32_t>(bytes, key + 52, kNone);  // class name
  Put<uint16_t>(bytes, key + kNameLengthAt, static_cast<uint16_t>(nameLength));
  memcpy(bytes.data() + key + kNameLengthAt + 4, kRootName, nameLength);

  const size_t security = bin + securityCell;
  const size_t securitySize = Aligned(4 + 20 + sizeof kDescriptor);
  Put<int32_t>(bytes, security, -static_cast<int32_t>(securitySize));
  memcpy(bytes.data() + security + 4, "sk", 2);
  Put<uint32_t>(bytes, security + 8, securityCell);  // a ring of one
  Put<uint32_t>(bytes, security + 12, securityCell);
  Put<uint32_t>(bytes, security + 16, 1);  // one key uses it
  Put<uint32_t>(bytes, security + 20, sizeof kDescriptor);
  memcpy(bytes.data() + security + 24, kDescriptor, sizeof kDescriptor);

  const size_t used = kRootCell + keySize + securitySize;
  Put<int32_t>(bytes, bin + used, static_cast<int32_t>(kBlock - used));
  return bytes;
}

DWORD CheckHiveFile(int file, uint64_t size) {
  char base[kBlock];
  if (size < 2 * kBlock) return ERROR_NOT_REGISTRY_FILE;
  if (size > kLargestHive) return ERROR_BADDB;
  if (!ReadAt(file, base, sizeof base, 0)) return errno ? ErrorFromErrno(errno) : ERROR_BADDB;
  if (memcmp(base, "regf", 4) != 0) return ERROR_NOT_REGISTRY_FILE;
  const uint32_t bins = Get<uint32_t>(base, 40), root = Get<uint32_t>(base, 36);
  const bool isWhole = Get<uint32_t>(base, 508) == Checksum(base) && Get<uint32_t>(base, 20) == 1 &&
                       bins >= kBlock && bins % kBlock == 0 && bins <= size - kBlock && root < bins &&
                       root >= kRootCell && root % 8 == 0;
  return isWhole ? ERROR_SUCCESS : ERROR_BADDB;
}

bool IsHiveClean(int file) {
  char base[kBlock];
  return ReadAt(file, base, sizeof base, 0) && Get<uint32_t>(base, 4) == Get<uint32_t>(base, 8);
}

}  // namespace machine
