#include "dry_run.h"

#include "foundation/directory_enumerator.h"
#include "interrupt.h"
#include "json_line.h"
#include "operations/backup_trees.h"
#include "operations/path_queries.h"
#include "progress_line.h"
#include "system_reason.h"
#include "tree_count.h"
#include "utf8_text.h"

namespace {

class DryRun {
 public:
  DryRun(const ConsoleArguments& arguments, const AppObject& app, const BackupPlan& plan,
         ConsoleOutput& output)
      : arguments_(arguments), app_(app), plan_(plan), output_(output) {}

  ExitCode Run();

 private:
  bool ShowUser(const wchar_t* name);
  bool ShowTree(const BackupTree& tree);
  bool ShowOtherFolders(const BackupTree& tree);
  void Fail(const std::string& sentence);
  void ShowEnd(bool isStopped);

  const ConsoleArguments& arguments_;
  const AppObject& app_;
  const BackupPlan& plan_;
  ConsoleOutput& output_;
  TreeCount total_;
  int64_t failures_ = 0;
};

void DryRun::Fail(const std::string& sentence) {
  ++failures_;
  if (arguments_.isJson) output_.Result(JsonLine("failure").Utf8("text", sentence).Build());
  output_.Error(sentence);
}

// A folder that isn't there is nothing to copy, and no failure of a run.
bool DryRun::ShowTree(const BackupTree& tree) {
  if (tree.otherFolders) return ShowOtherFolders(tree);
  if (!IsFolderPath(tree.source.CStr())) return true;
  TreeCount count;
  if (!CountTree(tree.source.CStr(), count)) return false;
  total_.entries += count.entries;
  total_.bytes += count.bytes;
  if (arguments_.isJson) {
    output_.Result(JsonLine("phase")
                       .Text("source", tree.source)
                       .Text("target", tree.target)
                       .Number("entries", count.entries)
                       .Number("bytes", count.bytes)
                       .Build());
  } else {
    output_.Result("  " + Escaped(tree.source) + ": " + EntriesText(count.entries) + ", " +
                   BytesText(count.bytes));
  }
  return true;
}

bool DryRun::ShowOtherFolders(const BackupTree& tree) {
  const WString exclusions =
      OtherFolderExclusions(app_.consoleUserSid.CStr(), app_.consoleUserProfile.CStr());
  WString pattern(tree.source);
  pattern.AddLongPathPrefix().Append(L"\\*");
  DirectoryEnumerator folders;
  for (bool more = folders.First(pattern.CStr(), kSkipReparsePoints | kOnlyDirectories); more;
       more = folders.Next()) {
    if (IsExcludedFolder(exclusions, folders.data.cFileName)) continue;
    BackupTree folder;
    folder.source.Concat(tree.source.CStr(), L"\\", folders.data.cFileName);
    folder.target.Concat(tree.target.CStr(), L"\\", folders.data.cFileName);
    if (!ShowTree(folder)) return false;
  }
  if (!ListingEnded()) {
    const DWORD error = GetLastError();
    Fail("The folder \"" + Escaped(tree.source) + "\" can't be read (" + SystemReason(error) + ").");
  }
  return true;
}

bool DryRun::ShowUser(const wchar_t* name) {
  if (!arguments_.isJson) output_.Result(Escaped(name));
  UserTrees user;
  if (!ListUserTrees(name, plan_.target.CStr(), plan_.selection.folderMask, app_.windowsVersion, user)) {
    Fail("The account \"" + Escaped(name) + "\" has no profile that can be found.");
    return true;
  }
  for (uint32_t row = 0; row < user.notFound.count; ++row) {
    Fail("The folder \"" + Escaped(user.notFound[row]) + "\" of the account \"" + Escaped(name) +
         "\" can't be found.");
  }
  for (const BackupTree& tree : user.trees) {
    if (!ShowTree(tree)) return false;
  }
  return true;
}

void DryRun::ShowEnd(bool isStopped) {
  if (arguments_.isJson) {
    output_.Result(JsonLine("end")
                       .Utf8("outcome", isStopped        ? "stopped"
                                        : failures_ != 0 ? "failures"
                                                         : "complete")
                       .Flag("dryRun", true)
                       .Text("set", plan_.target)
                       .Number("entries", total_.entries)
                       .Number("bytes", total_.bytes)
                       .Number("failures", failures_)
                       .Build());
  } else if (isStopped) {
    output_.Error("Stopped. Nothing was changed.");
  } else {
    output_.Result("In all " + EntriesText(total_.entries) + ", " + BytesText(total_.bytes) +
                   ". Nothing was changed.");
  }
}

ExitCode DryRun::Run() {
  if (!arguments_.isJson) {
    const bool isThere = IsFilePath(ChooseInfoFile(plan_.target.CStr()).CStr());
    output_.Result((isThere ? "This would bring the backup up to date: " : "This would make the backup: ") +
                   Escaped(plan_.target));
  }
  for (uint32_t row = 0; row < plan_.leftOut.count; ++row) Fail(LeftOutSentence(plan_.leftOut[row]));
  bool isWhole = true;
  const BackupSelection& selection = plan_.selection;
  for (uint32_t row = 0; isWhole && row < selection.users.count; ++row) {
    if (selection.IsUserTicked(row)) isWhole = ShowUser(selection.users[row].CStr());
  }
  if (!arguments_.isJson && selection.extraFolders.count != 0) output_.Result("Additional folders");
  for (uint32_t row = 0; isWhole && row < selection.extraFolders.count; ++row) {
    BackupTree tree;
    WString name;
    Md5Name(selection.extraFolders[row].CStr(), name);
    tree.source = selection.extraFolders[row];
    tree.target = ExtraFolderInSet(plan_.target.CStr(), name.CStr());
    isWhole = ShowTree(tree);
  }
  const bool isStopped = !isWhole || InterruptGuard::IsRequested();
  ShowEnd(isStopped);
  if (isStopped) return kExitStopped;
  return failures_ != 0 ? kExitFailures : kExitDone;
}

}  // namespace

ExitCode ShowDryRun(const ConsoleArguments& arguments, const AppObject& app, const BackupPlan& plan,
                    ConsoleOutput& output) {
  return DryRun(arguments, app, plan, output).Run();
}
