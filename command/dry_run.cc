#include "dry_run.h"

#include "foundation/directory_enumerator.h"
#include "interrupt.h"
#include "json_line.h"
#include "operations/copy_failure.h"
#include "operations/path_queries.h"
#include "operations/walk_path.h"
#include "progress_line.h"
#include "run_report.h"
#include "tree_count.h"
#include "utf8_text.h"

namespace {

// The steps that give a bool give false when Ctrl+C came while they counted.
class DryRun {
 public:
  DryRun(const ConsoleArguments& arguments, const DryRunPlan& plan, ConsoleOutput& output)
      : arguments_(arguments), plan_(plan), output_(output), report_(output, arguments) {}

  ExitCode Run();

 private:
  bool ShowGroup(const DryRunGroup& group);
  bool ShowTree(const RunTree& tree);
  bool ShowOtherFolders(const RunTree& tree);
  bool CountSource(const RunTree& tree);
  bool HasSource(const RunTree& tree, HeldWay& way);
  void FailSource(const WString& source, DWORD error);
  void Fail(const std::string& sentence);
  void ShowEnd(bool isStopped);
  std::string EndEvent(bool isStopped) const;

  const ConsoleArguments& arguments_;
  const DryRunPlan& plan_;
  ConsoleOutput& output_;
  RunReport report_;  // tells of an item as the run does
  TreeCount total_;
  int64_t failures_ = 0;
};

void DryRun::Fail(const std::string& sentence) {
  ++failures_;
  if (arguments_.isJson) output_.Result(JsonLine("failure").Utf8("text", sentence).Build());
  output_.Error(sentence);
}

void DryRun::FailSource(const WString& source, DWORD error) {
  ++failures_;
  report_.Failed((kCannotReadDirectory + PathForPeople(source.CStr())).CStr(), error);
}

// The same steps as in the run, which so tells the same. What lies behind a link isn't looked at.
bool DryRun::HasSource(const RunTree& tree, HeldWay& way) {
  const SourceFinding finding = HoldSource(tree, way);
  if (finding == SourceFinding::kFailure) FailSource(tree.source, GetLastError());
  return finding == SourceFinding::kFolder;
}

bool DryRun::ShowTree(const RunTree& tree) {
  HeldWay way;
  if (!HasSource(tree, way)) return true;
  return tree.otherFolders ? ShowOtherFolders(tree) : CountSource(tree);
}

bool DryRun::CountSource(const RunTree& tree) {
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

bool DryRun::ShowOtherFolders(const RunTree& tree) {
  RunTree folder;
  folder.sourceBase = tree.sourceBase.IsEmpty() ? tree.source : tree.sourceBase;
  WalkPath pattern(tree.source.CStr());
  pattern.Push(L"*");
  DirectoryEnumerator folders;
  for (bool more = folders.First(pattern.CStr(), kSkipReparsePoints | kOnlyDirectories); more;
       more = folders.Next()) {
    if (plan_.isExcluded(folders.data.cFileName)) continue;
    folder.source = PathBelow(tree.source, folders.data.cFileName);
    folder.target = PathBelow(tree.target, folders.data.cFileName);
    if (!ShowTree(folder)) return false;
  }
  if (!ListingEnded()) FailSource(tree.source, GetLastError());
  return true;
}

bool DryRun::ShowGroup(const DryRunGroup& group) {
  if (!arguments_.isJson) output_.Result(group.heading);
  for (const std::string& sentence : group.failures) Fail(sentence);
  for (const RunTree& tree : group.trees) {
    if (!ShowTree(tree)) return false;
  }
  return true;
}

std::string DryRun::EndEvent(bool isStopped) const {
  JsonLine line("end");
  line.Utf8("outcome", isStopped ? "stopped" : failures_ != 0 ? "failures" : "complete").Flag("dryRun", true);
  for (const NamedPath& named : plan_.paths) line.Text(named.name, named.path);
  std::vector<std::string> accounts;
  for (uint32_t row = 0; row < plan_.accountsToCreate.count; ++row) {
    accounts.push_back(ToUtf8Text(plan_.accountsToCreate[row]));
  }
  if (!accounts.empty()) line.List("accountsToCreate", accounts);
  return line.Number("entries", total_.entries)
      .Number("bytes", total_.bytes)
      .Number("failures", failures_)
      .Build();
}

void DryRun::ShowEnd(bool isStopped) {
  if (arguments_.isJson) {
    output_.Result(EndEvent(isStopped));
  } else if (isStopped) {
    output_.Error("Stopped. Nothing was changed.");
  } else {
    output_.Result("In all " + EntriesText(total_.entries) + ", " + BytesText(total_.bytes) +
                   ". Nothing was changed.");
  }
}

ExitCode DryRun::Run() {
  if (!arguments_.isJson) output_.Result(plan_.headline);
  for (const std::string& sentence : plan_.failures) Fail(sentence);
  bool isWhole = true;
  for (size_t i = 0; isWhole && i < plan_.groups.size(); ++i) isWhole = ShowGroup(plan_.groups[i]);
  const bool isStopped = !isWhole || InterruptGuard::IsRequested();
  ShowEnd(isStopped);
  if (isStopped) return kExitStopped;
  return failures_ != 0 ? kExitFailures : kExitDone;
}

}  // namespace

ExitCode ShowDryRun(const ConsoleArguments& arguments, const DryRunPlan& plan, ConsoleOutput& output) {
  return DryRun(arguments, plan, output).Run();
}
