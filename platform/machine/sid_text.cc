#include "machine/sid_text.h"

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace machine {
namespace {

constexpr size_t kHead = 8;  // revision, count, six bytes of authority
constexpr size_t kMostParts = 15;
constexpr size_t kLongestSid = kHead + 4 * kMostParts;

bool TakeNumber(std::string_view& text, uint64_t limit, uint64_t& number) {
  int base = 10;
  if (text.starts_with("0x") || text.starts_with("0X")) {
    text.remove_prefix(2);
    base = 16;
  }
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || number > limit) return false;
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  return true;
}

}  // namespace

std::string SidBytes(std::string_view text) {
  if (!text.starts_with("S-1-") && !text.starts_with("s-1-")) return {};
  text.remove_prefix(4);
  uint64_t authority = 0;
  if (!TakeNumber(text, 0xFFFFFFFFFFFF, authority)) return {};
  std::string bytes(kHead, '\0');
  bytes[0] = 1;
  for (int i = 0; i < 6; ++i) bytes[static_cast<size_t>(7 - i)] = static_cast<char>(authority >> (8 * i));
  size_t count = 0;
  while (!text.empty()) {
    if (text[0] != '-' || count == kMostParts) return {};
    text.remove_prefix(1);
    uint64_t part = 0;
    if (!TakeNumber(text, 0xFFFFFFFF, part)) return {};
    const uint32_t subAuthority = static_cast<uint32_t>(part);
    bytes.append(reinterpret_cast<const char*>(&subAuthority), 4);
    ++count;
  }
  bytes[1] = static_cast<char>(count);
  return count > 0 ? bytes : std::string();
}

size_t SidLength(const void* sid, size_t room) {
  if (!sid || room < kHead) return 0;
  const auto* bytes = static_cast<const uint8_t*>(sid);
  if (bytes[0] != 1 || bytes[1] > kMostParts) return 0;
  const size_t length = kHead + 4u * bytes[1];
  return length <= room ? length : 0;
}

std::string SidText(const void* sid) {
  return SidText(std::string_view(static_cast<const char*>(sid), kLongestSid));
}

std::string SidText(std::string_view bytes) {
  // Only the head and the parts that it counts are read.
  const size_t length = SidLength(bytes.data(), bytes.size());
  if (length == 0) return {};
  const auto* from = reinterpret_cast<const uint8_t*>(bytes.data());
  uint64_t authority = 0;
  for (int i = 2; i < 8; ++i) authority = authority << 8 | from[i];
  char number[24];
  snprintf(number, sizeof number, authority > 0xFFFFFFFF ? "0x%012llX" : "%llu",
           static_cast<unsigned long long>(authority));
  std::string text = std::string("S-1-") + number;
  for (size_t at = kHead; at < length; at += 4) {
    uint32_t part;
    memcpy(&part, from + at, 4);
    text += "-" + std::to_string(part);
  }
  return text;
}

}  // namespace machine
