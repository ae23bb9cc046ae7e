// handles.cc
#include "machine/handles.h"

#include <mutex>
#include <shared_mutex>
#include <vector>

namespace machine {
namespace {

// Slots are used again in the order of their release, so that a handle that was closed doesn't soon
// name something else.
struct HandleTable {
  std::shared_mutex lock;
  std::vector<std::shared_ptr<Object>> slots;
  std::vector<size_t> free;
  size_t firstFree = 0;
};

// Never destructed: threads may still call while the process ends.
HandleTable& Table() {
  static HandleTable& table = *new HandleTable;
  return table;
}

constexpr size_t kFirstHandle = 0x40;

size_t SlotOf(HANDLE handle) {
  auto value = reinterpret_cast<size_t>(handle);
  return value >= kFirstHandle && value % 4 == 0 ? (value - kFirstHandle) / 4 : SIZE_MAX;
}

}  // namespace

HANDLE AddHandle(std::shared_ptr<Object> object) {
  HandleTable& table = Table();
  std::unique_lock hold(table.lock);
  size_t slot = table.slots.size();
  if (table.firstFree < table.free.size()) {
    slot = table.free[table.firstFree++];
    if (table.firstFree > 64 && table.firstFree * 2 > table.free.size()) {
      table.free.erase(table.free.begin(), table.free.begin() + static_cast<ptrdiff_t>(table.firstFree));
      table.firstFree = 0;
    }
    table.slots[slot] = std::move(object);
  } else {
    table.slots.push_back(std::move(object));
  }
  return reinterpret_cast<HANDLE>(kFirstHandle + slot * 4);
}

std::shared_ptr<Object> FindHandle(HANDLE handle) {
  HandleTable& table = Table();
  size_t slot = SlotOf(handle);
  std::shared_lock hold(table.lock);
  return slot < table.slots.size() ? table.slots[slot] : nullptr;
}

bool RemoveHandle(HANDLE handle) {
  HandleTable& table = Table();
  std::shared_ptr<Object> object;  // released outside the lock: its end may close files
  {
    std::unique_lock hold(table.lock);
    size_t slot = SlotOf(handle);
    if (slot < table.slots.size()) object = std::move(table.slots[slot]);
    if (object) table.free.push_back(slot);
  }
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object != nullptr;
}

}  // namespace machine
