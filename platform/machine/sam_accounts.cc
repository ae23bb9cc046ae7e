#include "machine/sam_accounts.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "machine/names.h"
#include "machine/sid_text.h"

namespace machine {
namespace {

constexpr const char* kAccountDomain = "SAM\\Domains\\Account";
constexpr const char* kAliases = "SAM\\Domains\\Builtin\\Aliases";
constexpr size_t kMostAccounts = 4096;
constexpr size_t kMostMembers = 4096;

// The value V begins with rows of place, length and a third word for each of its texts. Places count
// from behind the rows.
constexpr size_t kTextsBase = 0xCC;
constexpr size_t kNameRow = 0x0C, kFullNameRow = 0x18, kCommentRow = 0x24, kProfileRow = 0x6C;
// The value F.
constexpr size_t kRidAt = 0x30, kControlAt = 0x38;
// The value C of a group.
constexpr size_t kMembersRow = 0x28, kMemberCountAt = 0x30, kMembersBase = 0x34;

constexpr uint32_t kNormalAccount = 0x200;  // UF_NORMAL_ACCOUNT

template <typename T>
std::optional<T> Get(std::string_view bytes, size_t at) {
  T value;
  if (at > bytes.size() || bytes.size() - at < sizeof value) return std::nullopt;
  memcpy(&value, bytes.data() + at, sizeof value);
  return value;
}

bool ReadText(std::string_view v, size_t row, std::string& text) {
  const auto place = Get<uint32_t>(v, row), length = Get<uint32_t>(v, row + 4);
  if (!place || !length) return false;
  const size_t start = kTextsBase + size_t{*place};
  if (start > v.size() || v.size() - start < *length || *length % 2 != 0) return false;
  std::u16string units(*length / 2, 0);
  memcpy(units.data(), v.data() + start, *length);
  text = ToUtf8(std::u16string_view(units).substr(0, units.find(u'\0')));
  return true;
}

// The bits of an account's control word and the flags of the account calls that they are.
struct ControlFlag {
  uint16_t control;
  uint32_t flag;
};
constexpr ControlFlag kControlFlags[] = {
    {0x0001, 0x0002},   // disabled
    {0x0004, 0x0020},   // no password required
    {0x0010, 0x0200},   // a normal account
    {0x0200, 0x10000},  // the password doesn't expire
    {0x0400, 0x0010},   // locked out
};

std::string ReadBytes(Hive& hive, Hive::Key key, const char* name) {
  HiveValue value;
  return hive.ReadValue(key, name, value) == ERROR_SUCCESS ? value.data : std::string();
}

// The machine's own SID stands at the end of the value V of the account domain.
std::string MachineSid(Hive& sam) {
  constexpr size_t kLength = 24;  // S-1-5-21 and three parts
  const Hive::Key domain = sam.Find(sam.Root(), kAccountDomain);
  const std::string v = domain != 0 ? ReadBytes(sam, domain, "V") : std::string();
  if (v.size() < kLength) return {};
  const std::string sid = SidText(std::string_view(v).substr(v.size() - kLength));
  return sid.starts_with("S-1-5-21-") ? sid : std::string();
}

std::vector<std::string> Members(Hive& sam, const char* alias) {
  const Hive::Key key = sam.Find(sam.Root(), std::string(kAliases) + "\\" + alias);
  return key != 0 ? ReadGroupMembers(ReadBytes(sam, key, "C")) : std::vector<std::string>();
}

bool Has(const std::vector<std::string>& sids, const std::string& sid) {
  return std::find(sids.begin(), sids.end(), sid) != sids.end();
}

}  // namespace

bool ReadAccountValue(std::string_view v, Account& account) {
  if (!ReadText(v, kNameRow, account.name) || account.name.empty()) return false;
  ReadText(v, kFullNameRow, account.fullName);
  ReadText(v, kCommentRow, account.comment);
  ReadText(v, kProfileRow, account.home);
  return true;
}

bool ReadAccountFlags(std::string_view f, uint32_t& rid, uint32_t& flags) {
  const auto number = Get<uint32_t>(f, kRidAt);
  const auto control = Get<uint16_t>(f, kControlAt);
  if (!number || !control) return false;
  rid = *number;
  flags = 0;
  for (const ControlFlag& known : kControlFlags) {
    if (*control & known.control) flags |= known.flag;
  }
  return true;
}

std::vector<std::string> ReadGroupMembers(std::string_view c) {
  std::vector<std::string> members;
  const auto place = Get<uint32_t>(c, kMembersRow), count = Get<uint32_t>(c, kMemberCountAt);
  if (!place || !count) return members;
  size_t at = kMembersBase + size_t{*place};
  for (uint32_t i = 0; i < *count && i < kMostMembers && at < c.size(); ++i) {
    const size_t length = SidLength(c.data() + at, c.size() - at);
    if (length == 0) break;
    members.push_back(SidText(c.substr(at, length)));
    at += length;
  }
  return members;
}

std::vector<Account> ReadSamAccounts(Hive& sam) {
  std::vector<Account> accounts;
  const std::string machineSid = MachineSid(sam);
  const Hive::Key users = sam.Find(sam.Root(), std::string(kAccountDomain) + "\\Users");
  std::vector<Hive::Key> keys;
  if (machineSid.empty() || users == 0 || sam.Children(users, keys) != ERROR_SUCCESS) return accounts;
  const auto administrators = Members(sam, "00000220"), guests = Members(sam, "00000222");
  for (const Hive::Key key : keys) {
    std::string name;
    if (accounts.size() >= kMostAccounts || sam.Name(key, name) != ERROR_SUCCESS) continue;
    // Keys are the numbers of the accounts; beside them stands one with their names.
    if (name.size() != 8 || name.find_first_not_of("0123456789ABCDEFabcdef") != std::string::npos) continue;
    const auto rid = static_cast<uint32_t>(std::stoul(name, nullptr, 16));
    Account account;
    if (!ReadAccountValue(ReadBytes(sam, key, "V"), account)) continue;
    uint32_t ridOfValue = 0;
    if (!ReadAccountFlags(ReadBytes(sam, key, "F"), ridOfValue, account.flags) || ridOfValue != rid) {
      account.flags = kNormalAccount;
    }
    account.sid = machineSid + "-" + std::to_string(rid);
    account.type = Has(administrators, account.sid) ? AccountType::kAdministrator
                   : Has(guests, account.sid)       ? AccountType::kGuest
                                                    : AccountType::kStandard;
    const char* const groups[] = {"Guests", "Users", "Administrators"};
    account.groups = {groups[static_cast<int>(account.type)]};
    accounts.push_back(account);
  }
  return accounts;
}

}  // namespace machine
