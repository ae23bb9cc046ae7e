#include "support/operation_scene.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "operations/backup_set.h"
#include "support/backup_run.h"
#include "support/host_path.h"
#include "users/user_hives.h"

namespace {

bool IsMove(Operation operation) { return operation == Operation::kMove; }
bool IsCopyMove(Operation operation) { return operation >= Operation::kCopy; }

}  // namespace

std::string OperationName(Operation operation) {
  const char* names[] = {"Backup", "Restore", "RestoreFrom", "Copy", "Move"};
  return names[static_cast<int>(operation)];
}

OperationScene::OperationScene(Operation operation) : operation_(operation) {
  if (operation == Operation::kBackup) {
    auto backup = std::make_unique<BackupRun>();
    backup->Select(L"133", {L"Anna"});
    backup->machine.Add({.name = "Anna"});
    run = std::move(backup);
  } else if (IsCopyMove(operation)) {
    run = std::make_unique<CopyMoveRun>(1 + 4 + 128, true, IsMove(operation));
  } else {
    auto restore = std::make_unique<RestoreRun>(operation == Operation::kRestore);
    restore->Select(1 + 4 + 128, {{"Anna", "Bob"}});
    restore->SelectExtra(operation == Operation::kRestore ? "ABC" : "Data\\ABC", restore->files / "extra");
    run = std::move(restore);
    run->machine.Add({.name = "Bob"});
  }
  run->machine.Add({.name = "Eve"});
  run->app.logPath = L"C:\\norvane.log";  // beside the place, so that faults of the place spare it
  Add("AppData", "AppData/Roaming", "a", "old bytes of a", "AppData");
  Add("AppData", "AppData/Roaming", "Microsoft/Windows/SendTo/s", "", "AppData");
  Add("LocalAppData", "AppData/Local", "b", "", "Local AppData");
  Add("Documents", "Documents", "c", "old c", "Personal");
  Add("Documents", "Documents", "dir/d", "", "Personal");
  Add("Documents", "Documents", "dir/deep/read-only", "old read-only", "Personal");
  Add("Contacts", "Contacts", "e", "", "");
  if (IsCopyMove(operation)) return;
  AddExtra();
}

void OperationScene::AddExtra() {
  std::string kept = operation_ == Operation::kRestoreFrom ? "old/Data/ABC/f" : "set/ExtraFolders/ABC/f";
  std::string place = "extra/f";
  if (operation_ == Operation::kBackup) {
    run->document.SetValue(kNewExtraFoldersSection, (run->files / "extra").CStr(), L"ABC");
    kept.swap(place);
  }
  files.push_back({kept, place, "new bytes of f", "old f", ""});
}

void OperationScene::Add(const std::string& inSet, const std::string& inProfile, const std::string& name,
                         const std::string& old, const std::string& logicalName) {
  std::string source = "from/" + inProfile;
  std::string target = (IsCopyMove(operation_) ? "to/" : "Users/Bob/") + inProfile;
  if (operation_ == Operation::kRestore) source = "set/Users/Anna/" + inSet;
  if (operation_ == Operation::kRestoreFrom) source = "old/Users/Anna/" + inProfile;
  if (operation_ == Operation::kBackup) {
    source = "Users/Anna/" + inProfile;
    target = "set/Users/Anna/" + inSet;
  }
  files.push_back({source + "/" + name, target + "/" + name, "new bytes of " + name, old, logicalName});
}

void OperationScene::Reset(bool onlyMissing) {
  UnloadOwnHives();
  TestPlace& place = run->files;
  for (const char* folder : {"set/Users", "set/ExtraFolders", "old/Users", "old/Data", "from", "to", "extra",
                             "Users/Bob/AppData", "Users/Bob/Documents", "Users/Bob/Contacts",
                             "Users/Anna/AppData", "Users/Anna/Documents", "Users/Anna/Contacts"}) {
    std::filesystem::remove_all(HostPath(place / folder));
  }
  std::filesystem::remove(HostPath(run->app.logPath));
  for (const SceneFile& file : files) {
    place.File(file.source, file.bytes);
    if (file.old.empty()) continue;
    place.File(file.target, file.old);
    if (file.target.ends_with("read-only"))
      SetAttributes((place / file.target).CStr(), FILE_ATTRIBUTE_READONLY);
  }
  Again(onlyMissing);
}

void OperationScene::Again(bool onlyMissing) {
  run->NewRecord();
  if (operation_ == Operation::kBackup) {
    run->document.SetValue(kSettingsSection, kBackupOptionsKey, onlyMissing ? L"1" : L"0");
    return;
  }
  run->document.SetValue(kSettingsSection, IsCopyMove(operation_) ? L"CMBackupOptions" : kRestoreOptionsKey,
                         onlyMissing ? L"2" : L"0");
}

std::string OperationScene::Read(const std::string& file) const {
  const std::string path = HostPath(run->files / file);
  if (std::filesystem::is_directory(path)) return "(folder)";
  std::ifstream stream(path, std::ios::binary);
  if (!stream) return "(none)";
  return {std::istreambuf_iterator<char>(stream), {}};
}

bool OperationScene::IsTold(const SceneFile& file) const {
  for (const std::string& line : run->told) {
    const size_t at = line.find(": ");
    if (at == std::string::npos) continue;
    std::string named = line.substr(at + 2);
    for (char& unit : named) unit = unit == '\\' ? '/' : unit;
    for (const std::string& path : {"~/" + file.source, "~/" + file.target}) {
      if (path == named || path.starts_with(named + "/")) return true;
    }
    for (const char* account : {"Anna", "Bob"}) {
      if (named == account || (!file.logicalName.empty() && named == account + ("/" + file.logicalName))) {
        return true;
      }
    }
  }
  return false;
}

void OperationScene::ExpectWhole(const std::string& when, bool mayLeaveTemporary) const {
  for (const SceneFile& file : files) {
    const std::string source = Read(file.source), target = Read(file.target);
    const bool isOld = file.old.empty() ? target == "(none)" : target == file.old;
    EXPECT_TRUE(isOld || target == file.bytes) << file.target << ": \"" << target << "\", " << when;
    EXPECT_TRUE(source == file.bytes || (IsMove(operation_) && source == "(none)" && target == file.bytes))
        << file.source << ": \"" << source << "\", " << when;
  }
  size_t leftovers = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(HostPath(run->files.Path()))) {
    if (entry.path().filename().string().find("~{") != std::string::npos) ++leftovers;
  }
  EXPECT_LE(leftovers, mayLeaveTemporary ? 1u : 0u) << when;
}
