// thread.h
//
// The threads of this process as Windows shows them, and how one of them is held.
#pragma once
#include <atomic>
#include <memory>

#include "machine/waitable.h"

namespace machine {

// Signalled when its routine has returned.
struct Thread : Waitable {
  DWORD id = 0;
  std::atomic<DWORD> exitCode{STILL_ACTIVE};
  std::atomic<DWORD> suspendCount{0};
  LPTHREAD_START_ROUTINE routine = nullptr;
  void* parameter = nullptr;
};

// The calling thread; made at the first question where CreateThread didn't start it. Never null.
const std::shared_ptr<Thread>& CurrentThread();

// The thread that `handle` names, with the pseudo handle of GetCurrentThread, too. Null and
// ERROR_INVALID_HANDLE if there is none.
std::shared_ptr<Thread> ThreadOf(HANDLE handle);

}  // namespace machine
