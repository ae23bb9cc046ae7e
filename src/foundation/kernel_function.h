// kernel_function.h
//
// Functions of Kernel32.dll that not every system has.
#pragma once
#include <windows.h>

// Null where this system doesn't have it. The library stays loaded as long as the process lives.
template <typename Function>
Function KernelFunction(const char* name) {
  const HMODULE library = LoadLibraryW(L"Kernel32.dll");
  if (library == nullptr) return nullptr;
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}
