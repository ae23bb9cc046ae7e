#include "support/random_people.h"

#include <windows.h>

#include <ostream>

#include "support/copy_run.h"

namespace random_people {

const Kind kKinds[kKindCount] = {{"AppData", "AppData/Roaming", 1, true},
                                 {"Local AppData", "AppData/Local", 1, true},
                                 {"Desktop", "Desktop", 2, false},
                                 {"Personal", "Documents", 4, false},
                                 {"{374DE290-123F-4565-9164-39C4925E467B}", "Downloads", 8, false},
                                 {"My Music", "Music", 16, false},
                                 {"My Pictures", "Pictures", 32, false},
                                 {"My Video", "Videos", 64, false},
                                 {"", "", 128, false}};

void PrintTo(const File& file, std::ostream* out) {
  *out << (file.isFolder ? "folder" : "\"" + file.bytes + "\"") << " " << file.attributes << " "
       << file.written << " " << file.created;
}

// Whether neither backup nor restore takes this of application data.
bool IsWorthless(const Kind& kind, const std::string& path) {
  if (path.starts_with("Packages/") || path == "Packages") return true;
  const std::string windows = "Microsoft/Windows";
  if (!path.starts_with(windows)) return false;
  for (const char* kept : {"/Themes", "/SendTo", "/Account Pictures"}) {
    const std::string folder = windows + kept;
    const bool isRoaming = std::string(kind.value) == "AppData";
    if (!isRoaming && std::string(kept) != "/Themes") break;
    if (path.starts_with(folder + "/") || path == folder) return false;
  }
  return true;
}

File Chances::AnyFile() {
  File file;
  file.bytes = std::string(Pick(4) * 7, static_cast<char>('a' + Pick(26)));
  file.written = kSomeTime + static_cast<int64_t>(Pick(3)) * kDay;
  file.created = kSomeTime - static_cast<int64_t>(1 + Pick(3)) * kDay;
  for (const uint32_t bit : {FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM, FILE_ATTRIBUTE_READONLY})
    if (OneIn(6)) file.attributes |= bit;
  return file;
}

Files Chances::Tree(const Kind& kind) {
  const char* names[] = {
      "a",    "B.txt",  "Größe", "日本",      "x y",           ".z",      "a=b",    "[c]", "\xF0\x9F\x98\x80",
      "dot.", "blank ", "ü",     "u\xCC\x88", "\xED\xA0\x80x", "Desktop", "%TEMP%", "~$a"};
  const char* data[] = {"Packages/",
                        "Microsoft/Windows/Themes/",
                        "Microsoft/Windows/SendTo/",
                        "Microsoft/Windows/Recent/",
                        "deep/er/Windows/",
                        "Microsoft/"};
  const char* others[] = {"Contacts/", "Saved Games/", "Größe/"};
  Files files;
  for (uint32_t i = Pick(4); i > 0; i--) {
    std::string folder;
    if (kind.isData && OneIn(2)) folder = data[Pick(6)];
    if (kind.bit == 128) folder = others[Pick(3)];
    if (OneIn(3)) folder += "sub" + std::to_string(Pick(2)) + "/";
    const std::string path = folder + names[Pick(std::size(names))];
    files[path] = AnyFile();
    for (size_t at = path.find('/'); at != std::string::npos; at = path.find('/', at + 1)) {
      files[path.substr(0, at)].isFolder = true;
    }
  }
  return files;
}

std::vector<Person> Chances::People() {
  const char* names[] = {"Anna", "Bob Berg", "Ömer"};
  std::vector<Person> people(1 + Pick(3));
  for (size_t i = 0; i < people.size(); i++) {
    people[i].name = names[i];
    if (!OneIn(3)) people[i].fullName = std::string("Full ") + names[i];
    for (size_t kind = 0; kind < kKindCount; kind++) {
      people[i].files[kind] = Tree(kKinds[kind]);
      if (!OneIn(5) || !kKinds[kind].value[0]) continue;
      people[i].places[kKinds[kind].value] = "Away/" + std::to_string(i) + std::to_string(kind);
    }
  }
  return people;
}

std::vector<TestValue> Hive(AccountPlace& machine, const Person& person) {
  std::vector<TestValue> hive = machine.UsualFolders(person.name);
  for (TestValue& value : hive) {
    const auto place = person.places.find(value.name);
    if (place != person.places.end()) value.text = Utf8(machine.files.Folder(place->second));
    if (value.name == person.badPlace) value.text = "%SystemRoot%\\norvane-test";
  }
  return hive;
}

std::string FolderOf(const Person& person, const Kind& kind) {
  const auto place = person.places.find(kind.value);
  if (place != person.places.end()) return place->second;
  return "Users/" + person.name + (kind.inProfile[0] ? "/" : "") + kind.inProfile;
}

Files ReadTree(const WString& folder, uint32_t attributes) {
  Files files;
  for (const std::string& path : ListTree(folder)) {
    if (path.ends_with("NTUSER.DAT")) continue;
    WString whole = folder + L"\\" + Wide(path);
    whole.Replace(L"/", L"\\");
    File& file = files[path];
    file.isFolder = (Attributes(whole.CStr()) & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (file.isFolder) continue;
    const FileFacts facts = Facts(whole);
    file.bytes = facts.bytes;
    file.attributes = facts.attributes & attributes;
    file.written = facts.written;
    file.created = facts.created;
  }
  return files;
}

void PutTree(TestPlace& place, const std::string& folder, const Files& files) {
  for (const auto& [path, file] : files) {
    if (file.isFolder) {
      place.Folder(folder + "/" + path);
      continue;
    }
    const WString whole = place.File(folder + "/" + path, file.bytes);
    SetTimes(whole.CStr(), file.created, file.written);
    SetAttributes(whole.CStr(), file.attributes ? file.attributes : FILE_ATTRIBUTE_NORMAL);
  }
}

}  // namespace random_people
