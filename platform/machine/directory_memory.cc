// directory_memory.cc
#include "machine/directory_memory.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <list>
#include <mutex>

#include "machine/kernel_calls.h"
#include "machine/name_hashes.h"
#include "machine/names.h"

namespace machine {
namespace {

constexpr size_t kMostDirectories = 32;
constexpr size_t kMostNames = size_t{1} << 21;  // of all of them together: 16 MiB at most
constexpr int64_t kMoment = 2'000'000;          // ns
constexpr int64_t kWhile = 1'000'000'000;

int64_t Nanoseconds(const timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; }
int64_t ClockNow(clockid_t clock) {
  timespec now;
  clock_gettime(clock, &now);
  return Nanoseconds(now);
}

struct Remembered {
  DirectoryId id;
  NameHashes names;
  int64_t changeTime = 0;          // as the kernel told it last
  int64_t ownFrom = 0, ownTo = 0;  // a change of ours since then lies between these; 0: none
  bool isOurs = false;             // we changed it since it was read
  int64_t lookedAt = 0;            // by the clock that never jumps
  int64_t readAt = 0, readFor = 0;
};

struct Memory {
  std::mutex lock;
  std::list<Remembered> directories;  // the one used last is the first
  size_t names = 0;

  // Moves it to the front. Null if it isn't remembered.
  Remembered* Find(const DirectoryId& id) {
    for (auto i = directories.begin(); i != directories.end(); ++i) {
      if (!(i->id == id)) continue;
      if (i != directories.begin()) directories.splice(directories.begin(), directories, i);
      return &directories.front();
    }
    return nullptr;
  }

  void Drop(const DirectoryId& id) {
    directories.remove_if([&](const Remembered& one) {
      if (!(one.id == id)) return false;
      names -= one.names.Count();
      return true;
    });
  }

  void Keep(Remembered one) {
    Drop(one.id);
    if (one.names.Count() > kMostNames) return;
    names += one.names.Count();
    directories.push_front(std::move(one));
    while (names > kMostNames || directories.size() > kMostDirectories) {
      names -= directories.back().names.Count();
      directories.pop_back();
    }
  }
};

// Never destructed: threads may still call while the process ends.
Memory& TheMemory() {
  static Memory& memory = *new Memory;
  return memory;
}

std::atomic<uint64_t> readings{0};

int64_t ChangeTime(const struct statx& status) {
  return status.stx_ctime.tv_sec * 1'000'000'000LL + status.stx_ctime.tv_nsec;
}
DirectoryId IdOf(const struct statx& status) {
  return {uint64_t{status.stx_dev_major} << 32 | status.stx_dev_minor, status.stx_ino};
}

bool StillHolds(Remembered& one, int64_t changeTime) {
  bool isOwnChange = one.ownTo != 0 && changeTime >= one.ownFrom && changeTime <= one.ownTo;
  if (!isOwnChange && (one.ownTo != 0 || changeTime != one.changeTime)) return false;
  int64_t now = ClockNow(CLOCK_MONOTONIC);
  if (one.isOurs && now - one.readAt > std::max(kWhile, one.readFor * 50)) return false;
  one.changeTime = changeTime;
  one.ownFrom = one.ownTo = 0;
  one.lookedAt = now;
  return true;
}

// Reads the directory. What it holds is remembered if it didn't change meanwhile.
bool ReadNames(int directory, const struct statx& status, std::u16string_view name, std::string& diskName) {
  ++readings;
  int64_t start = ClockNow(CLOCK_MONOTONIC);
  DirectoryReader reader;
  if (!reader.Open(directory, ".")) return false;
  Remembered one;
  one.id = IdOf(status);
  one.changeTime = ChangeTime(status);
  uint32_t wanted = NameHashes::HashOf(name);
  bool isFound = false;
  while (const char* entry = reader.Next()) {
    uint32_t hash = NameHashes::HashOfDiskName(entry);
    one.names.Add(hash);
    // Of several spellings the first in the order of bytes, so that it is always the same one.
    if (hash == wanted && SameName(WindowsName(entry), name) && (!isFound || diskName > entry)) {
      diskName = entry;
      isFound = true;
    }
  }
  if (reader.Error() != 0) {
    errno = reader.Error();
    return false;
  }
  struct statx after;
  if (Stat(directory, "", after) == 0 && ChangeTime(after) == one.changeTime) {
    one.lookedAt = one.readAt = ClockNow(CLOCK_MONOTONIC);
    one.readFor = one.readAt - start;
    std::lock_guard hold(TheMemory().lock);
    TheMemory().Keep(std::move(one));
  }
  if (!isFound) errno = ENOENT;
  return isFound;
}

}  // namespace

bool IdOf(int directory, DirectoryId& id) {
  struct statx status;
  if (Stat(directory, "", status) != 0) return false;
  id = IdOf(status);
  return true;
}

bool IsKnownAbsent(const DirectoryId& id, std::u16string_view name) {
  std::lock_guard hold(TheMemory().lock);
  Remembered* one = TheMemory().Find(id);
  return one && ClockNow(CLOCK_MONOTONIC) - one->lookedAt < kMoment &&
         !one->names.Holds(NameHashes::HashOf(name));
}

bool FindVariant(int directory, const DirectoryId* id, std::u16string_view name, std::string& diskName) {
  if (id && IsKnownAbsent(*id, name)) {
    errno = ENOENT;
    return false;
  }
  uint32_t hash = NameHashes::HashOf(name);
  Memory& memory = TheMemory();
  struct statx status;
  if (Stat(directory, "", status) != 0) return false;
  {
    std::lock_guard hold(memory.lock);
    Remembered* one = memory.Find(IdOf(status));
    if (one && StillHolds(*one, ChangeTime(status)) && !one->names.Holds(hash)) {
      errno = ENOENT;
      return false;
    }
  }
  return ReadNames(directory, status, name, diskName);
}

// The kernel stamps with its coarse clock or, newer ones, with the fine one: neither is before the
// coarse clock's reading in front of the call, nor behind the fine one's after it.
OwnChange::OwnChange() { clock_gettime(CLOCK_REALTIME_COARSE, &before_); }

void OwnChange::Note(const DirectoryId& id, std::u16string_view added, std::u16string_view removed) const {
  int64_t after = ClockNow(CLOCK_REALTIME);
  Memory& memory = TheMemory();
  std::lock_guard hold(memory.lock);
  Remembered* one = memory.Find(id);
  if (!one) return;
  memory.names -= one->names.Count();
  if (!removed.empty()) one->names.Remove(NameHashes::HashOf(removed));
  if (!added.empty()) one->names.Add(NameHashes::HashOf(added));
  memory.names += one->names.Count();
  one->ownFrom = Nanoseconds(before_);
  one->ownTo = after;
  one->isOurs = true;
}

void OwnChange::Settle(int directory, const DirectoryId& id) {
  struct statx status;
  if (Stat(directory, "", status) != 0) return;
  std::lock_guard hold(TheMemory().lock);
  Remembered* one = TheMemory().Find(id);
  if (one && !StillHolds(*one, ChangeTime(status))) TheMemory().Drop(id);
}

void OwnChange::Renamed(const DirectoryId& from, std::u16string_view oldName, const DirectoryId& to,
                        std::u16string_view newName) const {
  if (from == to) {
    Note(from, newName, oldName);
  } else {
    Note(from, {}, oldName);
    Note(to, newName, {});
  }
}

void ForgetDirectories() {
  std::lock_guard hold(TheMemory().lock);
  TheMemory().directories.clear();
  TheMemory().names = 0;
}

uint64_t DirectoryReadings() { return readings; }

}  // namespace machine
