// pinned_directories.cc
#include "machine/pinned_directories.h"

#include <shared_mutex>
#include <unordered_map>

#include "machine/security_store.h"

namespace machine {
namespace {

struct PinTable {
  std::shared_mutex lock;
  std::unordered_multimap<std::u16string_view, PinnedDirectory*> pins;  // by their folded path
};

// Never destructed: threads may still call while the process ends.
PinTable& Table() {
  static PinTable& table = *new PinTable;
  return table;
}

}  // namespace

std::shared_ptr<PinnedDirectory> PinDirectory(std::shared_ptr<Descriptor> descriptor,
                                              std::u16string_view folded, DirectoryId id, bool passedLink) {
  auto pin = std::make_shared<PinnedDirectory>();
  pin->descriptor = std::move(descriptor);
  pin->folded = folded;
  pin->id = id;
  pin->passedLink = passedLink;
  std::unique_lock hold(Table().lock);
  Table().pins.emplace(pin->folded, pin.get());
  return pin;
}

PinnedDirectory::~PinnedDirectory() {
  std::unique_lock hold(Table().lock);
  auto [first, last] = Table().pins.equal_range(folded);
  for (auto i = first; i != last; ++i) {
    if (i->second == this) {
      Table().pins.erase(i);
      return;
    }
  }
}

std::vector<uint8_t> PinnedDirectory::Security() {
  {
    std::lock_guard hold(lock_);
    if (security_) return *security_;
  }
  std::vector<uint8_t> read;
  ReadSecurity(descriptor->Get(), "", read);
  std::lock_guard hold(lock_);
  security_ = read;
  return read;
}

void PinnedDirectory::ForgetSecurity() {
  std::lock_guard hold(lock_);
  security_.reset();
}

std::shared_ptr<PinnedDirectory> LongestPin(const WindowsPath& path, size_t most, size_t& components) {
  PinTable& table = Table();
  std::shared_lock hold(table.lock);
  if (table.pins.empty()) return nullptr;
  for (size_t count = most; count > 0; --count) {
    auto [first, last] = table.pins.equal_range(path.Folded(count));
    for (auto i = first; i != last; ++i) {
      // One that is being released at this moment has no owner any more.
      auto pin = i->second->weak_from_this().lock();
      if (!pin) continue;
      components = count;
      return pin;
    }
  }
  return nullptr;
}

void DropPinsThroughLinks() {
  std::unique_lock hold(Table().lock);
  std::erase_if(Table().pins, [](const auto& one) { return one.second->passedLink; });
}

void ForgetPinnedSecurity(const DirectoryId& id) {
  std::shared_lock hold(Table().lock);
  for (auto& [folded, pin] : Table().pins) {
    if (pin->id == id) pin->ForgetSecurity();
  }
}

}  // namespace machine
