#include "operations/operation_runner.h"

namespace {

// The heaps that the worker takes memory from: that of the process, and that of the C runtime, which
// older systems give a heap of its own.
class HeapLocks {
 public:
  HeapLocks() : processHeap_(GetProcessHeap()), runtimeHeap_(RuntimeHeap()) {
    if (runtimeHeap_ == processHeap_) runtimeHeap_ = nullptr;
    HeapLock(processHeap_);
    if (runtimeHeap_) HeapLock(runtimeHeap_);
  }
  ~HeapLocks() {
    if (runtimeHeap_) HeapUnlock(runtimeHeap_);
    HeapUnlock(processHeap_);
  }
  HeapLocks(const HeapLocks&) = delete;
  HeapLocks& operator=(const HeapLocks&) = delete;

 private:
  static HANDLE RuntimeHeap() {
    HMODULE runtime = GetModuleHandleW(L"msvcrt.dll");
    FARPROC function = runtime ? GetProcAddress(runtime, "_get_heap_handle") : nullptr;
    if (!function) return nullptr;
    using GetHeapHandle = INT_PTR(__cdecl*)();
    auto getHeapHandle = reinterpret_cast<GetHeapHandle>(reinterpret_cast<void*>(function));
    return reinterpret_cast<HANDLE>(getHeapHandle());
  }

  HANDLE processHeap_;
  HANDLE runtimeHeap_;
};

constexpr int kPauseTries = 20;
constexpr DWORD kTryInterval = 20;  // milliseconds

// Suspends the thread that `parameter` is the handle of, while the heap is free of it. 1 if that was done.
DWORD WINAPI SuspendOutsideHeap(void* parameter) {
  HeapLocks locks;
  if (SuspendThread(parameter) == static_cast<DWORD>(-1)) return 0;
  // The call above only asks for it; this one waits until the thread really stands, and must do so
  // before the heap is free again. What it tells isn't needed.
  CONTEXT context = {};
  context.ContextFlags = CONTEXT_CONTROL;
  GetThreadContext(parameter, &context);
  return 1;
}

enum class PauseTry { kDone, kFailed, kUndone };

// A worker that stands still inside the heap, or while it loads a library, would stop this thread at its own
// next allocation. So a helper takes the heap for as long as it suspends the worker. It isn't done by this
// thread, since the worker may come to stand in the very waiting for the heap, and some systems then let the
// one who gives the heap free spin for ever. Where the helper doesn't end, the worker goes on, which frees
// it.
PauseTry TryToPause(HANDLE worker) {
  const UniqueHandle helper(CreateThread(nullptr, 0, SuspendOutsideHeap, worker, 0, nullptr));
  if (!helper) return PauseTry::kFailed;
  bool isUndone = false;
  DWORD waited;
  while ((waited = WaitForSingleObject(helper.Get(), kTryInterval)) == WAIT_TIMEOUT) {
    // It counts only where the helper had suspended already.
    if (ResumeThread(worker) == 1) isUndone = true;
  }
  DWORD isSuspended = 0;
  if (waited != WAIT_OBJECT_0 || !GetExitCodeThread(helper.Get(), &isSuspended)) return PauseTry::kFailed;
  if (isUndone) return PauseTry::kUndone;
  return isSuspended ? PauseTry::kDone : PauseTry::kFailed;
}

}  // namespace

OperationRunner::OperationRunner(OperationContext& context) : context_(context), isPaused_(false) {}

OperationRunner::~OperationRunner() {
  if (!thread_) return;
  Stop();
  WaitForSingleObject(thread_.Get(), INFINITE);
}

bool OperationRunner::Start(LPTHREAD_START_ROUTINE entry) {
  thread_.Reset(CreateThread(nullptr, 0, entry, &context_, 0, nullptr));
  return static_cast<bool>(thread_);
}

bool OperationRunner::WaitForEnd(DWORD milliseconds) {
  // Anything but a time-out counts as ended, so that nobody waits for a handle that isn't one.
  return !thread_ || WaitForSingleObject(thread_.Get(), milliseconds) != WAIT_TIMEOUT;
}

bool OperationRunner::Pause() {
  if (isPaused_) return true;
  if (!thread_) return false;
  for (int i = 0; i < kPauseTries && !isPaused_; i++) {
    const PauseTry result = TryToPause(thread_.Get());
    if (result == PauseTry::kFailed) break;
    isPaused_ = result == PauseTry::kDone;
  }
  return isPaused_;
}

bool OperationRunner::Resume() {
  if (isPaused_) isPaused_ = ResumeThread(thread_.Get()) == static_cast<DWORD>(-1);
  return !isPaused_;
}

void OperationRunner::Stop() {
  context_.stop = 1;
  Resume();
}

OperationOutcome RunToEnd(OperationContext& context, LPTHREAD_START_ROUTINE entry,
                          const OperationTick& tick) {
  OperationRunner runner(context);
  if (!runner.Start(entry)) return context.outcome;
  while (!runner.WaitForEnd(tick.interval)) {
    if (tick.tick && !tick.tick(tick.owner, context)) runner.Stop();
  }
  return context.outcome;
}
