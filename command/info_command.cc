#include "info_command.h"

#include <algorithm>

#include "foundation/directory_enumerator.h"
#include "interrupt.h"
#include "json_line.h"
#include "operations/backup_set.h"
#include "operations/path_queries.h"
#include "operations/set_accounts.h"
#include "progress_line.h"
#include "refusal.h"
#include "set_document.h"
#include "system_reason.h"
#include "tree_count.h"
#include "users_command.h"
#include "utf8_text.h"

namespace {

std::string CountText(const TreeCount& count) {
  return EntriesText(count.entries) + ", " + BytesText(count.bytes);
}

std::string LastName(WString path) { return Escaped(path.LastComponent()); }

// Each step gives false when Ctrl+C came while it counted.
class SetReport {
 public:
  SetReport(const ConsoleArguments& arguments, ConsoleOutput& output, IniDocument& document)
      : isJson_(arguments.isJson),
        output_(output),
        document_(document),
        folder_(SetFolderOf(document.path.CStr())) {}

  ExitCode Run();

 private:
  void ShowOptions();
  void ShowSections();
  bool ShowAccounts();
  std::vector<WString> FolderNames(const WString& home);
  bool ShowAccountFolders(const SetAccount& account);
  bool ShowExtraFolders();
  bool ShowExtraFolder(const WString& path, bool isTicked);
  bool Count(const WString& folder, TreeCount& count);

  const bool isJson_;
  ConsoleOutput& output_;
  IniDocument& document_;
  const WString folder_;  // of the set
  TreeCount total_;
  int64_t failures_ = 0;
};

bool SetReport::Count(const WString& folder, TreeCount& count) {
  if (!CountTree(folder.CStr(), count)) return false;
  total_.entries += count.entries;
  total_.bytes += count.bytes;
  return true;
}

void SetReport::ShowOptions() {
  const uint32_t mask = document_.GetNumber(kSettingsSection, kUserFoldersKey) & kMaskAll;
  const bool updateOnly = (document_.GetNumber(kSettingsSection, kBackupOptionsKey) & 1) != 0;
  const uint32_t skipped = document_.GetNumber(kSettingsSection, kSkipAttributesKey);
  const bool skipsHidden = (skipped & kSkipHiddenFiles) != 0, skipsSystem = (skipped & kSkipSystemFiles) != 0;
  if (isJson_) {
    output_.Result(JsonLine("set")
                       .Text("set", folder_)
                       .Text("infoFile", document_.path)
                       .Text("folders", FolderListText(mask))
                       .Flag("updateOnly", updateOnly)
                       .Flag("skipsHidden", skipsHidden)
                       .Flag("skipsSystem", skipsSystem)
                       .Build());
    return;
  }
  const char* const skips[] = {"nothing", "hidden files", "system files", "hidden and system files"};
  output_.Result("Backup:     " + Escaped(folder_));
  output_.Result("Info file:  " + LastName(document_.path));
  output_.Result("Folders:    " + (mask == 0 ? "none" : Escaped(FolderListText(mask))));
  output_.Result(std::string("Copies:     ") + (updateOnly ? "only new and outdated files" : "all files"));
  output_.Result(std::string("Skips:      ") + skips[(skipsHidden ? 1 : 0) + (skipsSystem ? 2 : 0)]);
}

// What the file holds beyond what is told below shows here, too, such as the choices of a restore.
void SetReport::ShowSections() {
  std::string sections;
  for (uint32_t row = 0; row < document_.lines.count; ++row) {
    WString name(document_.lines[row]);
    const int32_t bracket = name.Find(L"]", true, 1, 3);
    if (name.Find(L"[", true, 1, 1, 1) == 0 || bracket == 0) continue;
    name.AssignMid(name.CStr(), 2, bracket - 2);
    int64_t keys = 0;
    for (uint32_t line = document_.NextKeyLine(row + 1, 0); line != 0;
         line = document_.NextKeyLine(line, 0)) {
      ++keys;
    }
    if (isJson_) output_.Result(JsonLine("section").Text("name", name).Number("keys", keys).Build());
    sections += (sections.empty() ? "" : ", ") + Escaped(name) + " (" + std::to_string(keys) + ")";
  }
  if (!isJson_) output_.Result("Sections:   " + (sections.empty() ? "none" : sections));
}

// Sorted, since not every file system does that.
std::vector<WString> SetReport::FolderNames(const WString& home) {
  std::vector<WString> names;
  WString pattern(home);
  pattern.AddLongPathPrefix().Append(L"\\*");
  DirectoryEnumerator folders;
  for (bool more = folders.First(pattern.CStr(), kSkipReparsePoints | kOnlyDirectories); more;
       more = folders.Next()) {
    names.emplace_back(folders.data.cFileName);
  }
  if (!ListingEnded()) {
    const DWORD error = GetLastError();
    ++failures_;
    output_.Error("The folder \"" + Escaped(home) + "\" can't be read (" + SystemReason(error) + ").");
  }
  std::sort(names.begin(), names.end(), [](const WString& a, const WString& b) {
    return CompareStringOrdinal(a.CStr(), -1, b.CStr(), -1, TRUE) == CSTR_LESS_THAN;
  });
  return names;
}

bool SetReport::ShowAccountFolders(const SetAccount& account) {
  const WString home = UserFolderInSet(folder_.CStr(), account.name.CStr());
  for (const WString& name : FolderNames(home)) {
    TreeCount count;
    if (!Count(home + L"\\" + name, count)) return false;
    if (isJson_) {
      output_.Result(JsonLine("folder")
                         .Text("account", account.name)
                         .Text("name", name)
                         .Number("entries", count.entries)
                         .Number("bytes", count.bytes)
                         .Build());
    } else {
      output_.Result("    " + Escaped(name) + ": " + CountText(count));
    }
  }
  return true;
}

bool SetReport::ShowAccounts() {
  const std::vector<SetAccount> accounts = ReadSetAccounts(document_, folder_.CStr());
  if (!isJson_) output_.Result(accounts.empty() ? "Accounts:   none" : "Accounts:");
  for (const SetAccount& account : accounts) {
    if (InterruptGuard::IsRequested()) return false;
    const char* const type = AccountTypeText(static_cast<uint32_t>(account.privilege));
    if (isJson_) {
      output_.Result(JsonLine("account")
                         .Text("name", account.name)
                         .Utf8("type", type)
                         .Text("displayName", account.displayName)
                         .Flag("backedUp", account.isBackedUp)
                         .Flag("hasData", account.hasFolder)
                         .Build());
    } else {
      output_.Result("  " + Escaped(account.name) + " (" + type + ", " + Escaped(account.displayName) + ")" +
                     (account.isBackedUp ? "" : ", not in the last run") +
                     (account.hasFolder ? "" : ", no data in the set"));
    }
    if (account.hasFolder && !ShowAccountFolders(account)) return false;
  }
  return true;
}

bool SetReport::ShowExtraFolder(const WString& path, bool isTicked) {
  const WString place = ExtraFolderDestination(document_, folder_.CStr(), path.CStr());
  const bool hasData = !place.IsEmpty() && IsFolderPath(place.CStr());
  TreeCount count;
  if (hasData && !Count(place, count)) return false;
  if (isJson_) {
    output_.Result(JsonLine("extraFolder")
                       .Text("path", path)
                       .Utf8("name", LastName(place))
                       .Flag("backedUp", isTicked)
                       .Flag("hasData", hasData)
                       .Number("entries", count.entries)
                       .Number("bytes", count.bytes)
                       .Build());
  } else {
    output_.Result("  " + Escaped(path) + (isTicked ? "" : ", not in the last run"));
    output_.Result("    " + LastName(place) + ": " + (hasData ? CountText(count) : "no data in the set"));
  }
  return true;
}

bool SetReport::ShowExtraFolders() {
  uint32_t first = 0, end = 0;
  document_.FindSection(kExtraFoldersSection, first, end);
  uint32_t line = first == 0 ? 0 : document_.NextKeyLine(first, end);
  if (!isJson_) output_.Result(line == 0 ? "Additional folders: none" : "Additional folders:");
  WString path, ticked;
  for (; line != 0; line = document_.NextKeyLine(line, end)) {
    if (InterruptGuard::IsRequested()) return false;
    if (document_.ParseKeyLine(line, path, ticked) && !ShowExtraFolder(path, ticked.ToUInt32() != 0))
      return false;
  }
  return true;
}

ExitCode SetReport::Run() {
  ShowOptions();
  ShowSections();
  const bool isWhole = ShowAccounts() && ShowExtraFolders();
  const ExitCode exitCode = !isWhole ? kExitStopped : failures_ != 0 ? kExitFailures : kExitDone;
  if (isJson_) {
    const char* const outcomes[] = {"complete", "failures", "", "stopped"};
    output_.Result(JsonLine("end")
                       .Utf8("outcome", outcomes[exitCode])
                       .Number("entries", total_.entries)
                       .Number("bytes", total_.bytes)
                       .Number("failures", failures_)
                       .Build());
  } else {
    output_.Result("In all:     " + CountText(total_) + (isWhole ? "" : ", stopped before the end"));
  }
  return exitCode;
}

}  // namespace

ExitCode RunInfoCommand(const ConsoleArguments& arguments, ConsoleOutput& output) {
  IniDocument document;
  PlanProblem problem;
  if (!OpenSet(arguments.set, document, problem)) {
    return Refuse(arguments, problem.sentence, output, problem.exitCode);
  }
  return SetReport(arguments, output, document).Run();
}
