#include "restore_folders.h"

#include "given_path.h"
#include "interrupt.h"
#include "operations/path_queries.h"
#include "operations/plain_path.h"
#include "operations/redirected_path.h"
#include "operations/restore_start.h"
#include "option_pair.h"
#include "same_name.h"
#include "utf8_text.h"

namespace {

// How a row's folder is given to --extra.
WString NameOf(const RestorePlan& plan, const RestoreFolderRow& row) {
  return plan.root.isSet ? row.source : ExtraFolderKey(plan.root, row);
}

class FolderChoice {
 public:
  FolderChoice(const AppObject& app, RestorePlan& plan, PlanProblem& problem)
      : app_(app), plan_(plan), problem_(problem), rows_(plan.selection.extraFolders) {}

  bool Apply(const ConsoleArguments& arguments);

 private:
  RestoreFolderRow* Find(const WString& name);
  RestoreFolderRow* AddBelowRoot(const WString& relative);
  bool CheckFolderBelowRoot(const WString& relative, const WString& folder);
  bool IsFreeOfOthers(const WString& folder);
  bool OfferTarget(RestoreFolderRow& row, const WString& name);
  bool SetTarget(RestoreFolderRow& row, const OptionPair& pair);
  bool Take(const OptionPair& pair);
  void TellProtected();

  const AppObject& app_;
  RestorePlan& plan_;
  PlanProblem& problem_;
  std::vector<RestoreFolderRow>& rows_;
  std::vector<WString> named_;  // sources of the rows that an option names
};

RestoreFolderRow* FolderChoice::Find(const WString& name) {
  const WString cleaned = plan_.root.isSet ? GivenPath(name) : name;
  for (RestoreFolderRow& row : rows_) {
    const WString rowName = NameOf(plan_, row);
    if (IsSameName(rowName, name) || IsSameName(rowName, cleaned)) return &row;
  }
  return nullptr;
}

bool FolderChoice::CheckFolderBelowRoot(const WString& relative, const WString& folder) {
  if (!IsPlainRelativePath(relative.CStr()) || !CanBeKey(relative.CStr())) {
    return Object(problem_, "--extra: " + Quoted(relative) + " is no plain path below " +
                                Quoted(plan_.root.folder) + "; give one such as Data\\Work.");
  }
  const DWORD attributes = PathAttributes(folder.CStr());
  const char* reason = nullptr;
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    reason = " does not exist; check the path.";
  } else if (!(attributes & FILE_ATTRIBUTE_DIRECTORY)) {
    reason = " is a file; give the folder that holds it.";
  } else if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) {
    reason = " is a link; give the folder that it leads to.";
  }
  return reason == nullptr || Object(problem_, "The folder " + Quoted(folder) + reason);
}

// Whether no ticked row is in the way. On the screen a larger folder takes the rows of smaller ones away;
// on a command line both were meant, unless the smaller one only comes from an earlier run.
bool FolderChoice::IsFreeOfOthers(const WString& folder) {
  for (size_t i = rows_.size(); i-- > 0;) {
    const RestoreFolderRow& row = rows_[i];
    if (!row.isTicked) continue;
    bool isNamed = false;
    for (const WString& named : named_) isNamed |= IsSameName(named, row.source);
    const bool holdsRow = IsSameOrInside(row.source, folder);
    if (IsSameOrInside(folder, row.source) || (holdsRow && isNamed)) {
      return Object(problem_, "The folders " + Quoted(folder) + " and " + Quoted(row.source) +
                                  " hold one another; give only the larger one with --extra.");
    }
    if (holdsRow) rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(i));
  }
  return true;
}

RestoreFolderRow* FolderChoice::AddBelowRoot(const WString& relative) {
  const WString folder = PathBelow(plan_.root.folder, relative.CStr());
  if (!CheckFolderBelowRoot(relative, folder) || !IsFreeOfOthers(folder)) return nullptr;
  RestoreFolderRow row;
  row.source = folder;
  rows_.push_back(row);
  return &rows_.back();
}

// Of another installation, the target that an info file there remembers is somebody else's word: without one
// of the person's own, it is the same place on the system's drive, unless a restore doesn't write there.
bool FolderChoice::OfferTarget(RestoreFolderRow& row, const WString& name) {
  row.target = OfferedTarget(plan_.root.folder.CStr(), row.source.CStr(), app_.systemDrive.CStr());
  const PlaceProtection protection = plan_.places->ProtectionOf(row.target.CStr());
  return protection == PlaceProtection::kFree ||
         Object(problem_, "The folder " + Quoted(name) + " would go to " + Quoted(row.target) + ", which " +
                              Escaped(ProtectionText(protection)) + "; give --extra " +
                              Quoted(name + L"=TARGET") + " to say where it is to go.");
}

bool FolderChoice::SetTarget(RestoreFolderRow& row, const OptionPair& pair) {
  if (pair.hasTo) {
    WString target(pair.to);
    target.Replace(L"/", L"\\");
    // A relative path would depend on the folder that the console happens to be in.
    row.target = IsAbsolutePath(target) ? GivenPath(target) : target;
    if (row.target.Length() == 2) row.target.Append(L"\\");
  } else if (!plan_.root.isSet) {
    return OfferTarget(row, pair.from);
  }
  if (IsPlainFullPath(row.target.CStr())) {
    const WString redirection = RedirectionSentence(row.target.CStr());
    return redirection.IsEmpty() || Object(problem_, Escaped(redirection));
  }
  return Object(problem_, "The folder " + Quoted(pair.from) + " can't be restored to " + Quoted(row.target) +
                              ", which is no full path of a folder; give --extra " +
                              Quoted(pair.from + L"=D:\\Folder") + " or the like.");
}

bool FolderChoice::Take(const OptionPair& pair) {
  WString name(pair.from);
  if (!plan_.root.isSet) name.Replace(L"/", L"\\").StripTrailingBackslashes();
  RestoreFolderRow* row = Find(name);
  if (row != nullptr && row->isMissing && !CheckFolderBelowRoot(name, row->source)) return false;
  if (row == nullptr && !plan_.root.isSet) {
    row = AddBelowRoot(name);
    if (row == nullptr) return false;
  }
  if (row == nullptr) {
    return Object(problem_, "The backup holds no additional folder " + Quoted(pair.from) +
                                "; \"norvanectl info\" lists those that it holds.");
  }
  for (const WString& named : named_) {
    if (!IsSameName(named, row->source)) continue;
    return Object(problem_, "The folder " + Quoted(pair.from) + " is named by more than one --extra.",
                  kExitUsage);
  }
  named_.push_back(row->source);
  row->isTicked = true;
  if (!SetTarget(*row, pair)) return false;
  if (plan_.places->ProtectionOf(row->target.CStr()) != PlaceProtection::kFree) {
    plan_.chosenPlaces.Add(row->target.CStr());
  }
  return true;
}

void FolderChoice::TellProtected() {
  for (const RestoreFolderRow& row : rows_) {
    if (InterruptGuard::IsRequested()) return;
    const PlaceProtection protection = plan_.places->ProtectionOf(row.target.CStr());
    if (row.isTicked || row.isMissing || protection == PlaceProtection::kFree) continue;
    plan_.notes.push_back("The folder " + Quoted(NameOf(plan_, row)) + " isn't restored, because " +
                          Quoted(row.target) + " " + Escaped(ProtectionText(protection)) +
                          "; give --extra PATH=TARGET to have it restored all the same.");
  }
}

bool FolderChoice::Apply(const ConsoleArguments& arguments) {
  UntickProtected(*plan_.places, plan_.selection, InterruptGuard::Word());
  if (arguments.leavesExtraFolders) {
    for (RestoreFolderRow& row : rows_) row.isTicked = false;
  }
  for (const std::string& text : arguments.extraFolders) {
    if (!Take(SplitPair(text))) return false;
  }
  if (!arguments.leavesExtraFolders) TellProtected();
  return true;
}

}  // namespace

bool ChooseRestoreFolders(const ConsoleArguments& arguments, const AppObject& app, RestorePlan& plan,
                          PlanProblem& problem) {
  return FolderChoice(app, plan, problem).Apply(arguments);
}
