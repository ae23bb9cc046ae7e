// waitable.cc
#include "machine/waitable.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace machine {
namespace {

struct WaitState {
  std::mutex lock;
  std::condition_variable changed;
};

// Never destructed: a thread may still wait here when the process ends.
WaitState& State() {
  static WaitState& state = *new WaitState;
  return state;
}

}  // namespace

void Waitable::Signal() {
  {
    std::lock_guard hold(State().lock);
    isSignaled_ = true;
  }
  State().changed.notify_all();
}

void Waitable::Unsignal() {
  std::lock_guard hold(State().lock);
  isSignaled_ = false;
}

bool Waitable::IsSignaled() const {
  std::lock_guard hold(State().lock);
  return isSignaled_;
}

bool Waitable::Wait(DWORD milliseconds) {
  std::unique_lock hold(State().lock);
  auto isSignaled = [this] { return isSignaled_; };
  if (milliseconds == INFINITE) {
    State().changed.wait(hold, isSignaled);
  } else if (!isSignaled_ &&
             (milliseconds == 0 ||
              !State().changed.wait_for(hold, std::chrono::milliseconds(milliseconds), isSignaled))) {
    return false;
  }
  if (isAutoReset_) isSignaled_ = false;
  return true;
}

}  // namespace machine
