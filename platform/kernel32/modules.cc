// modules.cc
//
// The program's own file, and the functions that it takes from the system's libraries at run time.
#include <windows.h>

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <string>

#include "machine/call.h"
#include "machine/machine.h"
#include "machine/names.h"
#include "userenv/profile_making.h"

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

const std::initializer_list<Function> kKernelFunctions = {
    {"GetVersionExW", Address(GetVersionExW)},
    {"IsWow64Process", Address(IsWow64Process)},
    {"QueryFullProcessImageNameW", Address(QueryFullProcessImageNameW)},
    {"Wow64DisableWow64FsRedirection", Address(Wow64DisableWow64FsRedirection)},
    {"Wow64RevertWow64FsRedirection", Address(Wow64RevertWow64FsRedirection)},
};

// Windows XP had no such function.
const std::initializer_list<Function> kProfileFunctions = {{"CreateProfile", Address(CreateProfile)}};
const std::initializer_list<Function> kNoFunctions = {};

struct Library {
  const char16_t* name;
  const std::initializer_list<Function>& functions;
};
// The addresses of these stand for modules.
const Library kLibraries[] = {{u"KERNEL32", kKernelFunctions}, {u"USERENV", kProfileFunctions}};
const Library kProgram = {u"", kNoFunctions};

HMODULE Module(const Library& library) { return reinterpret_cast<HMODULE>(const_cast<Library*>(&library)); }

const Library* LibraryOf(HMODULE module) {
  for (const Library& library : kLibraries) {
    if (Module(library) == module) return &library;
  }
  return nullptr;
}

HMODULE ModuleOf(const wchar_t* name) {
  std::u16string folded = Fold(reinterpret_cast<const char16_t*>(name));
  if (folded.ends_with(u".DLL")) folded.resize(folded.size() - 4);
  for (const Library& library : kLibraries) {
    if (folded == library.name) return Module(library);
  }
  SetLastError(ERROR_MOD_NOT_FOUND);
  return nullptr;
}

bool IsThere(const Library& library) {
  return &library.functions != &kProfileFunctions || !ThisMachine().settings.HasOldLayout();
}

}  // namespace

DWORD WINAPI GetModuleFileNameW(HMODULE module, wchar_t* buffer, DWORD room) {
  EnterCall();
  if (module && module != Module(kProgram))
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
  return name ? ModuleOf(name) : Module(kProgram);
}
HMODULE WINAPI LoadLibraryW(const wchar_t* name) {
  EnterCall();
  return ModuleOf(name);
}
BOOL WINAPI FreeLibrary(HMODULE module) {
  EnterCall();
  return LibraryOf(module) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}

FARPROC WINAPI GetProcAddress(HMODULE module, const char* name) {
  EnterCall();
  if (const Library* library = LibraryOf(module); library && IsThere(*library)) {
    for (const Function& function : library->functions) {
      if (std::strcmp(function.name, name) == 0) return function.address;
    }
  }
  SetLastError(ERROR_PROC_NOT_FOUND);
  return nullptr;
}
