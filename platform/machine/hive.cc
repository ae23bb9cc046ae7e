#include "machine/hive.h"

#include <fcntl.h>
#include <hivex.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "machine/call.h"
#include "machine/hive_check.h"
#include "machine/hive_file.h"
#include "machine/names.h"
#include "machine/settings_text.h"

namespace machine {
namespace {

constexpr size_t kLargestFile = size_t{1} << 31;
constexpr size_t kMostKeys = 1 << 20;  // below one key, and values of one key
constexpr size_t kLongestName = 255;   // units of a key's name
constexpr size_t kLongestValueName = 16383;

struct Freed {
  void operator()(void* memory) const { free(memory); }
};
template <typename T>
using FreedPointer = std::unique_ptr<T, Freed>;

struct OpenFile {
  int handle;
  ~OpenFile() {
    if (handle >= 0) close(handle);
  }
};

hive_value_h FindIn(hive_h* hive, const hive_value_h* values, std::string_view name) {
  const std::string folded = FoldUtf8(name);
  for (size_t i = 0; values[i] != 0 && i < kMostKeys; ++i) {
    FreedPointer<char> found(hivex_value_key(hive, values[i]));
    if (found && FoldUtf8(found.get()) == folded) return values[i];
  }
  return 0;
}

bool ReadData(hive_h* hive, hive_value_h from, HiveValue& value) {
  // A number, since a type may be any and an enumeration holds the known ones only.
  static_assert(sizeof(hive_type) == sizeof value.type);
  size_t length = 0;
  FreedPointer<char> data(hivex_value_value(hive, from, reinterpret_cast<hive_type*>(&value.type), &length));
  if (!data) return false;
  value.data.assign(data.get(), length);
  return true;
}

}  // namespace

DWORD Hive::Open(const std::string& file, bool isWritable, std::shared_ptr<Hive>& hive) {
  const OpenFile open{::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK)};
  if (open.handle < 0) return ErrorFromErrno(errno);
  struct stat status;
  if (fstat(open.handle, &status) != 0) return ErrorFromErrno(errno);
  if (!S_ISREG(status.st_mode)) return ERROR_ACCESS_DENIED;
  if (const DWORD error = CheckHiveFile(open.handle, static_cast<uint64_t>(status.st_size))) return error;

  // By way of the open file, so that the one that was checked is read. Opened for writing, the library
  // keeps a copy in memory; its other way maps the file, which a file cut off under way would make fatal.
  const std::string same = "/proc/self/fd/" + std::to_string(open.handle);
  hive_h* opened = hivex_open(same.c_str(), HIVEX_OPEN_WRITE);
  if (!opened) return errno == ENOMEM ? ERROR_NOT_ENOUGH_MEMORY : ERROR_BADDB;
  hive.reset(new Hive);
  hive->hive_ = opened;
  hive->root_ = hivex_root(opened);
  hive->file_ = file;
  hive->isWritable_ = isWritable;
  hive->wasClean_ = IsHiveClean(open.handle);
  hive->TakeIdentity(open.handle);
  if (hive->root_ != 0) return ERROR_SUCCESS;
  hive.reset();
  return ERROR_BADDB;
}

Hive::~Hive() {
  if (hive_) hivex_close(hive_);
}

DWORD Hive::Children(Key key, std::vector<Key>& children) {
  children.clear();
  FreedPointer<hive_node_h> nodes(hivex_node_children(hive_, key));
  if (!nodes) return ERROR_REGISTRY_CORRUPT;
  for (size_t i = 0; nodes.get()[i] != 0 && i < kMostKeys; ++i) {
    const Key child = nodes.get()[i];
    // In a damaged file a key may be listed in many places, also below itself.
    if (child != root_ && hivex_node_parent(hive_, child) == key) children.push_back(child);
  }
  return ERROR_SUCCESS;
}

DWORD Hive::Name(Key key, std::string& name) {
  FreedPointer<char> text(hivex_node_name(hive_, key));
  if (!text) return ERROR_REGISTRY_CORRUPT;
  name = text.get();
  return ERROR_SUCCESS;
}

uint64_t Hive::WriteTime(Key key) {
  const int64_t time = hivex_node_timestamp(hive_, key);
  return time > 0 ? static_cast<uint64_t>(time) : 0;
}

Hive::Key Hive::FindChild(Key key, std::string_view name) {
  std::vector<Key> children;
  if (Children(key, children) != ERROR_SUCCESS) return 0;
  const std::string folded = FoldUtf8(name);
  for (const Key child : children) {
    FreedPointer<char> found(hivex_node_name(hive_, child));
    if (found && FoldUtf8(found.get()) == folded) return child;
  }
  return 0;
}

Hive::Key Hive::Find(Key key, std::string_view path) {
  while (key != 0 && !path.empty()) {
    const size_t end = std::min(path.find('\\'), path.size());
    if (end > 0) key = FindChild(key, path.substr(0, end));
    path.remove_prefix(std::min(end + 1, path.size()));
  }
  return key;
}

DWORD Hive::Values(Key key, std::vector<HiveValue>& values) {
  values.clear();
  FreedPointer<hive_value_h> found(hivex_node_values(hive_, key));
  if (!found) return ERROR_REGISTRY_CORRUPT;
  for (size_t i = 0; found.get()[i] != 0 && i < kMostKeys; ++i) {
    HiveValue value;
    FreedPointer<char> name(hivex_value_key(hive_, found.get()[i]));
    if (!name || !ReadData(hive_, found.get()[i], value)) return ERROR_REGISTRY_CORRUPT;
    value.name = name.get();
    values.push_back(std::move(value));
  }
  return ERROR_SUCCESS;
}

DWORD Hive::ReadValue(Key key, std::string_view name, HiveValue& value) {
  FreedPointer<hive_value_h> found(hivex_node_values(hive_, key));
  if (!found) return ERROR_REGISTRY_CORRUPT;
  const hive_value_h from = FindIn(hive_, found.get(), name);
  if (from == 0) return ERROR_FILE_NOT_FOUND;
  value.name = name;
  return ReadData(hive_, from, value) ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT;
}

bool Hive::ReadText(std::string_view path, std::string_view name, std::string& text) {
  const Key key = Find(root_, path);
  HiveValue value;
  if (key == 0 || ReadValue(key, name, value) != ERROR_SUCCESS) return false;
  if (value.type != REG_SZ && value.type != REG_EXPAND_SZ) return false;
  std::u16string units(value.data.size() / 2, 0);
  value.data.copy(reinterpret_cast<char*>(units.data()), units.size() * 2);
  text = ToUtf8(std::u16string_view(units).substr(0, units.find(u'\0')));
  return true;
}

DWORD Hive::BeforeChange() {
  if (!isWritable_) return ERROR_WRITE_PROTECT;
  if (!isChecked_) {
    std::string bytes;
    isSound_ = ReadWholeFile(file_, kLargestFile, bytes, nullptr) && IsHiveSound(bytes);
    isChecked_ = true;
  }
  if (!isSound_) return ERROR_REGISTRY_CORRUPT;
  isChanged_ = true;
  ++changes_;
  return ERROR_SUCCESS;
}

DWORD Hive::AddChild(Key key, std::string_view name, Key& child) {
  if (name.empty() || ToUtf16(name).size() > kLongestName) return ERROR_INVALID_PARAMETER;
  if (const DWORD error = BeforeChange()) return error;
  child = hivex_node_add_child(hive_, key, std::string(name).c_str());
  return child != 0 ? ERROR_SUCCESS : ERROR_REGISTRY_CORRUPT;
}

DWORD Hive::Add(Key key, const HivePlan& plan) {
  if (!plan.values.empty()) {
    if (const DWORD error = BeforeChange()) return error;
    if (const DWORD error = SetValues(key, plan.values)) return error;
  }
  for (const HivePlan& below : plan.keys) {
    Key child = 0;
    if (const DWORD error = AddChild(key, below.name, child)) return error;
    if (const DWORD error = Add(child, below)) return error;
  }
  return ERROR_SUCCESS;
}

DWORD Hive::DeleteChild(Key key) {
  if (const DWORD error = BeforeChange()) return error;
  if (hivex_node_delete_child(hive_, key) != 0) return ERROR_REGISTRY_CORRUPT;
  deleted_.insert(key);
  return ERROR_SUCCESS;
}

// All values of a key at once: each call of the library writes the whole list anew.
DWORD Hive::SetValues(Key key, const std::vector<HiveValue>& values) {
  std::vector<hive_set_value> rows(values.size());
  for (size_t i = 0; i < values.size(); ++i) {
    rows[i].key = const_cast<char*>(values[i].name.c_str());
    memcpy(&rows[i].t, &values[i].type, sizeof rows[i].t);
    rows[i].len = values[i].data.size();
    rows[i].value = const_cast<char*>(values[i].data.data());
  }
  return hivex_node_set_values(hive_, key, rows.size(), rows.data(), 0) == 0 ? ERROR_SUCCESS
                                                                             : ERROR_REGISTRY_CORRUPT;
}

DWORD Hive::SetValue(Key key, const HiveValue& value) {
  if (ToUtf16(value.name).size() > kLongestValueName) return ERROR_INVALID_PARAMETER;
  std::vector<HiveValue> values;
  if (const DWORD error = Values(key, values)) return error;
  if (const DWORD error = BeforeChange()) return error;
  const std::string folded = FoldUtf8(value.name);
  for (HiveValue& old : values) {
    if (FoldUtf8(old.name) != folded) continue;
    old.type = value.type;
    old.data = value.data;
    return SetValues(key, values);
  }
  values.push_back(value);
  return SetValues(key, values);
}

DWORD Hive::DeleteValue(Key key, std::string_view name) {
  std::vector<HiveValue> values;
  if (const DWORD error = Values(key, values)) return error;
  const std::string folded = FoldUtf8(name);
  const auto found = std::find_if(values.begin(), values.end(),
                                  [&](const HiveValue& value) { return FoldUtf8(value.name) == folded; });
  if (found == values.end()) return ERROR_FILE_NOT_FOUND;
  if (const DWORD error = BeforeChange()) return error;
  values.erase(found);
  return SetValues(key, values);
}

}  // namespace machine
