// thread.cc
#include "machine/thread.h"

#include <pthread.h>

#include <condition_variable>
#include <mutex>

#include "machine/call.h"

namespace machine {
namespace {

constexpr DWORD kMaximumSuspendCount = 127;

struct SuspendState {
  std::mutex lock;
  std::condition_variable resumed;
};

// Never destructed: a thread may still be held when the process ends.
SuspendState& Suspension() {
  static SuspendState& state = *new SuspendState;
  return state;
}

// A plain pointer beside the owner: EnterCall reads it at every call, and it is null again while the
// thread's other objects go.
thread_local Thread* current = nullptr;
struct Owner {
  std::shared_ptr<Thread> thread;
  ~Owner() { current = nullptr; }
};
thread_local Owner owner;

DWORD NextThreadId() {
  static std::atomic<DWORD> last{0x1000};
  return last.fetch_add(4) + 4;
}

void SetCurrent(std::shared_ptr<Thread> thread) {
  owner.thread = std::move(thread);
  current = owner.thread.get();
}

void WaitUntilResumed(const Thread& thread) {
  std::unique_lock hold(Suspension().lock);
  Suspension().resumed.wait(hold, [&] { return thread.suspendCount.load() == 0; });
}

void* RunThread(void* argument) {
  auto* given = static_cast<std::shared_ptr<Thread>*>(argument);
  SetCurrent(std::move(*given));
  delete given;
  EnterCall();  // one that was created suspended waits here
  DWORD code = current->routine(current->parameter);
  current->exitCode = code;
  current->Signal();
  return nullptr;
}

}  // namespace

void EnterCall() {
  if (current && current->suspendCount.load(std::memory_order_relaxed) != 0) [[unlikely]] {
    WaitUntilResumed(*current);
  }
}

const std::shared_ptr<Thread>& CurrentThread() {
  if (!current) {
    auto thread = std::make_shared<Thread>();
    thread->id = NextThreadId();
    SetCurrent(std::move(thread));
  }
  return owner.thread;
}

std::shared_ptr<Thread> ThreadOf(HANDLE handle) {
  if (handle == GetCurrentThread()) return CurrentThread();
  return HandleTo<Thread>(handle);
}

}  // namespace machine

using namespace machine;

// Windows' pseudo handle.
HANDLE WINAPI GetCurrentThread() { return reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-2)); }
DWORD WINAPI GetCurrentThreadId() { return CurrentThread()->id; }

HANDLE WINAPI CreateThread(SECURITY_ATTRIBUTES*, SIZE_T, LPTHREAD_START_ROUTINE routine, void* parameter,
                           DWORD flags, DWORD* id) {
  EnterCall();
  if (flags & ~static_cast<DWORD>(CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION)) {
    Unsupported("CreateThread", "these flags");
  }
  auto thread = std::make_shared<Thread>();
  thread->id = NextThreadId();
  thread->routine = routine;
  thread->parameter = parameter;
  thread->suspendCount = (flags & CREATE_SUSPENDED) ? 1 : 0;
  auto* given = new std::shared_ptr<Thread>(thread);
  pthread_t started;
  if (pthread_create(&started, nullptr, RunThread, given) != 0) {
    delete given;
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
  }
  pthread_detach(started);
  if (id) *id = thread->id;
  return AddHandle(thread);
}

DWORD WINAPI SuspendThread(HANDLE handle) {
  EnterCall();
  auto thread = ThreadOf(handle);
  if (!thread) return static_cast<DWORD>(-1);
  DWORD before;
  {
    std::lock_guard hold(Suspension().lock);
    before = thread->suspendCount.load();
    if (thread->exitCode.load() != STILL_ACTIVE || before >= kMaximumSuspendCount) {
      SetLastError(before >= kMaximumSuspendCount ? ERROR_SIGNAL_REFUSED : ERROR_ACCESS_DENIED);
      return static_cast<DWORD>(-1);
    }
    thread->suspendCount = before + 1;
  }
  EnterCall();  // a thread that suspends itself is held at once
  return before;
}

DWORD WINAPI ResumeThread(HANDLE handle) {
  EnterCall();
  auto thread = ThreadOf(handle);
  if (!thread) return static_cast<DWORD>(-1);
  DWORD before;
  {
    std::lock_guard hold(Suspension().lock);
    before = thread->suspendCount.load();
    if (before > 0) thread->suspendCount = before - 1;
  }
  Suspension().resumed.notify_all();
  return before;
}

BOOL WINAPI GetExitCodeThread(HANDLE handle, DWORD* code) {
  EnterCall();
  auto thread = ThreadOf(handle);
  if (!thread) return FALSE;
  *code = thread->exitCode.load();
  return TRUE;
}

// The registers of a thread aren't shown; and a thread is held at a call, never inside of one, so there
// is nothing to wait for.
BOOL WINAPI GetThreadContext(HANDLE handle, CONTEXT*) {
  EnterCall();
  return ThreadOf(handle) ? Fail(ERROR_NOT_SUPPORTED) : FALSE;
}
