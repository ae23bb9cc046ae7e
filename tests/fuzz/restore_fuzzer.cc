// A stranger's info file, from its rows to the end of a restore that takes all of them. Nothing outside the
// account's folders and the places that were chosen is written; where the file's own targets are taken, as
// far as they have their ticks, nothing of the system and of other accounts.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "core/app_object.h"
#include "fuzz_machine.h"
#include "operations/operation_context.h"
#include "operations/restore_selection.h"
#include "users/user_hives.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* kOpenFolders[] = {"/Test", "/Chosen", "/Users/Anna"};

// Folders at the top of the drive and beside the profiles, as they were at first. A new one hurts nobody.
std::set<std::string>& FirstFolders() {
  static std::set<std::string> folders;
  return folders;
}

bool IsNew(const std::string& path) {
  const bool isBesideProfiles = path.starts_with("/Users/") && path.find('/', 7) == path.npos;
  return (path.rfind('/') == 0 || isBesideProfiles) && !FirstFolders().contains(path);
}

// What is on the drive, but for the set and the folders that may be written to.
std::string Listing(bool withNew) {
  std::string text;
  for (auto it = fs::recursive_directory_iterator(FuzzDrive()); it != fs::recursive_directory_iterator();
       ++it) {
    const std::string path = it->path().string().substr(FuzzDrive().size());
    const bool isOpen =
        std::find(std::begin(kOpenFolders), std::end(kOpenFolders), path) != std::end(kOpenFolders);
    if (isOpen || (!withNew && IsNew(path))) {
      it.disable_recursion_pending();
      continue;
    }
    text += path;
    if (it->is_regular_file()) text += " " + std::to_string(it->file_size());
    text += "\n";
  }
  return text;
}

void PutFile(const std::string& path) {
  fs::create_directories(fs::path(FuzzDrive() + path).parent_path());
  std::ofstream(FuzzDrive() + path) << "x";
}

bool FillSet() {
  fs::remove_all(FuzzDrive() + "/Test");
  for (const char* name : {"Anna", "Bob", "Users", "x"}) {
    for (const char* folder : {"AppData", "LocalAppData", "Desktop", "Documents", "Other"})
      PutFile(std::string("/Test/Users/") + name + "/" + folder + "/f");
  }
  for (const char* name : {"A", "B", "0123456789ABCDEF0123456789ABCDEF"})
    PutFile(std::string("/Test/ExtraFolders/") + name + "/f");
  return true;
}

bool Prepare() {
  PutFile("/secret");
  for (const std::string folder : {"", "/Users"}) {
    for (const fs::directory_entry& entry : fs::directory_iterator(FuzzDrive() + folder))
      FirstFolders().insert(folder + "/" + entry.path().filename().string());
  }
  return FillSet();
}

void RemoveNewFolders() {
  for (const std::string folder : {"", "/Users"}) {
    for (const fs::directory_entry& entry : fs::directory_iterator(FuzzDrive() + folder)) {
      if (IsNew(folder + "/" + entry.path().filename().string())) fs::remove_all(entry.path());
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool isReady = !FuzzDrive().empty() && Prepare();
  static const std::string before = Listing(true);
  Require(isReady, "a set");
  const bool takesItsWord = size % 2 != 0;
  WriteOnDisk("Test/BackupInfo.grxsv", data, size);
  AppObject app;
  IniDocument document;
  document.Load(L"C:\\Test\\BackupInfo.grxsv", false);
  document.path = L"C:\\Test\\BackupInfo.grxsv";

  const RestoreRoot root{WString(L"C:\\Test"), true, 0.0};
  RestoreSelection selection;
  const std::unique_ptr<UserTable> accounts = LoadUserTable();
  ReadSetRows(document, root, *accounts, selection);
  if (selection.users.size() > 20) selection.users.resize(20);
  for (RestoreUserRow& row : selection.users) {
    const WString folder = UserFolderInRoot(root, row.source.CStr());
    Require(folder.Find(L"..\\") == 0, "a row stays in the set");
    // An account that was made would stay for the inputs that come after.
    if (!row.target.EqualsNoCase(L"Anna")) row.target = row.source.Length() % 2 ? L"Nobody" : L"Anna";
  }
  const ProtectedPlaces places(*accounts);
  UntickProtected(places, selection);
  // Otherwise a person takes each folder to one place.
  for (RestoreFolderRow& row : selection.extraFolders) {
    if (!takesItsWord) row.target = L"C:\\Chosen";
  }
  WriteRestoreSelection(document, root, selection);

  OperationContext context;
  context.app = &app;
  context.kind = kRestoreOperation;
  context.document = &document;
  context.copyBuffer = new uint8_t[kCopyBufferSize];
  context.copyBufferSize = kCopyBufferSize;
  RestoreEntry(&context);
  UnloadOwnHives();
  Require(context.outcome == OperationOutcome::kComplete || context.outcome == OperationOutcome::kFailures,
          "a restore comes to its end");
  Require(Listing(!takesItsWord) == before, "nothing is written outside the open places");
  RemoveNewFolders();
  if (takesItsWord) FillSet();
  for (const char* folder : {"AppData", "Desktop", "Documents", "Other"})
    fs::remove_all(FuzzDrive() + "/Users/Anna/" + folder);
  return 0;
}
