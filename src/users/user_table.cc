#include "users/user_table.h"

#include <windows.h>
// The headers below need windows.h before them.
#include <lm.h>

#include "foundation/unique_handle.h"
#include "users/account_lookup.h"
#include "users/console_user.h"
#include "users/expand_variables.h"
#include "users/user_hives.h"

namespace {

constexpr int32_t kLongestName = 260;

// What the account database says: one batch, which with no limit asked for is everything.
class AccountBatch {
 public:
  AccountBatch() {
    status_ = NetUserEnum(nullptr, 3, 0, reinterpret_cast<BYTE**>(&users_), MAX_PREFERRED_LENGTH, &read_,
                          &total_, nullptr);
  }
  AccountBatch(const AccountBatch&) = delete;
  AccountBatch& operator=(const AccountBatch&) = delete;
  ~AccountBatch() {
    if (users_) NetApiBufferFree(users_);
  }

  bool IsGood() const {
    return (status_ == NERR_Success || status_ == ERROR_MORE_DATA) && users_ && read_ != 0 && total_ != 0;
  }
  // Without a place to resume from, a second batch could only repeat the first, so this is all. The
  // rows of the lists are as many as the total, whatever the number read says.
  DWORD Count() const { return read_ < total_ ? read_ : total_; }
  DWORD Total() const { return total_; }
  const USER_INFO_3& operator[](DWORD i) const { return users_[i]; }

 private:
  USER_INFO_3* users_ = nullptr;
  DWORD read_ = 0;
  DWORD total_ = 0;
  NET_API_STATUS status_ = 0;
};

// A network path, or one from the root of the current drive.
bool IsForeignPath(const WString& path) { return path.Find(L"\\", true, 1, 1, 2) != 0; }

// The account's local profile: the database's own path, or else ProfileList's. False if there is none.
bool FindLocalProfile(const USER_INFO_3& user, const WString& sid, WString& profile) {
  profile.Assign(user.usri3_profile);
  ExpandVariables(profile);
  if (IsForeignPath(profile)) return false;
  if (profile.IsEmpty() && !GetProfilePathFromSid(sid.CStr(), &profile)) return false;
  profile.StripTrailingBackslashes();
  return true;
}

uint32_t KeepLocalAccounts(const AccountBatch& batch, WStringArray& sids, WStringArray& profilePaths,
                           WStringArray& names) {
  uint32_t row = 0;
  for (DWORD i = 0; i < batch.Count(); i++) {
    if (!batch[i].usri3_name) continue;
    WString name;
    name.AssignMid(batch[i].usri3_name, 1, kLongestName);
    WString sid(name);
    WString profile;
    if (!AccountNameToSid(sid) || !FindLocalProfile(batch[i], sid, profile)) continue;
    // Most hives are loaded here; what fails now is tried once more by LoadUserTable.
    EnsureUserHiveLoaded(sid.CStr(), profile.CStr());
    sids[row] = sid;
    profilePaths[row] = profile;
    names[row] = name;
    row++;
  }
  return row;
}

void ResizeAll(uint32_t rows, WStringArray& sids, WStringArray& profilePaths, WStringArray& names) {
  for (WStringArray* list : {&sids, &profilePaths, &names}) {
    list->Clear();
    if (rows != 0) list->Resize(rows);
  }
}

// One row for the user at the console. False if it stays empty or nobody's token is there.
bool FillConsoleRow(WStringArray& sids, WStringArray& profilePaths, WStringArray& names) {
  ResizeAll(1, sids, profilePaths, names);
  UniqueHandle token(GetConsoleUser(names[0], &profilePaths[0], &sids[0]));
  profilePaths[0].StripTrailingBackslashes();
  return static_cast<bool>(token);
}

}  // namespace

uint32_t EnumerateLocalUsers(WStringArray& sids, WStringArray& profilePaths, WStringArray& names) {
  ResizeAll(0, sids, profilePaths, names);
  AccountBatch batch;
  if (batch.IsGood()) {
    ResizeAll(batch.Total(), sids, profilePaths, names);
    uint32_t kept = KeepLocalAccounts(batch, sids, profilePaths, names);
    if (kept != 0) return kept;
  }
  return FillConsoleRow(sids, profilePaths, names) ? 1 : 0;
}

std::unique_ptr<UserTable> LoadUserTable() {
  auto table = std::make_unique<UserTable>();
  table->count = EnumerateLocalUsers(table->sids, table->profilePaths, table->userNames);
  if (table->count == 0) {
    table->count = 1;
    FillConsoleRow(table->sids, table->profilePaths, table->userNames);
  }
  for (uint32_t row = 0; row < table->count; row++) {
    EnsureUserHiveLoaded(table->sids[row].CStr(), table->profilePaths[row].CStr());
  }
  return table;
}
