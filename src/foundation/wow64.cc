// A 32-bit process on a 64-bit system.
#include "foundation/kernel_function.h"
#include "foundation/processes.h"

bool IsWow64(HANDLE process) {
  const auto isWow64 = KernelFunction<BOOL(WINAPI*)(HANDLE, PBOOL)>("IsWow64Process");
  BOOL result = FALSE;
  return isWow64 != nullptr && isWow64(process != nullptr ? process : GetCurrentProcess(), &result) &&
         result != FALSE;
}

bool DisableRedirection(void*& saved) {
  saved = nullptr;
  if (!IsWow64()) return false;
  const auto disable = KernelFunction<BOOL(WINAPI*)(PVOID*)>("Wow64DisableWow64FsRedirection");
  return disable != nullptr && disable(&saved);
}

void RestoreRedirection(void* saved) {
  const auto revert = KernelFunction<BOOL(WINAPI*)(PVOID)>("Wow64RevertWow64FsRedirection");
  if (revert != nullptr) revert(saved);
}
