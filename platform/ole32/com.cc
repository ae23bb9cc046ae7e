// com.cc
#include <objbase.h>
#include <windows.h>

#include "machine/call.h"

using namespace machine;

namespace {
thread_local unsigned timesStarted = 0;
}

// The layer has no COM objects, so a thread's state is no more than how often it was asked for.
HRESULT WINAPI CoInitialize(void*) {
  EnterCall();
  return timesStarted++ == 0 ? S_OK : S_FALSE;
}
void WINAPI CoUninitialize() {
  EnterCall();
  if (timesStarted > 0) --timesStarted;
}

void WINAPI CoTaskMemFree(void* block) {
  EnterCall();
  HeapFree(GetProcessHeap(), 0, block);
}
