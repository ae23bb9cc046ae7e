#include "restore_accounts.h"

#include "operations/restore_targets.h"
#include "option_pair.h"
#include "profile_list.h"
#include "same_name.h"
#include "users/listed_profiles.h"
#include "users/local_groups.h"
#include "utf8_text.h"

namespace {

constexpr size_t kMostNames = 20;

class TargetChoice {
 public:
  TargetChoice(const UserTable& accounts, RestorePlan& plan, PlanProblem& problem)
      : accounts_(accounts),
        plan_(plan),
        problem_(problem),
        rows_(plan.selection.users),
        isNamed_(rows_.size()) {}

  bool Apply(const ConsoleArguments& arguments);

 private:
  bool Find(const WString& source, size_t& row);
  bool Map(const OptionPair& pair);
  bool Create(const OptionPair& pair);
  bool Skip(const OptionPair& pair);
  void LeaveOutImpossible();
  void LeaveOutTemporary();
  void LeaveOut(RestoreUserRow& row, const std::string& reason);
  void TellTargets();
  void TellNewAccount(const RestoreUserRow& row, const WString& account, const std::string& intro);

  const UserTable& accounts_;
  RestorePlan& plan_;
  PlanProblem& problem_;
  std::vector<RestoreUserRow>& rows_;
  std::vector<bool> isNamed_;  // by an option, for each row
};

std::string SourceNames(const std::vector<RestoreUserRow>& rows) {
  if (rows.empty()) return "; there is none at all.";
  std::string names;
  for (size_t i = 0; i < rows.size() && i < kMostNames; ++i) {
    names += (i == 0 ? "" : ", ") + Quoted(rows[i].source);
  }
  return "; there " + std::string(rows.size() == 1 ? "is " : "are ") + names +
         (rows.size() > kMostNames ? " and others." : ".");
}

// The row that an option means, which no other option may mean as well.
bool TargetChoice::Find(const WString& source, size_t& row) {
  for (row = 0; row < rows_.size(); ++row) {
    if (!IsSameName(rows_[row].source, source)) continue;
    if (isNamed_[row]) {
      return Object(problem_,
                    "The account " + Quoted(source) +
                        " is named by more than one of --map, --create and --skip; give only one of them.",
                    kExitUsage);
    }
    isNamed_[row] = true;
    return true;
  }
  return Object(problem_, (plan_.root.isSet ? "The backup " : "The folder ") + Quoted(plan_.root.folder) +
                              " holds no data of an account " + Quoted(source) + SourceNames(rows_));
}

bool TargetChoice::Map(const OptionPair& pair) {
  if (pair.from.IsEmpty() || pair.to.IsEmpty()) {
    return Object(problem_, "--map needs two names; give FROM=TO, such as --map Anna=Bob.", kExitUsage);
  }
  size_t row = 0;
  if (!Find(pair.from, row)) return false;
  for (uint32_t i = 0; i < accounts_.count; ++i) {
    if (!IsSameName(accounts_.userNames[i], pair.to) || accounts_.profilePaths[i].IsEmpty()) continue;
    rows_[row].target = accounts_.userNames[i];
    return true;
  }
  return Object(problem_, "There is no local account " + Quoted(pair.to) +
                              " with a profile; \"norvanectl users\" lists them, and --create " +
                              Quoted(pair.from + L"=" + pair.to) + " makes one.");
}

bool TargetChoice::Create(const OptionPair& pair) {
  if (pair.from.IsEmpty() || (pair.hasTo && pair.to.IsEmpty())) {
    return Object(problem_, "--create needs a name; give FROM or FROM=NAME, such as --create Anna=Anna2.",
                  kExitUsage);
  }
  size_t row = 0;
  if (!Find(pair.from, row)) return false;
  const WString& source = rows_[row].source;
  const WString& name = pair.hasTo ? pair.to : source;
  switch (StateOfTarget(name)) {
    case TargetState::kImpossible:
      return Object(problem_, Quoted(name) +
                                  " can't be the name of an account; give another one with --create " +
                                  Quoted(source + L"=NAME") +
                                  ", of at most 20 characters, none of \" / \\ [ ] : ; | = , + * ? < > @, "
                                  "and not that of a device.");
    case TargetState::kReady:
    case TargetState::kGroup:
      return Object(problem_, "There is an account or a group " + Quoted(name) + " already; give --map " +
                                  Quoted(source + L"=" + name) +
                                  " to restore into that account, or another name with --create.");
    case TargetState::kLacksProfile:  // completed like a new one
    case TargetState::kNew:
      break;
  }
  rows_[row].target = TargetToCreate(name.CStr());
  plan_.administrators.Add(source.CStr());
  return true;
}

bool TargetChoice::Skip(const OptionPair& pair) {
  size_t row = 0;
  if (pair.hasTo || pair.from.IsEmpty()) {
    return Object(problem_, "--skip needs the name of an account, and nothing else.", kExitUsage);
  }
  if (!Find(pair.from, row)) return false;
  rows_[row].isTicked = false;
  return true;
}

void TargetChoice::LeaveOut(RestoreUserRow& row, const std::string& reason) {
  row.isTicked = false;
  plan_.leftOut.push_back("The account " + Quoted(row.source) + " was left out, because " + reason +
                          "; give --map " + Quoted(row.source + L"=TO") + " or --create " +
                          Quoted(row.source + L"=NAME") + ".");
}

// Nobody asked for these by name, so the others go on without them.
void TargetChoice::LeaveOutImpossible() {
  WString account;
  for (RestoreUserRow& row : rows_) {
    if (!row.isTicked || !IsToBeCreated(row.target.CStr(), account)) continue;
    const TargetState state = StateOfTarget(account);
    if (state == TargetState::kImpossible || state == TargetState::kGroup) {
      LeaveOut(row, "no account of that name can be made");
    }
  }
}

// What goes into a temporary profile is gone when the account logs off.
void TargetChoice::LeaveOutTemporary() {
  WString account, setAside;
  for (RestoreUserRow& row : rows_) {
    IsToBeCreated(row.target.CStr(), account);
    for (uint32_t i = 0; row.isTicked && i < accounts_.count; ++i) {
      const WString& profile = accounts_.profilePaths[i];
      if (IsSameName(accounts_.userNames[i], account) && IsTemporaryProfile(profile) &&
          GetSetAsideProfile(accounts_.sids[i].CStr(), profile.CStr(), setAside)) {
        LeaveOut(row, SetAsideText(account, profile, setAside));
      }
    }
  }
}

const char* TypeText(uint32_t type) {
  switch (type) {
    case kGuestAccount:
      return "a guest";
    case kAdministratorAccount:
      return "an administrator";
  }
  return "a standard user";
}

void TargetChoice::TellNewAccount(const RestoreUserRow& row, const WString& account,
                                  const std::string& intro) {
  const WString value(plan_.document.GetValue(kUsersSection, row.source.CStr()));
  const AccountToCreate made =
      DescribeAccountToCreate(value.CStr(), row.source, account, &plan_.administrators);
  std::string note = intro + TypeText(made.type) + ", without a password.";
  if (made.isLowered) {
    note += " The info file calls " + Quoted(row.source) + " an administrator; give --create " +
            Quoted(row.source) + " to make it one.";
  }
  plan_.notes.push_back(note);
}

void TargetChoice::TellTargets() {
  WString account;
  for (size_t i = 0; i < rows_.size(); ++i) {
    if (!rows_[i].isTicked) continue;
    const bool isMarked = IsToBeCreated(rows_[i].target.CStr(), account);
    const TargetState state = isMarked ? StateOfTarget(account) : TargetState::kReady;
    const std::string subject = "The account " + Quoted(account);
    if (state == TargetState::kNew) {
      TellNewAccount(rows_[i], account, subject + " will be made as ");
    } else if (state == TargetState::kLacksProfile && LacksGroup(account.CStr())) {
      TellNewAccount(rows_[i], account, subject + ", whose making was cut off, will be completed as ");
    } else if (state == TargetState::kLacksProfile) {
      plan_.notes.push_back(subject + " has no profile yet, and one will be made.");
    } else if (!isNamed_[i] && !IsSameName(account, rows_[i].source)) {
      plan_.notes.push_back("The data of " + Quoted(rows_[i].source) + " goes to the local account " +
                            Quoted(account) + ", because of the full name.");
    }
  }
}

bool TargetChoice::Apply(const ConsoleArguments& arguments) {
  for (const std::string& text : arguments.maps) {
    if (!Map(SplitPair(text))) return false;
  }
  for (const std::string& text : arguments.creates) {
    if (!Create(SplitPair(text))) return false;
  }
  for (const std::string& text : arguments.skips) {
    if (!Skip(SplitPair(text))) return false;
  }
  LeaveOutImpossible();
  LeaveOutTemporary();
  TellTargets();
  return true;
}

}  // namespace

bool ChooseTargetAccounts(const ConsoleArguments& arguments, const UserTable& accounts, RestorePlan& plan,
                          PlanProblem& problem) {
  return TargetChoice(accounts, plan, problem).Apply(arguments);
}
