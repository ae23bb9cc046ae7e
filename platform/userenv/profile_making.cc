#include "userenv/profile_making.h"

#include <cstdio>
#include <filesystem>

#include "machine/account_names.h"
#include "machine/call.h"
#include "machine/current_token.h"
#include "machine/faults.h"
#include "machine/hive_store.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/profile_list.h"
#include "machine/sid_text.h"

namespace machine {
namespace {

constexpr const char* kHiveName = "NTUSER.DAT";
constexpr const char* kShellFolders = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders";

std::u16string Long(const std::string& path) { return ToUtf16("\\\\?\\" + path); }

// NAME, NAME.COMPUTER, NAME.COMPUTER.000 and so on: the first that isn't there.
DWORD MakeFolder(const std::string& name, std::string& profile) {
  const std::string parent = ProfilesDirectory();
  if (parent.empty()) return ERROR_FILE_NOT_FOUND;
  const std::string wanted = parent + "\\" + name;
  const std::string second = wanted + "." + ThisMachine().settings.computerName;
  for (int number = -2; number < 1000; ++number) {
    char ending[8] = "";
    if (number >= 0) snprintf(ending, sizeof ending, ".%03d", number);
    profile = (number == -2 ? wanted : second) + ending;
    // Without the long prefix, so that no folder gets the name of a device.
    if (CreateDirectoryW(AsWide(ToUtf16(profile)), nullptr)) return ERROR_SUCCESS;
    if (GetLastError() != ERROR_ALREADY_EXISTS) return GetLastError();
  }
  return ERROR_ALREADY_EXISTS;
}

// The account, the administrators and the system may do everything with it, and nobody else anything.
DWORD Protect(const std::string& profile, const std::string& sid) {
  alignas(ACL) BYTE space[256];
  ACL* const list = reinterpret_cast<ACL*>(space);
  SECURITY_DESCRIPTOR descriptor;
  std::string system = SidBytes(kSystemSid);
  bool isDone = InitializeAcl(list, sizeof space, ACL_REVISION) &&
                InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
  for (const std::string& holder : {system, SidBytes(kAdministratorsSid), SidBytes(sid)}) {
    isDone = isDone && AddAccessAllowedAceEx(list, ACL_REVISION, CONTAINER_INHERIT_ACE | OBJECT_INHERIT_ACE,
                                             FILE_ALL_ACCESS, const_cast<char*>(holder.data()));
  }
  isDone = isDone && SetSecurityDescriptorDacl(&descriptor, TRUE, list, FALSE) &&
           SetSecurityDescriptorControl(&descriptor, SE_DACL_PROTECTED, SE_DACL_PROTECTED) &&
           SetSecurityDescriptorOwner(&descriptor, system.data(), FALSE);
  if (!isDone) return GetLastError();
  HANDLE folder = CreateFileW(AsWide(Long(profile)), WRITE_DAC | WRITE_OWNER, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (folder == INVALID_HANDLE_VALUE) return GetLastError();
  const DWORD error =
      SetKernelObjectSecurity(folder, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &descriptor)
          ? ERROR_SUCCESS
          : GetLastError();
  CloseHandle(folder);
  return error;
}

DWORD CopyTree(const std::string& from, const std::string& to);

DWORD CopyEntry(const WIN32_FIND_DATAW& entry, const std::string& from, const std::string& to) {
  const std::u16string source = Long(from), target = Long(to);
  if (!(entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
    return CopyFileExW(AsWide(source), AsWide(target), nullptr, nullptr, nullptr, COPY_FILE_FAIL_IF_EXISTS)
               ? ERROR_SUCCESS
               : GetLastError();
  }
  if (!CreateDirectoryExW(AsWide(source), AsWide(target), nullptr)) return GetLastError();
  return CopyTree(from, to);
}

DWORD CopyTree(const std::string& from, const std::string& to) {
  WIN32_FIND_DATAW entry;
  HANDLE search = FindFirstFileW(AsWide(Long(from + "\\*")), &entry);
  if (search == INVALID_HANDLE_VALUE) return GetLastError();
  DWORD error = ERROR_SUCCESS;
  do {
    const std::string name = ToUtf8(entry.cFileName);
    // The junctions of the default profile lead to itself.
    if (name == "." || name == ".." || (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) continue;
    error = CopyEntry(entry, from + "\\" + name, to + "\\" + name);
  } while (error == ERROR_SUCCESS && FindNextFileW(search, &entry));
  FindClose(search);
  return error;
}

// Texts that lead into the default profile lead to the same place of the new one.
void MoveTexts(const std::string& from, const std::string& to, std::vector<HiveValue>& values) {
  for (HiveValue& value : values) {
    if (value.type != REG_SZ && value.type != REG_EXPAND_SZ) continue;
    std::u16string units(value.data.size() / 2, 0);
    value.data.copy(reinterpret_cast<char*>(units.data()), units.size() * 2);
    std::string text = ToUtf8(std::u16string_view(units).substr(0, units.find(u'\0')));
    if (FoldUtf8(text.substr(0, from.size() + 1)) != FoldUtf8(from + "\\")) continue;
    HivePlan moved;
    moved.Text(value.name, to + text.substr(from.size()), value.type);
    value = moved.values[0];
  }
}

DWORD SetUpHive(const std::string& from, const std::string& profile) {
  const std::lock_guard hold(RegistryLock());
  std::string file;
  bool isWritable = false;
  const std::string path = profile + "\\" + kHiveName;
  if (const DWORD error = LocateHiveFile(AsWide(ToUtf16(path)), file, isWritable)) return error;
  std::shared_ptr<Hive> hive;
  if (const DWORD error = Hive::Open(file, isWritable, hive)) return error;
  const Hive::Key folders = hive->Find(hive->Root(), kShellFolders);
  if (folders == 0) return ERROR_SUCCESS;
  HivePlan plan;
  if (const DWORD error = hive->Values(folders, plan.values)) return error;
  MoveTexts(from, profile, plan.values);
  if (const DWORD error = hive->Add(folders, plan)) return error;
  return FlushHive(*hive);
}

void TakeBack(const std::string& profile) {
  std::string file;
  bool isWritable = false;
  if (LocateHiveFile(AsWide(ToUtf16(profile + "\\" + kHiveName)), file, isWritable) != ERROR_SUCCESS) return;
  std::error_code error;
  std::filesystem::remove_all(std::filesystem::path(file).parent_path(), error);
}

}  // namespace

DWORD MakeProfile(const std::string& sid, const std::string& name, std::string& profile) {
  if (!ProfileOf(sid).empty()) return ERROR_ALREADY_EXISTS;
  const std::string from = DefaultProfile();
  if (from.empty()) return ERROR_FILE_NOT_FOUND;
  const AsSystem system;
  if (const DWORD error = MakeFolder(name, profile)) return error;
  DWORD error = Protect(profile, sid);
  if (error == ERROR_SUCCESS) error = CopyTree(from, profile);
  if (error == ERROR_SUCCESS) error = SetUpHive(from, profile);
  if (error == ERROR_SUCCESS) error = AddToProfileList(sid, profile);
  if (error != ERROR_SUCCESS) TakeBack(profile);
  return error;
}

}  // namespace machine

using namespace machine;

HRESULT WINAPI CreateProfile(const wchar_t* sidText, const wchar_t* account, wchar_t* path, DWORD size) {
  EnterCall();
  const std::string sid = ToUtf8(sidText), name = ToUtf8(account);
  NamedSid found;
  if (!path || !IsAccountName(name) || SidBytes(sid).empty()) return E_INVALIDARG;
  if (!ThreadToken()->IsAdministrator()) return E_ACCESSDENIED;
  if (!FindAccountSid(sid, found)) return HRESULT_FROM_WIN32(ERROR_NONE_MAPPED);
  if (FaultHits("CreateProfile", name)) return HRESULT_FROM_WIN32(GetLastError());
  if (size < MAX_PATH) Unsupported("CreateProfile", "a buffer for less than MAX_PATH");
  std::string profile;
  if (const DWORD error = MakeProfile(sid, name, profile)) return HRESULT_FROM_WIN32(error);
  const std::u16string text = ToUtf16(profile);
  if (text.size() >= size) return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
  text.copy(reinterpret_cast<char16_t*>(path), text.size());
  path[text.size()] = 0;
  return S_OK;
}
