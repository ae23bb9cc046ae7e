// network_buffer.h
//
// The memory in which the account calls hand back their structures: one block with the structures first
// and their texts behind them, freed as a whole with NetApiBufferFree.
#pragma once
#include <windows.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace machine {

// Memory that NetApiBufferFree takes; zeroed. Null if there is none.
void* AllocateNetworkBuffer(size_t size);

// Fills such a block twice: once without memory, to count, and once for real.
class NetworkBuffer {
 public:
  explicit NetworkBuffer(size_t structures) : used_(structures) {}
  // Begins the second pass. False if there is no memory.
  bool Allocate();
  void* Block() const { return block_; }
  bool IsCounting() const { return block_ == nullptr; }

  wchar_t* Text(std::string_view utf8);  // with its terminator
  void* Bytes(std::string_view bytes, size_t alignment);

 private:
  char* block_ = nullptr;
  size_t used_;
  size_t structures_ = used_;
};

}  // namespace machine
