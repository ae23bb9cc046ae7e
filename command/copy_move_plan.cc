#include "copy_move_plan.h"

#include <windows.h>

#include "folder_list.h"
#include "given_path.h"
#include "interrupt.h"
#include "operations/backup_set.h"
#include "operations/copy_move_trees.h"
#include "operations/path_queries.h"
#include "operations/redirected_path.h"
#include "operations/run_overlap.h"
#include "operations/shared_target.h"
#include "operations/source_discovery.h"
#include "profile_list.h"
#include "same_name.h"
#include "users/listed_profiles.h"
#include "users/user_table.h"
#include "utf8_text.h"

namespace {

// The profile of a local account. False with the problem if it has none, or two; an empty `folder` if
// there is no such account.
bool FindAccountFolder(const WString& name, WString& folder, PlanProblem& problem) {
  const std::unique_ptr<UserTable> accounts = LoadUserTable();
  for (uint32_t row = 0; row < accounts->count; ++row) {
    if (!IsSameName(accounts->userNames[row], name)) continue;
    folder = accounts->profilePaths[row];
    WString setAside;
    if (GetSetAsideProfile(accounts->sids[row].CStr(), folder.CStr(), setAside)) {
      return Object(problem, "Which folder is meant isn't clear, because " +
                                 SetAsideText(name, folder, setAside) + "; give the folder itself.");
    }
    if (!folder.IsEmpty()) return true;
    return Object(problem, "The account " + Quoted(name) +
                               " has no profile folder that the system tells; give the folder itself.");
  }
  return true;
}

// The folder that a person means by a path, an account's name, or both as "name (path)".
bool FindLocation(const std::string& given, WString& folder, PlanProblem& problem) {
  const WString text = FromUtf8Text(given);
  WString path(text);
  path.Replace(L"/", L"\\");
  if (!path.IsEmpty() && !path.Find(L"\\") && !path.Find(L":")) {
    if (!FindAccountFolder(path, folder, problem)) return false;
    if (!folder.IsEmpty()) return true;
  }
  path = LocationFromEntry(path.CStr());
  const bool isDrive = path.Length() == 2 && path.buffer[1] == L':';
  if (!isDrive && !IsAbsolutePath(path)) {
    return Object(problem, Quoted(text) +
                               " is neither a local account nor a full path; \"norvanectl users\" lists the "
                               "accounts, and a path begins with its drive, such as C:\\Data.");
  }
  folder = GivenPath(path);
  if (folder.Length() <= kDriveRootLength) {
    return Object(problem, Quoted(text) + " is the root of a drive; give a folder on it.");
  }
  const WString redirection = RedirectionSentence(folder.CStr());
  return redirection.IsEmpty() || Object(problem, Escaped(redirection));
}

bool CheckSource(const ConsoleArguments& arguments, CopyMoveSelection& selection, PlanProblem& problem) {
  const wchar_t* source = selection.source.CStr();
  if (!IsFolderPath(source)) {
    return Object(problem, "The folder " + Quoted(source) +
                               (IsFilePath(source) ? " is a file; give the folder that holds it."
                                                   : " does not exist; check the path."));
  }
  if (!ReadFolderList(arguments, selection.folderMask, problem)) return false;
  selection.sourceIsProfile = IsUserProfileFolder(source);
  if (selection.sourceIsProfile || selection.folderMask == kMaskAll) return true;
  return Object(problem, "The folder " + Quoted(source) +
                             " is no profile of an account, so that --folders can't choose from it; leave "
                             "--folders out.");
}

bool CheckTarget(const ConsoleArguments& arguments, const CopyMoveSelection& selection,
                 PlanProblem& problem) {
  const wchar_t* source = selection.source.CStr();
  const wchar_t* target = selection.target.CStr();
  if (IsFilePath(target)) return Object(problem, Quoted(target) + " is a file; give a folder.");
  if (!CanStartCopyMove(source, target, selection.folderMask)) {
    return Object(problem, "The folder " + Quoted(target) +
                               " can't be made, because neither the folder above it nor the one above that "
                               "is there; check the path.");
  }
  if (arguments.command != ConsoleCommand::kMove || CanMoveFiles(source, target)) return true;
  return Object(problem, "Files can't be moved from " + Quoted(source) + " to " + Quoted(target) +
                             ", because the two aren't on one drive with a letter; use \"norvanectl copy\".");
}

// The two folders themselves count, whichever of their folders are taken.
bool CheckOverlap(const ConsoleArguments& arguments, const CopyMoveSelection& selection,
                  PlanProblem& problem) {
  std::vector<RunTree> trees = ListCopyMoveTrees(selection);
  RunTree whole;
  whole.source = selection.source;
  whole.target = selection.target;
  trees.insert(trees.begin(), whole);
  WString source, target;
  if (FindOverlap(trees, source, target)) {
    return Object(problem, Escaped(OverlapSentence(kCopyMoveOperation, source.CStr(), target.CStr())));
  }
  trees.erase(trees.begin());
  SharedTarget shared;
  return arguments.command != ConsoleCommand::kMove ||
         !FindSharedTarget(trees, IsNamedCopyMoveFolder, shared, InterruptGuard::Word()) ||
         Object(problem, Escaped(SharedTargetSentence(shared)));
}

}  // namespace

bool PlanCopyMove(const ConsoleArguments& arguments, CopyMoveSelection& selection, PlanProblem& problem) {
  selection.onlyMissing = !arguments.overwrites;
  return FindLocation(arguments.source, selection.source, problem) &&
         FindLocation(arguments.target, selection.target, problem) &&
         CheckSource(arguments, selection, problem) && CheckTarget(arguments, selection, problem) &&
         CheckOverlap(arguments, selection, problem);
}
