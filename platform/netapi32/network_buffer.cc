#include "netapi32/network_buffer.h"

#include <lm.h>

#include <cstdlib>
#include <cstring>

#include "machine/call.h"
#include "machine/names.h"

namespace machine {
namespace {

// In front of each block, so that its size can be told.
struct alignas(16) Head {
  size_t size;
};

}  // namespace

void* AllocateNetworkBuffer(size_t size) {
  auto* head = static_cast<Head*>(calloc(1, sizeof(Head) + size));
  if (!head) return nullptr;
  head->size = size;
  return head + 1;
}

bool NetworkBuffer::Allocate() {
  block_ = static_cast<char*>(AllocateNetworkBuffer(used_));
  used_ = structures_;
  return block_ != nullptr;
}

void* NetworkBuffer::Bytes(std::string_view bytes, size_t alignment) {
  used_ = (used_ + alignment - 1) & ~(alignment - 1);
  void* place = nullptr;
  if (block_) {
    place = block_ + used_;
    memcpy(place, bytes.data(), bytes.size());
  }
  used_ += bytes.size();
  return place;
}

wchar_t* NetworkBuffer::Text(std::string_view utf8) {
  const std::u16string text = ToUtf16(utf8);
  const std::string_view bytes(reinterpret_cast<const char*>(text.c_str()), (text.size() + 1) * 2);
  return static_cast<wchar_t*>(Bytes(bytes, alignof(wchar_t)));
}

}  // namespace machine

using namespace machine;

NET_API_STATUS WINAPI NetApiBufferFree(void* buffer) {
  EnterCall();
  if (buffer) free(static_cast<Head*>(buffer) - 1);
  return NERR_Success;
}

NET_API_STATUS WINAPI NetApiBufferSize(void* buffer, DWORD* size) {
  EnterCall();
  if (!buffer || !size) return ERROR_INVALID_PARAMETER;
  *size = static_cast<DWORD>((static_cast<Head*>(buffer) - 1)->size);
  return NERR_Success;
}
