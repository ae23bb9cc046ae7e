// user_accounts.cc
//
// The account database: the local accounts that accounts.ini names.
#include <windows.h>

#include <lm.h>

#include <cstddef>
#include <cstring>

#include "machine/account_names.h"
#include "machine/accounts_file.h"
#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/sid_text.h"
#include "netapi32/network_buffer.h"

using namespace machine;

namespace {

// Named in no header here: an account that doesn't expire, and one without a quota.
constexpr DWORD kForever = MAXDWORD, kUnlimited = MAXDWORD;

// Levels 3 and 4 begin as level 2 does.
static_assert(offsetof(USER_INFO_3, usri3_code_page) == offsetof(USER_INFO_2, usri2_code_page));
static_assert(offsetof(USER_INFO_4, usri4_code_page) == offsetof(USER_INFO_2, usri2_code_page));
static_assert(offsetof(USER_INFO_2, usri2_script_path) == offsetof(USER_INFO_1, usri1_script_path));

DWORD RelativeId(const Account& account) {
  return static_cast<DWORD>(strtoul(account.sid.c_str() + account.sid.rfind('-') + 1, nullptr, 10));
}

void Fill1(const Account& account, NetworkBuffer& buffer, USER_INFO_1& info) {
  info.usri1_name = buffer.Text(account.name);
  info.usri1_priv = static_cast<DWORD>(account.type);  // USER_PRIV_GUEST, _USER and _ADMIN have these numbers
  info.usri1_home_dir = buffer.Text({});
  info.usri1_comment = buffer.Text(account.comment);
  info.usri1_flags = account.flags | UF_SCRIPT;
  info.usri1_script_path = buffer.Text({});
}

void Fill2(const Account& account, NetworkBuffer& buffer, USER_INFO_2& info) {
  Fill1(account, buffer, reinterpret_cast<USER_INFO_1&>(info));
  info.usri2_full_name = buffer.Text(account.fullName);
  info.usri2_usr_comment = buffer.Text({});
  info.usri2_parms = buffer.Text({});
  info.usri2_workstations = buffer.Text({});
  info.usri2_acct_expires = kForever;
  info.usri2_max_storage = kUnlimited;
  info.usri2_logon_server = buffer.Text("\\\\*");
}

void Fill3(const Account& account, NetworkBuffer& buffer, USER_INFO_3& info) {
  Fill2(account, buffer, reinterpret_cast<USER_INFO_2&>(info));
  info.usri3_user_id = RelativeId(account);
  info.usri3_primary_group_id = DOMAIN_GROUP_RID_USERS;
  info.usri3_profile = buffer.Text(account.home);
  info.usri3_home_dir_drive = buffer.Text({});
}

void Fill4(const Account& account, NetworkBuffer& buffer, USER_INFO_4& info) {
  Fill2(account, buffer, reinterpret_cast<USER_INFO_2&>(info));
  info.usri4_user_sid = buffer.Bytes(SidBytes(account.sid), alignof(DWORD));
  info.usri4_primary_group_id = DOMAIN_GROUP_RID_USERS;
  info.usri4_profile = buffer.Text(account.home);
  info.usri4_home_dir_drive = buffer.Text({});
}

void Fill11(const Account& account, NetworkBuffer& buffer, USER_INFO_11& info) {
  info.usri11_name = buffer.Text(account.name);
  info.usri11_comment = buffer.Text(account.comment);
  info.usri11_usr_comment = buffer.Text({});
  info.usri11_full_name = buffer.Text(account.fullName);
  info.usri11_priv = static_cast<DWORD>(account.type);
  info.usri11_home_dir = buffer.Text({});
  info.usri11_parms = buffer.Text({});
  info.usri11_logon_server = buffer.Text("\\\\*");
  info.usri11_workstations = buffer.Text({});
  info.usri11_max_storage = kUnlimited;
}

// One level: the size of its structure and what fills it.
struct Level {
  DWORD number;
  size_t size;
  void (*fill)(const Account&, NetworkBuffer&, void*);
};
const Level kLevels[] = {
    {0, sizeof(USER_INFO_0),
     [](const Account& account, NetworkBuffer& buffer, void* info) {
       static_cast<USER_INFO_0*>(info)->usri0_name = buffer.Text(account.name);
     }},
    {1, sizeof(USER_INFO_1),
     [](const Account& account, NetworkBuffer& buffer, void* info) {
       Fill1(account, buffer, *static_cast<USER_INFO_1*>(info));
     }},
    {3, sizeof(USER_INFO_3),
     [](const Account& account, NetworkBuffer& buffer, void* info) {
       Fill3(account, buffer, *static_cast<USER_INFO_3*>(info));
     }},
    {4, sizeof(USER_INFO_4),
     [](const Account& account, NetworkBuffer& buffer, void* info) {
       Fill4(account, buffer, *static_cast<USER_INFO_4*>(info));
     }},
    {11, sizeof(USER_INFO_11),
     [](const Account& account, NetworkBuffer& buffer, void* info) {
       Fill11(account, buffer, *static_cast<USER_INFO_11*>(info));
     }},
};

const Level& FindLevel(const char* call, DWORD number) {
  for (const Level& level : kLevels) {
    if (level.number == number) return level;
  }
  Unsupported(call, "this level");
}

// A block with one structure for each account.
NET_API_STATUS Write(const std::vector<const Account*>& accounts, const Level& level, BYTE** result) {
  NetworkBuffer buffer(level.size * accounts.size());
  std::vector<std::max_align_t> scratch(level.size / sizeof(std::max_align_t) + 1);
  for (const Account* account : accounts) level.fill(*account, buffer, scratch.data());
  if (!buffer.Allocate()) return ERROR_NOT_ENOUGH_MEMORY;
  char* place = static_cast<char*>(buffer.Block());
  for (const Account* account : accounts) {
    level.fill(*account, buffer, place);
    place += level.size;
  }
  *result = static_cast<BYTE*>(buffer.Block());
  return NERR_Success;
}

}  // namespace

NET_API_STATUS WINAPI NetUserEnum(const wchar_t* server, DWORD level, DWORD filter, BYTE** result,
                                  DWORD length, DWORD* count, DWORD* total, DWORD* resume) {
  EnterCall();
  if (!result || !count || !total) return ERROR_INVALID_PARAMETER;
  if (filter != 0) Unsupported("NetUserEnum", "this filter");
  if (length != MAX_PREFERRED_LENGTH || resume) Unsupported("NetUserEnum", "pieces of the list");
  *result = nullptr;
  *count = *total = 0;
  if (!IsThisComputer(server)) return ERROR_BAD_NETPATH;
  if (level != 0 && level != 3) Unsupported("NetUserEnum", "this level");
  const AccountsHold hold;
  std::vector<const Account*> accounts;
  for (const Account& account : ThisMachine().accounts) accounts.push_back(&account);
  const NET_API_STATUS status = Write(accounts, FindLevel("NetUserEnum", level), result);
  if (status == NERR_Success) *count = *total = static_cast<DWORD>(accounts.size());
  return status;
}

NET_API_STATUS WINAPI NetUserGetLocalGroups(const wchar_t* server, const wchar_t* name, DWORD level,
                                            DWORD flags, BYTE** result, DWORD length, DWORD* count,
                                            DWORD* total) {
  EnterCall();
  if (!name || !result || !count || !total) return ERROR_INVALID_PARAMETER;
  if (level != 0 || flags != 0) Unsupported("NetUserGetLocalGroups", "anything but the account's own groups");
  if (length != MAX_PREFERRED_LENGTH) Unsupported("NetUserGetLocalGroups", "pieces of the list");
  *result = nullptr;
  *count = *total = 0;
  if (!IsThisComputer(server)) return ERROR_BAD_NETPATH;
  const AccountsHold hold;
  const Account* account = ThisMachine().FindAccount(ToUtf8(name));
  if (!account) return NERR_UserNotFound;
  const std::vector<std::string>& groups = account->groups;
  NetworkBuffer buffer(sizeof(LOCALGROUP_USERS_INFO_0) * groups.size());
  for (const std::string& group : groups) buffer.Text(group);
  if (!buffer.Allocate()) return ERROR_NOT_ENOUGH_MEMORY;
  auto* place = static_cast<LOCALGROUP_USERS_INFO_0*>(buffer.Block());
  for (const std::string& group : groups) (place++)->lgrui0_name = buffer.Text(group);
  *result = static_cast<BYTE*>(buffer.Block());
  *count = *total = static_cast<DWORD>(groups.size());
  return NERR_Success;
}

NET_API_STATUS WINAPI NetUserGetInfo(const wchar_t* server, const wchar_t* name, DWORD level, BYTE** result) {
  EnterCall();
  if (!name || !result) return ERROR_INVALID_PARAMETER;
  *result = nullptr;
  if (!IsThisComputer(server)) return ERROR_BAD_NETPATH;
  const AccountsHold hold;
  const Account* account = ThisMachine().FindAccount(ToUtf8(name));
  if (!account) return NERR_UserNotFound;
  return Write({account}, FindLevel("NetUserGetInfo", level), result);
}
