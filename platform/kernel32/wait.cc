// wait.cc
#include <chrono>
#include <thread>

#include "machine/call.h"
#include "machine/waitable.h"

using namespace machine;

// After each wait the thread looks again whether it is held: one that was suspended while it waited
// doesn't come back before it is resumed.

DWORD WINAPI WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  EnterCall();
  auto waitable = HandleTo<Waitable>(handle);
  if (!waitable) return WAIT_FAILED;
  bool isSignaled = waitable->Wait(milliseconds);
  EnterCall();
  return isSignaled ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}

// No call of the layer queues anything for an alertable wait.
DWORD WINAPI SleepEx(DWORD milliseconds, BOOL) {
  EnterCall();
  if (milliseconds == INFINITE) {
    Waitable never;
    never.Wait(INFINITE);
  }
  if (milliseconds == 0) {
    std::this_thread::yield();
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
  }
  EnterCall();
  return 0;
}

void WINAPI Sleep(DWORD milliseconds) { SleepEx(milliseconds, FALSE); }
