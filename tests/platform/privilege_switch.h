// privilege_switch.h
#pragma once
#include <windows.h>

inline DWORD SetPrivilege(const wchar_t* name, bool isEnabled) {
  HANDLE token;
  OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES, &token);
  TOKEN_PRIVILEGES state = {};
  state.PrivilegeCount = 1;
  LookupPrivilegeValueW(nullptr, name, &state.Privileges[0].Luid);
  state.Privileges[0].Attributes = isEnabled ? SE_PRIVILEGE_ENABLED : 0;
  AdjustTokenPrivileges(token, FALSE, &state, 0, nullptr, nullptr);
  const DWORD error = GetLastError();
  CloseHandle(token);
  return error;
}

// What loading a hive asks for.
inline void EnableHivePrivileges() {
  SetPrivilege(L"SeBackupPrivilege", true);
  SetPrivilege(L"SeRestorePrivilege", true);
}
