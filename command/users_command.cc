#include "users_command.h"

#include <algorithm>

#include "json_line.h"
#include "operation_run.h"
#include "profile_list.h"
#include "refusal.h"
#include "users/account_facts.h"
#include "users/listed_profiles.h"
#include "users/user_table.h"
#include "utf8_text.h"

namespace {

struct UserRow {
  std::string name, type, displayName, profile;
};

// Padded to the width of its column, counted in characters.
std::string Cell(const std::string& utf8, size_t width) {
  const auto columns = static_cast<size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char byte) { return (byte & 0xc0) != 0x80; }));
  return utf8 + std::string(width > columns ? width - columns : 0, ' ') + "  ";
}

size_t Widest(const std::vector<UserRow>& rows, std::string UserRow::*member) {
  size_t width = 0;
  for (const UserRow& row : rows) width = std::max(width, Cell(row.*member, 0).size() - 2);
  return width;
}

void ShowTable(const std::vector<UserRow>& rows, ConsoleOutput& output) {
  const size_t name = Widest(rows, &UserRow::name), type = Widest(rows, &UserRow::type);
  const size_t displayName = Widest(rows, &UserRow::displayName);
  for (const UserRow& row : rows) {
    output.Result(Cell(row.name, name) + Cell(row.type, type) + Cell(row.displayName, displayName) +
                  row.profile);
  }
}

std::vector<std::string> MissingProfiles(const UserTable& table) {
  const std::string problem = ProfileListProblem();
  if (!problem.empty()) return {problem};
  std::vector<std::string> sentences;
  WString setAside;
  for (uint32_t row = 0; row < table.count; ++row) {
    const WString& name = table.userNames[row];
    const WString& profile = table.profilePaths[row];
    if (name.IsEmpty()) continue;
    if (profile.IsEmpty()) {
      sentences.push_back(MissingProfileSentence(name));
    } else if (GetSetAsideProfile(table.sids[row].CStr(), profile.CStr(), setAside)) {
      sentences.push_back(SetAsideSentence(name, profile, setAside));
    }
  }
  return sentences;
}

// Says why the list isn't whole. False if it is.
bool TellWhatIsMissing(const ConsoleArguments& arguments, const UserTable& table, ConsoleOutput& output) {
  TellNotes(arguments, OtherProfileNotes(table, WStringArray()), output);
  const std::vector<std::string> sentences = MissingProfiles(table);
  for (const std::string& sentence : sentences) {
    if (arguments.isJson) output.Result(JsonLine("failure").Utf8("text", sentence).Build());
    output.Error("norvanectl: " + sentence);
  }
  return !sentences.empty();
}

}  // namespace

const char* AccountTypeText(uint32_t privilege) {
  switch (privilege) {
    case 0:
      return "guest";
    case 1:
      return "standard";
    case 2:
      return "administrator";
  }
  return "unknown";
}

ExitCode RunUsersCommand(const ConsoleArguments& arguments, const AppObject& app, ConsoleOutput& output) {
  const std::unique_ptr<UserTable> table = LoadUserTable();
  std::vector<UserRow> rows = {{"ACCOUNT", "TYPE", "DISPLAY NAME", "PROFILE"}};
  for (uint32_t row = 0; row < table->count; ++row) {
    const WString& name = table->userNames[row];
    if (name.IsEmpty()) continue;
    AccountFacts facts;
    const char* const type =
        GetAccountFacts(name.CStr(), facts) ? AccountTypeText(facts.privilege) : "unknown";
    rows.push_back({Escaped(name), type, Escaped(facts.fullName), Escaped(table->profilePaths[row])});
    if (!arguments.isJson) continue;
    output.Result(JsonLine("account")
                      .Text("name", name)
                      .Utf8("type", type)
                      .Text("displayName", facts.fullName)
                      .Text("profile", table->profilePaths[row])
                      .Text("sid", table->sids[row])
                      .Flag("console", name.EqualsNoCase(app.consoleUserName))
                      .Build());
  }
  if (rows.size() == 1) {
    const std::string problem = ProfileListProblem();
    return Refuse(arguments,
                  problem.empty() ? "There is no local account with a profile; check that this runs on the "
                                    "machine that you mean, as administrator."
                                  : problem,
                  output);
  }
  if (!arguments.isJson) ShowTable(rows, output);
  return TellWhatIsMissing(arguments, *table, output) ? kExitFailures : kExitDone;
}
