// random_people.h
//
// Accounts with random folders and files for the test of the whole way, as plain data. Nothing here knows the
// program.
#pragma once
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "support/account_place.h"

namespace random_people {

// Kinds of an account's files.
struct Kind {
  const char* value;  // of Shell Folders; empty: folders of the profile that have none
  const char* inProfile;
  uint32_t bit;  // of the folder mask
  bool isData;   // application data, which is copied by another road
};
inline constexpr size_t kKindCount = 9;
extern const Kind kKinds[kKindCount];

struct File {
  std::string bytes;
  uint32_t attributes = 0;
  int64_t written = 0, created = 0;  // created: 0 where it doesn't count
  bool isFolder = false;

  bool operator==(const File& other) const {
    if (isFolder || other.isFolder) return isFolder == other.isFolder;
    const bool isAge = !created || !other.created || created == other.created;
    return bytes == other.bytes && attributes == other.attributes && written == other.written && isAge;
  }
};
using Files = std::map<std::string, File>;  // by path with slashes, folders in front of what they hold

void PrintTo(const File& file, std::ostream* out);

struct Person {
  std::string name, fullName;
  std::map<std::string, std::string> places;  // value of Shell Folders -> folder of the machine's place
  std::string badPlace;                       // the value that leads into the Windows folder; mostly empty
  Files files[kKindCount];                    // by relative path, of each kind
};

class Chances {
 public:
  explicit Chances(uint32_t seed) : random_(seed) {}

  uint32_t Pick(uint32_t choices) { return static_cast<uint32_t>(random_() % choices); }
  bool OneIn(uint32_t count) { return Pick(count) == 0; }
  File AnyFile();
  Files Tree(const Kind& kind);
  std::vector<Person> People();

 private:
  std::mt19937 random_;
};

// Whether neither backup nor restore takes this of application data.
bool IsWorthless(const Kind& kind, const std::string& path);

// Where a kind of files lies, below the machine's place.
std::string FolderOf(const Person& person, const Kind& kind);

// The account's hive, with its folders made.
std::vector<TestValue> Hive(AccountPlace& machine, const Person& person);

// What is below a folder but for hives, with those of its attributes that are in the mask.
Files ReadTree(const WString& folder, uint32_t attributes);

void PutTree(TestPlace& place, const std::string& folder, const Files& files);

}  // namespace random_people
