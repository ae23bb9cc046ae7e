// folder_path.cc
//
// The well-known folders of the system and of an account.
#include <windows.h>

#include <shlobj.h>

#include <cstring>

#include "machine/call.h"
#include "machine/hive_store.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "machine/profile_list.h"
#include "machine/sid_text.h"
#include "machine/token.h"

using namespace machine;

namespace {

constexpr const char* kExplorer = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\";

// A folder of an account: its name in the account's shell folders, and where it is in the profile of a
// new layout and an old one where the hive doesn't tell.
struct AccountFolder {
  int id;
  const char* name;
  const char* place;
  const char* oldPlace;
};
constexpr AccountFolder kAccountFolders[] = {
    {CSIDL_PERSONAL, "Personal", "Documents", "My Documents"},
    {CSIDL_DESKTOPDIRECTORY, "Desktop", "Desktop", "Desktop"},
    {CSIDL_MYMUSIC, "My Music", "Music", "My Documents\\My Music"},
    {CSIDL_MYVIDEO, "My Video", "Videos", "My Documents\\My Videos"},
    {CSIDL_MYPICTURES, "My Pictures", "Pictures", "My Documents\\My Pictures"},
    {CSIDL_APPDATA, "AppData", "AppData\\Roaming", "Application Data"},
    {CSIDL_LOCAL_APPDATA, "Local AppData", "AppData\\Local", "Local Settings\\Application Data"},
};

std::string SystemFolder(int id) {
  const std::string drive = SystemDriveText();
  switch (id) {
    case CSIDL_WINDOWS:
      return WindowsFolder();
    case CSIDL_SYSTEM:
      return WindowsFolder() + "\\system32";
    case CSIDL_COMMON_APPDATA:
      return drive + (ThisMachine().settings.HasOldLayout()
                          ? "\\Documents and Settings\\All Users\\Application Data"
                          : "\\ProgramData");
    case CSIDL_PROGRAM_FILES:  // of a 32-bit process
    case CSIDL_PROGRAM_FILESX86:
      return drive + "\\Program Files (x86)";
    default:
      return {};
  }
}

// The folder as the account's hive has it, which must be in the registry.
std::string FolderOfHive(const std::string& sid, const std::string& profile, const char* name) {
  const std::lock_guard hold(RegistryLock());
  std::shared_ptr<Hive> hive;
  if (FindHive(HiveRoot::kUsers, sid, hive) != ERROR_SUCCESS) return {};
  std::string text;
  for (const char* key : {"User Shell Folders", "Shell Folders"}) {
    if (hive->ReadText(std::string(kExplorer) + key, name, text) && !text.empty()) {
      return ExpandFolder(text, profile);
    }
  }
  return {};
}

std::string FolderOfAccount(int id, const Token& token) {
  const std::string sid = TokenUserText(token);
  std::string profile =
      sid == kSystemSid ? WindowsFolder() + "\\system32\\config\\systemprofile" : ProfileOf(sid);
  if (profile.empty() || id == CSIDL_PROFILE) return profile;
  for (const AccountFolder& folder : kAccountFolders) {
    if (folder.id != id) continue;
    const std::string place = FolderOfHive(sid, profile, folder.name);
    return !place.empty()
               ? place
               : profile + "\\" + (ThisMachine().settings.HasOldLayout() ? folder.oldPlace : folder.place);
  }
  return {};
}

}  // namespace

HRESULT WINAPI SHGetFolderPathW(HWND, int folder, HANDLE handle, DWORD flags, wchar_t* result) {
  EnterCall();
  if (flags != SHGFP_TYPE_CURRENT) Unsupported("SHGetFolderPathW", "default places");
  if (folder & CSIDL_FLAG_CREATE) Unsupported("SHGetFolderPathW", "making the folder");
  const int id = folder & ~CSIDL_FLAG_MASK;
  result[0] = 0;
  std::string path = SystemFolder(id);
  if (path.empty()) {
    const auto token = handle ? HandleTo<Token>(handle) : ThreadToken();
    if (!token) return E_INVALIDARG;
    path = FolderOfAccount(id, *token);
  }
  if (path.empty()) return E_INVALIDARG;
  const std::u16string text = ToUtf16(path);
  if (text.size() >= MAX_PATH) return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
  const bool isVerified = !(folder & CSIDL_FLAG_DONT_VERIFY);
  if (isVerified && GetFileAttributesW(AsWide(text)) == INVALID_FILE_ATTRIBUTES) {
    return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  }
  memcpy(result, text.c_str(), (text.size() + 1) * sizeof(wchar_t));
  return S_OK;
}
