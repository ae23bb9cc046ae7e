// The model knows nothing of the program. It is a list of files with the rules of docs/backup-set.md and of a
// restore applied to it: what a backup takes, where an account's folders are on the other machine, and what
// stands there already.
#include "support/random_restore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "operations/backup_start.h"
#include "operations/restore_selection.h"
#include "support/copy_run.h"
#include "support/host_path.h"
#include "support/operation_run.h"
#include "support/random_people.h"
#include "users/account_lookup.h"

namespace {

using namespace random_people;

constexpr uint32_t kCompared = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

std::string InFolder(const WString& folder, std::string relative) {
  std::replace(relative.begin(), relative.end(), '/', '\\');
  return Utf8(folder) + "\\" + relative;
}

class RandomRestore {
 public:
  explicit RandomRestore(uint32_t seed) : chances_(seed) {}
  void Check();

 private:
  void BackUp();
  void MakeOtherMachine(RestoreRun& run);
  void MakeOther(RestoreRun& run, size_t i);
  void Compare(RestoreRun& run);
  void ExpectPerson(RestoreRun& run, const Person& from, const Person& to, uint32_t mask, bool onlyMissing);
  std::string PlaceOf(RestoreRun& run, const Person& person, const Kind& kind);
  void Read(const WString& folder, Files& found);
  Files ReadMachine(RestoreRun& run);

  Chances chances_;
  std::vector<Person> people_, others_;  // of the first and of the second machine, in the same order
  Files extra_, expected_;
  uint32_t backupMask_ = 255, skipped_ = 0;
  int64_t failures_ = 0;
  std::filesystem::path set_;  // on its way from the one machine to the other
};

std::string RandomRestore::PlaceOf(RestoreRun& run, const Person& person, const Kind& kind) {
  const auto place = person.places.find(kind.value);
  if (place != person.places.end()) return Utf8(run.files / place->second);
  WString sid, profile;
  EXPECT_TRUE(GetAccountSidAndProfile(Wide(person.name).CStr(), sid, &profile)) << person.name;
  return kind.inProfile[0] ? InFolder(profile, kind.inProfile) : Utf8(profile);
}

void RandomRestore::BackUp() {
  AccountPlace machine;
  AppObject app;
  app.logPath = machine.files / "log.txt";
  app.windowsVersion = 10.0;
  BackupSelection selection;
  for (const Person& person : people_) {
    machine.Add({.name = person.name, .fullName = person.fullName, .hive = Hive(machine, person)});
    selection.users.Add(Wide(person.name).CStr());
    selection.userTicked.push_back(true);
    for (size_t kind = 0; kind < kKindCount; kind++) {
      PutTree(machine.files, FolderOf(person, kKinds[kind]), person.files[kind]);
    }
    machine.files.File("Users/" + person.name + "/loose file");
    machine.files.Link("Users/" + person.name + "/link", "Users");
  }
  selection.folderMask = backupMask_;
  selection.skipAttributes = skipped_;
  PutTree(machine.files, "Extra", extra_);
  if (!extra_.empty()) {
    selection.extraFolders.Add((machine.files / "Extra").CStr());
    selection.extraTicked.push_back(true);
  }
  const std::unique_ptr<OperationContext> context = NewContext(app);
  IniDocument document;
  WString problem;
  ASSERT_TRUE(StartBackupSet((machine.files / "B/X").CStr(), selection, document, problem, nullptr))
      << Utf8(problem);
  context->document = &document;
  BackupEntry(context.get());
  EXPECT_EQ(context->failures, 0);
  document.Save();
  std::string folder = (std::filesystem::temp_directory_path() / "norvane-set.XXXXXX").string();
  ASSERT_TRUE(mkdtemp(folder.data()));
  set_ = folder + "/set";
  std::filesystem::rename(HostPath(machine.files / "B/X"), set_);
}

// Accounts that are there by name, by full name alone, or not yet; folders elsewhere; files already there.
void RandomRestore::MakeOtherMachine(RestoreRun& run) {
  for (size_t i = 0; i < people_.size(); i++) {
    const Person& person = people_[i];
    others_.emplace_back();
    others_[i].name = person.name;
    const uint32_t way = chances_.Pick(3);
    if (way == 1 && !person.fullName.empty()) {
      others_[i].name = "Local" + std::to_string(i);
      others_[i].fullName = person.fullName;
    } else if (way != 0) {
      continue;
    }
    MakeOther(run, i);
  }
}

void RandomRestore::MakeOther(RestoreRun& run, size_t i) {
  Person& other = others_[i];
  for (size_t kind = 0; kind < kKindCount; kind++) {
    if (!kKinds[kind].value[0]) continue;
    if (chances_.OneIn(5))
      other.places[kKinds[kind].value] = "Moved/" + std::to_string(i) + std::to_string(kind);
  }
  if (chances_.OneIn(8)) other.badPlace = "My Video";
  run.machine.Add({.name = other.name, .fullName = other.fullName, .hive = Hive(run.machine, other)});
  for (size_t kind = 0; kind < kKindCount; kind++) {
    for (const auto& [path, file] : people_[i].files[kind]) {
      if (file.isFolder || !chances_.OneIn(3)) continue;
      other.files[kind][path] = chances_.AnyFile();
      other.files[kind][path].bytes = "older";
    }
    PutTree(run.files, FolderOf(other, kKinds[kind]), other.files[kind]);
  }
}

// Adds what is below the folder, by whole paths.
void RandomRestore::Read(const WString& folder, Files& found) {
  if (Attributes(folder.CStr()) == INVALID_FILE_ATTRIBUTES) return;
  for (const auto& [path, file] : ReadTree(folder, kCompared)) found[InFolder(folder, path)] = file;
}

Files RandomRestore::ReadMachine(RestoreRun& run) {
  Files found;
  for (const char* folder : {"Users", "Moved", "Back"}) Read(run.files / folder, found);
  for (const Person& person : others_) {
    WString sid;
    if (!GetAccountSidAndProfile(Wide(person.name).CStr(), sid)) continue;  // nobody wanted it made
    const std::string profile = PlaceOf(run, person, kKinds[kKindCount - 1]);
    if (!profile.starts_with(Utf8(run.files.Path()))) Read(Wide(profile), found);
  }
  return found;
}

void RandomRestore::ExpectPerson(RestoreRun& run, const Person& from, const Person& to, uint32_t mask,
                                 bool onlyMissing) {
  for (size_t i = 0; i < kKindCount; i++) {
    const Kind& kind = kKinds[i];
    if (!(mask & kind.bit)) continue;
    if (!to.badPlace.empty() && to.badPlace == kind.value) {
      failures_++;
      continue;
    }
    if (!(backupMask_ & kind.bit)) continue;
    const std::string place = PlaceOf(run, to, kind);
    for (const auto& [path, file] : from.files[i]) {
      if (kind.isData && IsWorthless(kind, path)) continue;
      if (!kind.isData && !file.isFolder && (file.attributes & skipped_)) continue;
      File& there = expected_[InFolder(Wide(place), path)];
      const bool exists = there.written != 0;
      if (file.isFolder) {
        there.isFolder = true;
      } else if (!exists || !onlyMissing || kind.isData) {
        there = file;
        if (kind.isData) there.created = 0;  // the system's own copy decides
      }
    }
  }
}

void RandomRestore::Check() {
  people_ = chances_.People();
  if (chances_.OneIn(2)) extra_ = chances_.Tree(kKinds[3]);
  if (chances_.OneIn(3)) skipped_ = 2 * chances_.Pick(4);
  if (chances_.OneIn(3)) backupMask_ = chances_.Pick(256);
  BackUp();
  if (testing::Test::HasFailure()) return;
  RestoreRun run;
  MakeOtherMachine(run);
  std::filesystem::remove_all(HostPath(run.files / "set"));
  std::filesystem::rename(set_, HostPath(run.files / "set"));
  std::filesystem::remove_all(set_.parent_path());
  run.document.Load(run.document.path.CStr(), false);

  RestoreSelection selection;
  const RestoreRoot root{run.files / "set", true, 0.0};
  ReadSetRows(run.document, root, *LoadUserTable(), selection);
  selection.onlyMissing = chances_.OneIn(2);
  if (chances_.OneIn(3)) selection.folderMask = chances_.Pick(256);
  for (RestoreUserRow& row : selection.users) row.isTicked = !chances_.OneIn(5);
  for (RestoreFolderRow& row : selection.extraFolders) row.target = run.files / "Back";
  WriteRestoreSelection(run.document, root, selection);
  for (const char* folder : {"Users", "Moved"}) Read(run.files / folder, expected_);
  run.Run();

  EXPECT_EQ(selection.users.size(), backupMask_ ? people_.size() : 0u);
  for (const RestoreUserRow& row : selection.users) {
    size_t i = 0;
    while (i + 1 < people_.size() && people_[i].name != Utf8(row.source)) i++;
    std::string target = Utf8(row.target);
    if (target.ends_with(" <create>")) target.resize(target.size() - 9);
    EXPECT_EQ(target, others_[i].name) << people_[i].name;
    if (row.isTicked) ExpectPerson(run, people_[i], others_[i], selection.folderMask, selection.onlyMissing);
  }
  for (const auto& [path, file] : extra_) {
    if (!file.isFolder && (file.attributes & skipped_)) continue;
    expected_[InFolder(run.files / "Back", path)] = file;
  }
  EXPECT_EQ(run.context->failures, failures_) << testing::PrintToString(run.told);
  EXPECT_EQ(Attributes(L"C:\\Windows\\norvane-test"), INVALID_FILE_ATTRIBUTES);
  Compare(run);
  if (!chances_.OneIn(4)) return;
  // The same once more changes nothing.
  run.NewRecord();
  run.Run();
  Compare(run);
}

// All files as expected and no others; of the folders, those that are expected.
void RandomRestore::Compare(RestoreRun& run) {
  Files found = ReadMachine(run);
  std::erase_if(
      found, [this](const auto& entry) { return entry.second.isFolder && !expected_.contains(entry.first); });
  for (const auto& [path, file] : expected_) {
    const auto there = found.find(path);
    if (there == found.end()) {
      ADD_FAILURE() << "missing: " << path;
    } else {
      EXPECT_EQ(there->second, file) << path;
    }
  }
  for (const auto& [path, file] : found) EXPECT_TRUE(expected_.contains(path)) << "too much: " << path;
}

}  // namespace

void CheckRandomRestore(uint32_t seed) {
  SCOPED_TRACE("NORVANE_FIRST_SEED=" + std::to_string(seed) +
               " NORVANE_SEEDS=1 operations_tests --gtest_filter='RandomRestore.*'");
  RandomRestore(seed).Check();
}
