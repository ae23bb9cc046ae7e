#include "machine/hive_check.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace machine {
namespace {

constexpr size_t kBlock = 4096;
constexpr size_t kBinHead = 32;
constexpr int kDeepest = 512;  // levels of keys, as Windows has it
constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr uint32_t kInline = 0x80000000;  // in a value's size: its data stand in the place of their offset
constexpr uint32_t kLargestCell = 16344;  // of a datum; a larger one may be cut into segments ("db")

class Check {
 public:
  explicit Check(std::string_view file) : file_(file), bins_(Number<uint32_t>(file, 40)) {}

  bool Run() {
    if (bins_ > file_.size() - kBlock) return false;
    cells_.assign(bins_ / 8, kNoCell);
    const uint32_t root = Number<uint32_t>(file_, 36);
    return FindCells() && VisitKey(root, kNone, 0);
  }

 private:
  enum CellState : uint8_t { kNoCell, kFree, kUsed, kVisited };

  template <typename T>
  static T Number(std::string_view bytes, size_t at) {
    T value = 0;
    if (at + sizeof value <= bytes.size()) memcpy(&value, bytes.data() + at, sizeof value);
    return value;
  }

  bool FindCells();
  // The content of a used cell of at least `least` bytes; empty if there is none. Once only for each.
  std::string_view Take(uint32_t place, size_t least);
  std::string_view Look(uint32_t place, size_t least) const;
  bool VisitKey(uint32_t place, uint32_t parent, int depth);
  bool VisitSubkeys(uint32_t list, uint32_t count, uint32_t parent, int depth);
  bool VisitList(uint32_t list, uint32_t parent, int depth, bool mayNest, uint32_t& found);
  bool VisitValues(uint32_t list, uint32_t count);
  bool VisitValue(uint32_t place);
  bool VisitSegments(std::string_view block, uint32_t size);
  bool CheckSecurity(uint32_t place) const;

  std::string_view file_;
  uint32_t bins_;
  std::vector<uint8_t> cells_;  // one for each 8 bytes
};

bool Check::FindCells() {
  for (uint32_t bin = 0; bin < bins_;) {
    const std::string_view head = file_.substr(kBlock + bin);
    const uint32_t size = Number<uint32_t>(head, 8);
    if (!head.starts_with("hbin") || Number<uint32_t>(head, 4) != bin) return false;
    if (size == 0 || size % kBlock != 0 || size > bins_ - bin) return false;
    for (uint32_t cell = kBinHead; cell < size;) {
      const int32_t length = Number<int32_t>(head, cell);
      const uint32_t taken = length < 0 ? 0u - static_cast<uint32_t>(length) : static_cast<uint32_t>(length);
      if (taken < 8 || taken % 8 != 0 || taken > size - cell) return false;
      cells_[(bin + cell) / 8] = length < 0 ? kUsed : kFree;
      cell += taken;
    }
    bin += size;
  }
  return true;
}

std::string_view Check::Look(uint32_t place, size_t least) const {
  if (place % 8 != 0 || place >= bins_ || cells_[place / 8] < kUsed) return {};
  const uint32_t size = 0u - Number<uint32_t>(file_, kBlock + place) - 4;
  return size >= least ? file_.substr(kBlock + place + 4, size) : std::string_view();
}

std::string_view Check::Take(uint32_t place, size_t least) {
  const std::string_view content = Look(place, least);
  if (content.empty() || cells_[place / 8] == kVisited) return {};
  cells_[place / 8] = kVisited;
  return content;
}

bool Check::CheckSecurity(uint32_t place) const {
  const std::string_view security = Look(place, 20);
  if (!security.starts_with("sk") || Number<uint32_t>(security, 12) == 0) return false;
  return Look(Number<uint32_t>(security, 4), 20).starts_with("sk") &&
         Look(Number<uint32_t>(security, 8), 20).starts_with("sk");
}

bool Check::VisitKey(uint32_t place, uint32_t parent, int depth) {
  const std::string_view key = Take(place, 0x4C);
  if (!key.starts_with("nk") || depth > kDeepest) return false;
  if (parent != kNone && Number<uint32_t>(key, 0x10) != parent) return false;
  if (0x4C + size_t{Number<uint16_t>(key, 0x48)} > key.size()) return false;
  if (!CheckSecurity(Number<uint32_t>(key, 0x2C))) return false;
  const uint32_t className = Number<uint32_t>(key, 0x30);
  if (className != kNone && Take(className, Number<uint16_t>(key, 0x4A)).empty()) return false;
  return VisitValues(Number<uint32_t>(key, 0x28), Number<uint32_t>(key, 0x24)) &&
         VisitSubkeys(Number<uint32_t>(key, 0x1C), Number<uint32_t>(key, 0x14), place, depth);
}

bool Check::VisitSubkeys(uint32_t list, uint32_t count, uint32_t parent, int depth) {
  if (count == 0) return true;
  uint32_t found = 0;
  return VisitList(list, parent, depth, true, found) && found == count;
}

bool Check::VisitList(uint32_t list, uint32_t parent, int depth, bool mayNest, uint32_t& found) {
  const std::string_view content = Take(list, 4);
  const std::string_view kind = content.substr(0, 2);
  const bool isHashed = kind == "lf" || kind == "lh", isNest = kind == "ri";
  if (!isHashed && kind != "li" && !(isNest && mayNest)) return false;
  const size_t width = isHashed ? 8 : 4, count = Number<uint16_t>(content, 2);
  if (4 + count * width > content.size()) return false;
  for (size_t i = 0; i < count; ++i) {
    const uint32_t place = Number<uint32_t>(content, 4 + i * width);
    const bool isSound =
        isNest ? VisitList(place, parent, depth, false, found) : VisitKey(place, parent, depth + 1);
    if (!isSound) return false;
    if (!isNest) ++found;
  }
  return true;
}

bool Check::VisitValues(uint32_t list, uint32_t count) {
  if (count == 0) return true;
  const std::string_view content = Take(list, size_t{count} * 4);
  if (content.empty()) return false;
  for (uint32_t i = 0; i < count; ++i) {
    if (!VisitValue(Number<uint32_t>(content, size_t{i} * 4))) return false;
  }
  return true;
}

bool Check::VisitValue(uint32_t place) {
  const std::string_view value = Take(place, 0x14);
  if (!value.starts_with("vk") || 0x14 + size_t{Number<uint16_t>(value, 2)} > value.size()) return false;
  const uint32_t size = Number<uint32_t>(value, 4);
  if (size & kInline) return (size & ~kInline) <= 4;
  const std::string_view data = Take(Number<uint32_t>(value, 8), 1);
  if (size > kLargestCell && data.starts_with("db") && data.size() < size) return VisitSegments(data, size);
  return !data.empty() && data.size() >= size;  // an empty datum that isn't in place has a cell, too
}

bool Check::VisitSegments(std::string_view block, uint32_t size) {
  const size_t count = Number<uint16_t>(block, 2);
  const std::string_view list = Take(Number<uint32_t>(block, 4), count * 4);
  if (block.size() < 8 || list.empty()) return false;
  size_t total = 0;
  for (size_t i = 0; i < count; ++i) {
    const std::string_view segment = Take(Number<uint32_t>(list, i * 4), 1);
    if (segment.empty()) return false;
    total += segment.size();
  }
  return total >= size;
}

}  // namespace

bool IsHiveSound(std::string_view file) { return file.size() > kBlock && Check(file).Run(); }

}  // namespace machine
