// MD5 as RFC 1321 has it.
#include <bit>
#include <cmath>
#include <cstdint>

#include "support/set_reader.h"

namespace set_reader {
namespace {

struct State {
  uint32_t a = 0x67452301, b = 0xefcdab89, c = 0x98badcfe, d = 0x10325476;
};

uint32_t Word(const std::string& bytes, size_t at) {
  uint32_t word = 0;
  for (int i = 3; i >= 0; i--) word = word << 8 | static_cast<uint8_t>(bytes[at + static_cast<size_t>(i)]);
  return word;
}

void AddBlock(State& state, const std::string& bytes, size_t at) {
  constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
  State s = state;
  for (uint32_t i = 0; i < 64; i++) {
    uint32_t mix, word;
    switch (i / 16) {
      case 0:
        mix = (s.b & s.c) | (~s.b & s.d), word = i;
        break;
      case 1:
        mix = (s.d & s.b) | (~s.d & s.c), word = (5 * i + 1) % 16;
        break;
      case 2:
        mix = s.b ^ s.c ^ s.d, word = (3 * i + 5) % 16;
        break;
      default:
        mix = s.c ^ (s.b | ~s.d), word = 7 * i % 16;
        break;
    }
    const auto constant = static_cast<uint32_t>(std::fabs(std::sin(i + 1.0)) * 4294967296.0);
    const uint32_t sum = s.a + mix + constant + Word(bytes, at + 4 * word);
    s = {s.d, s.b + std::rotl(sum, kShifts[i / 16][i % 4]), s.b, s.c};
  }
  state = {state.a + s.a, state.b + s.b, state.c + s.c, state.d + s.d};
}

}  // namespace

std::string Md5(const std::string& bytes) {
  std::string padded = bytes + '\x80';
  while (padded.size() % 64 != 56) padded += '\0';
  for (int i = 0; i < 8; i++) padded += static_cast<char>(static_cast<uint64_t>(bytes.size()) * 8 >> (8 * i));
  State state;
  for (size_t at = 0; at < padded.size(); at += 64) AddBlock(state, padded, at);
  std::string digits;
  for (uint32_t word : {state.a, state.b, state.c, state.d}) {
    for (int i = 0; i < 4; i++, word >>= 8) {
      digits += "0123456789ABCDEF"[word >> 4 & 15];
      digits += "0123456789ABCDEF"[word & 15];
    }
  }
  return digits;
}

}  // namespace set_reader
