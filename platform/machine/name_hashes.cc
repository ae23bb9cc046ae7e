// name_hashes.cc
#include "machine/name_hashes.h"

#include "machine/names.h"

namespace machine {
namespace {

constexpr uint64_t kStart = 0xCBF29CE484222325, kFactor = 0x100000001B3;
uint64_t Mix(uint64_t hash, char16_t unit) { return (hash ^ unit) * kFactor; }
uint32_t Finish(uint64_t hash) {
  auto result = static_cast<uint32_t>(hash ^ hash >> 32);
  return result == 0 ? 1 : result;
}

}  // namespace

uint32_t NameHashes::HashOf(std::u16string_view name) {
  uint64_t hash = kStart;
  for (char16_t unit : name) hash = Mix(hash, FoldUnit(unit));
  return Finish(hash);
}

uint32_t NameHashes::HashOfDiskName(std::string_view diskName) {
  uint64_t hash = kStart;
  for (char byte : diskName) {
    auto unit = static_cast<unsigned char>(byte);
    // Only plain names go without the way over UTF-16; the rest is rare.
    if (unit < 0x20 || unit >= 0x7F || unit == '\\' || unit == ':' || unit == '*' || unit == '?' ||
        unit == '"' || unit == '<' || unit == '>' || unit == '|') {
      return HashOf(WindowsName(diskName));
    }
    hash = Mix(hash, FoldUnit(unit));
  }
  return Finish(hash);
}

void NameHashes::Place(uint32_t hash) {
  size_t mask = slots_.size() - 1;
  size_t i = hash & mask;
  while (slots_[i] != 0) i = (i + 1) & mask;
  slots_[i] = hash;
}

void NameHashes::Add(uint32_t hash) {
  if ((count_ + 1) * 10 > slots_.size() * 7) {
    std::vector<uint32_t> old(slots_.empty() ? 16 : slots_.size() * 2);
    old.swap(slots_);
    for (uint32_t each : old) {
      if (each != 0) Place(each);
    }
  }
  Place(hash);
  ++count_;
}

bool NameHashes::Holds(uint32_t hash) const {
  if (slots_.empty()) return false;
  size_t mask = slots_.size() - 1;
  for (size_t i = hash & mask; slots_[i] != 0; i = (i + 1) & mask) {
    if (slots_[i] == hash) return true;
  }
  return false;
}

void NameHashes::Remove(uint32_t hash) {
  if (slots_.empty()) return;
  size_t mask = slots_.size() - 1;
  size_t hole = hash & mask;
  while (slots_[hole] != hash) {
    if (slots_[hole] == 0) return;
    hole = (hole + 1) & mask;
  }
  // Those behind the hole that could stand in it move up, so that no search ends too early.
  for (size_t i = (hole + 1) & mask; slots_[i] != 0; i = (i + 1) & mask) {
    size_t home = slots_[i] & mask;
    if (((i - home) & mask) >= ((i - hole) & mask)) {
      slots_[hole] = slots_[i];
      hole = i;
    }
  }
  slots_[hole] = 0;
  --count_;
}

}  // namespace machine
