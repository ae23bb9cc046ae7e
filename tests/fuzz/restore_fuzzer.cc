// A stranger's info file, from its rows to the end of a restore that takes all of them: nothing outside the
// account's folders and the places that were chosen is written.
#include <filesystem>
#include <fstream>

#include "core/app_object.h"
#include "fuzz_machine.h"
#include "operations/operation_context.h"
#include "operations/restore_selection.h"
#include "users/user_hives.h"

namespace fs = std::filesystem;

namespace {

// What is on the drive, but for the set and the folders that may be written to.
std::string Listing() {
  std::string text;
  for (auto it = fs::recursive_directory_iterator(FuzzDrive()); it != fs::recursive_directory_iterator();
       ++it) {
    const std::string path = it->path().string().substr(FuzzDrive().size());
    if (path == "/Test" || path == "/Chosen" || path == "/Users/Anna") {
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

bool Prepare() {
  for (const char* name : {"Anna", "Bob", "Users", "x"}) {
    for (const char* folder : {"AppData", "LocalAppData", "Desktop", "Documents", "Other"})
      PutFile(std::string("/Test/Users/") + name + "/" + folder + "/f");
  }
  for (const char* name : {"A", "B", "0123456789ABCDEF0123456789ABCDEF"})
    PutFile(std::string("/Test/ExtraFolders/") + name + "/f");
  PutFile("/secret");
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool isReady = !FuzzDrive().empty() && Prepare();
  static const std::string before = Listing();
  Require(isReady, "a set");
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
  // A person takes each folder to one place.
  for (RestoreFolderRow& row : selection.extraFolders) row.target = L"C:\\Chosen";
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
  Require(Listing() == before, "nothing is written outside the chosen places");
  fs::remove_all(FuzzDrive() + "/Chosen");
  for (const char* folder : {"AppData", "Desktop", "Documents", "Other"})
    fs::remove_all(FuzzDrive() + "/Users/Anna/" + folder);
  return 0;
}
