// hive.h
//
// One hive: keys and values of a real hive file, read and changed in memory through libhivex.
//
// Not safe for two threads at once; the registry calls hold one lock for all hives. A damaged file
// gives errors (ERROR_REGISTRY_CORRUPT) and missing keys, but never a walk without an end: a key shows
// only below the key that it names as its parent.
#pragma once
#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

struct hive_h;

namespace machine {

struct HiveValue {
  std::string name;  // empty: the default value
  uint32_t type = 0;
  std::string data;
};

// A key with all that is below it, for hives that are made in one go.
struct HivePlan {
  std::string name;
  std::vector<HiveValue> values;
  std::vector<HivePlan> keys;

  HivePlan& Key(std::string_view path);  // made with its parents if it isn't there
  void Text(std::string_view value, std::string_view text, uint32_t type = REG_SZ);
  void Number(std::string_view value, uint32_t number);
  void Binary(std::string_view value, std::string_view data, uint32_t type = REG_BINARY);
};

class Hive {
 public:
  using Key = size_t;  // 0: none

  // From a Linux path, which is read whole and let go. One that isn't `isWritable` refuses changes with
  // ERROR_WRITE_PROTECT, and a damaged one with ERROR_REGISTRY_CORRUPT. Gives ERROR_FILE_NOT_FOUND,
  // ERROR_ACCESS_DENIED (also for a folder), ERROR_NOT_REGISTRY_FILE, ERROR_BADDB.
  static DWORD Open(const std::string& file, bool isWritable, std::shared_ptr<Hive>& hive);
  // Writes a new hive with all keys of `plan`, whose own name doesn't count, by a rename.
  static DWORD Make(const std::string& file, const HivePlan& plan);
  ~Hive();
  Hive(const Hive&) = delete;
  Hive& operator=(const Hive&) = delete;

  Key Root() const { return root_; }
  DWORD Children(Key key, std::vector<Key>& children);
  DWORD Name(Key key, std::string& name);
  uint64_t WriteTime(Key key);                    // FILETIME
  Key FindChild(Key key, std::string_view name);  // without regard to case
  Key Find(Key key, std::string_view path);       // components apart by backslashes
  DWORD Values(Key key, std::vector<HiveValue>& values);
  // ERROR_FILE_NOT_FOUND if there is no such value.
  DWORD ReadValue(Key key, std::string_view name, HiveValue& value);
  bool ReadText(std::string_view path, std::string_view name, std::string& text);  // from the root

  DWORD AddChild(Key key, std::string_view name, Key& child);
  DWORD Add(Key key, const HivePlan& plan);  // its values and keys
  DWORD DeleteChild(Key key);                // which must have no children
  DWORD SetValue(Key key, const HiveValue& value);
  DWORD DeleteValue(Key key, std::string_view name);
  bool IsDeleted(Key key) const { return deleted_.contains(key); }
  uint64_t Changes() const { return changes_; }  // grows with each change

  // Writes what was changed, by a temporary file and a rename that keep the file's extended attributes.
  // Refused with ERROR_SHARING_VIOLATION where somebody else replaced the file in the meantime.
  DWORD Flush();
  bool IsFile(uint64_t device, uint64_t number) const { return device == device_ && number == number_; }
  const std::string& File() const { return file_; }
  bool IsChanged() const { return isChanged_; }
  bool WasClean() const { return wasClean_; }

  std::atomic<int> openKeys{0};  // handles on keys of it

 private:
  Hive() = default;
  DWORD SetValues(Key key, const std::vector<HiveValue>& values);
  DWORD BeforeChange();
  void TakeIdentity(int file);

  hive_h* hive_ = nullptr;
  Key root_ = 0;
  std::string file_;
  bool isWritable_ = false;
  bool wasClean_ = true;
  bool isChanged_ = false;
  bool isChecked_ = false, isSound_ = false;  // whether the file was looked through, and was whole
  uint64_t changes_ = 0;
  std::set<Key> deleted_;  // libhivex never uses a place twice, so a number stays that of its key
  uint64_t device_ = 0, number_ = 0, size_ = 0, changeTime_ = 0;
};

}  // namespace machine
