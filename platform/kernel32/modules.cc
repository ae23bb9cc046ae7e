// modules.cc
//
// The program's own file, and the functions that it takes from the system's libraries at run time.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"

using namespace machine;

namespace {

struct Function {
  const char* name;
  FARPROC address;
};

template <typename Pointer>
FARPROC Address(Pointer function) {
  return reinterpret_cast<FARPROC>(reinterpret_cast<void*>(function));
}

const Function kKernelFunctions[] = {
    {"GetVersionExW", Address(GetVersionExW)},
    {"IsWow64Process", Address(IsWow64Process)},
    {"QueryFullProcessImageNameW", Address(QueryFullProcessImageNameW)},
    {"Wow64DisableWow64FsRedirection", Address(Wow64DisableWow64FsRedirection)},
    {"Wow64RevertWow64FsRedirection", Address(Wow64RevertWow64FsRedirection)},
};

// The addresses of these stand for modules.
char programModule;
char kernelModule;
HMODULE ProgramModule() { return reinterpret_cast<HMODULE>(&programModule); }
HMODULE KernelModule() { return reinterpret_cast<HMODULE>(&kernelModule); }

HMODULE ModuleOf(const wchar_t* name) {
  std::u16string folded = Fold(reinterpret_cast<const char16_t*>(name));
  if (folded == u"KERNEL32" || folded == u"KERNEL32.DLL") return KernelModule();
  SetLastError(ERROR_MOD_NOT_FOUND);
  return nullptr;
}

}  // namespace

DWORD WINAPI GetModuleFileNameW(HMODULE module, wchar_t* buffer, DWORD room) {
  EnterCall();
  if (module && module != ProgramModule())
    Unsupported("GetModuleFileNameW", "another module than the program");
  std::u16string path = ToUtf16(ThisMachine().settings.programPath);
  if (room == 0) return Fail(ERROR_INSUFFICIENT_BUFFER);
  DWORD count = std::min<DWORD>(static_cast<DWORD>(path.size()), room - 1);
  std::copy_n(AsWide(path), count, buffer);
  buffer[count] = 0;
  if (count < path.size()) {
    SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return room;
  }
  return count;
}

HMODULE WINAPI GetModuleHandleW(const wchar_t* name) {
  EnterCall();
  return name ? ModuleOf(name) : ProgramModule();
}
HMODULE WINAPI LoadLibraryW(const wchar_t* name) {
  EnterCall();
  return ModuleOf(name);
}
BOOL WINAPI FreeLibrary(HMODULE module) {
  EnterCall();
  return module == KernelModule() ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

FARPROC WINAPI GetProcAddress(HMODULE module, const char* name) {
  EnterCall();
  const auto* found =
      std::find_if(std::begin(kKernelFunctions), std::end(kKernelFunctions),
                   [name](const Function& entry) { return std::strcmp(entry.name, name) == 0; });
  if (module == KernelModule() && found != std::end(kKernelFunctions)) return found->address;
  SetLastError(ERROR_PROC_NOT_FOUND);
  return nullptr;
}
