#include "foundation/wstring_array.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

// Every row up to `capacity` is a constructed string, so that a caller may fill items[count] before it
// counts it. A string can be moved bit by bit: nothing points back at it.

namespace {

void MoveRows(WString* to, WString* from, uint32_t rows) {
  memmove(static_cast<void*>(to), static_cast<void*>(from), static_cast<size_t>(rows) * sizeof(WString));
}

}  // namespace

WStringArray::WStringArray() : count(0), capacity(0), items(nullptr), changes(0) {}

WStringArray::~WStringArray() { Clear(); }

void WStringArray::Resize(uint32_t newCount, uint32_t capacityHint) {
  ++changes;
  const uint32_t room = newCount > capacityHint ? newCount : capacityHint;
  if (room > capacity) {
    const uint64_t bytes = static_cast<uint64_t>(room) * sizeof(WString);
    void* moved =
        bytes > SIZE_MAX / 2 ? nullptr : realloc(static_cast<void*>(items), static_cast<size_t>(bytes));
    if (moved == nullptr) EndOutOfMemory();
    items = static_cast<WString*>(moved);
    for (uint32_t row = capacity; row < room; ++row) new (items + row) WString();
    capacity = room;
  }
  for (uint32_t row = newCount; row < count; ++row) items[row].Clear();
  count = newCount;
}

void WStringArray::Add(const wchar_t* text) {
  ++changes;
  WString row(text);
  if (count == capacity) Resize(count, capacity == 0 ? 1 : capacity * 2);
  items[count++] = std::move(row);
}

void WStringArray::Insert(uint32_t row, const wchar_t* text) {
  if (row > count) row = count;
  Add(text);
  if (row + 1 == count) return;
  alignas(WString) unsigned char added[sizeof(WString)];
  memcpy(added, static_cast<void*>(items + count - 1), sizeof(WString));
  MoveRows(items + row + 1, items + row, count - 1 - row);
  memcpy(static_cast<void*>(items + row), added, sizeof(WString));
}

void WStringArray::Remove(uint32_t row, uint32_t rows) {
  if (row >= count) return;
  ++changes;
  if (rows > count - row) rows = count - row;
  for (uint32_t gone = row; gone < row + rows; ++gone) items[gone].Clear();
  MoveRows(items + row, items + row + rows, count - row - rows);
  for (uint32_t free = count - rows; free < count; ++free) new (items + free) WString();
  count -= rows;
}

void WStringArray::Clear() {
  ++changes;
  for (uint32_t row = 0; row < capacity; ++row) items[row].~WString();
  free(static_cast<void*>(items));
  items = nullptr;
  count = 0;
  capacity = 0;
}
