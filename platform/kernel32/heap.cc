// heap.cc
//
// One heap, that of the process, and the local and global memory that lie in it, too. Not places where
// a suspension takes hold: the layer itself allocates, also under its own locks.
#include <windows.h>

#include <cstdlib>
#include <cstring>
#include <mutex>

#include "machine/call.h"

using namespace machine;

namespace {

// In front of each block, for HeapSize; as large as the alignment that Windows promises.
struct alignas(16) BlockHead {
  SIZE_T size;
};

// Held by whoever locks the heap; every other thread's calls wait then. Never destructed.
std::recursive_mutex& HeapMutex() {
  static std::recursive_mutex& mutex = *new std::recursive_mutex;
  return mutex;
}

BlockHead* HeadOf(const void* block) {
  return const_cast<BlockHead*>(static_cast<const BlockHead*>(block)) - 1;
}

void* AllocateBlock(SIZE_T size, bool isZeroed) {
  if (size > SIZE_MAX - sizeof(BlockHead)) return nullptr;
  std::lock_guard hold(HeapMutex());
  SIZE_T whole = size + sizeof(BlockHead);
  auto* head = static_cast<BlockHead*>(isZeroed ? std::calloc(1, whole) : std::malloc(whole));
  if (!head) return nullptr;
  head->size = size;
  return head + 1;
}

void* ResizeBlock(void* block, SIZE_T size, bool isZeroed) {
  if (size > SIZE_MAX - sizeof(BlockHead)) return nullptr;
  std::lock_guard hold(HeapMutex());
  SIZE_T before = HeadOf(block)->size;
  auto* head = static_cast<BlockHead*>(std::realloc(HeadOf(block), size + sizeof(BlockHead)));
  if (!head) return nullptr;
  head->size = size;
  if (isZeroed && size > before) {
    std::memset(reinterpret_cast<char*>(head + 1) + before, 0, size - before);
  }
  return head + 1;
}

void FreeBlock(void* block) {
  std::lock_guard hold(HeapMutex());
  std::free(HeadOf(block));
}

void CheckHeap(const char* call, HANDLE heap, DWORD flags) {
  if (heap != GetProcessHeap()) Unsupported(call, "another heap than that of the process");
  if (flags & ~static_cast<DWORD>(HEAP_ZERO_MEMORY | HEAP_NO_SERIALIZE)) Unsupported(call, "these flags");
}

}  // namespace

HANDLE WINAPI GetProcessHeap() { return &HeapMutex(); }
BOOL WINAPI HeapLock(HANDLE heap) {
  CheckHeap("HeapLock", heap, 0);
  HeapMutex().lock();
  return TRUE;
}
BOOL WINAPI HeapUnlock(HANDLE heap) {
  CheckHeap("HeapUnlock", heap, 0);
  HeapMutex().unlock();
  return TRUE;
}
void* WINAPI HeapAlloc(HANDLE heap, DWORD flags, SIZE_T size) {
  CheckHeap("HeapAlloc", heap, flags);
  return AllocateBlock(size, flags & HEAP_ZERO_MEMORY);
}
void* WINAPI HeapReAlloc(HANDLE heap, DWORD flags, void* block, SIZE_T size) {
  CheckHeap("HeapReAlloc", heap, flags);
  return block ? ResizeBlock(block, size, flags & HEAP_ZERO_MEMORY) : nullptr;
}
BOOL WINAPI HeapFree(HANDLE heap, DWORD flags, void* block) {
  CheckHeap("HeapFree", heap, flags);
  if (block) FreeBlock(block);
  return TRUE;
}
SIZE_T WINAPI HeapSize(HANDLE heap, DWORD flags, const void* block) {
  CheckHeap("HeapSize", heap, flags);
  return HeadOf(block)->size;
}

HLOCAL WINAPI LocalAlloc(UINT flags, SIZE_T size) {
  if (flags & ~static_cast<UINT>(LMEM_ZEROINIT)) Unsupported("LocalAlloc", "movable memory");
  void* block = AllocateBlock(size, flags & LMEM_ZEROINIT);
  if (!block) SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return block;
}
HLOCAL WINAPI LocalFree(HLOCAL block) {
  if (block) FreeBlock(block);
  return nullptr;
}
