// name_hashes.h
//
// The folded names of a directory as 32-bit hashes: 4 to 8 bytes for each name. The same hash may be in
// it several times, once for each name.
#pragma once
#include <cstdint>
#include <string_view>
#include <vector>

namespace machine {

class NameHashes {
 public:
  static uint32_t HashOf(std::u16string_view name);  // folds; never 0
  static uint32_t HashOfDiskName(std::string_view diskName);

  void Add(uint32_t hash);
  void Remove(uint32_t hash);  // one of them, if there is one
  bool Holds(uint32_t hash) const;
  size_t Count() const { return count_; }

 private:
  void Place(uint32_t hash);
  std::vector<uint32_t> slots_;  // a power of two of them, 0 is free; at most 7 of 10 are taken
  size_t count_ = 0;
};

}  // namespace machine
