#include "interrupt.h"

#include <mutex>

namespace {

std::mutex boundMutex;
std::atomic<LONG>* boundStop = nullptr;  // under the mutex, so that it isn't written to once it is gone
StopWord isRequested{0};
std::atomic<bool> isGuarded{false};

void Request() {
  isRequested = 1;
  const std::lock_guard<std::mutex> lock(boundMutex);
  if (boundStop != nullptr) *boundStop = 1;
}

BOOL WINAPI OnControlEvent(DWORD event) {
  Request();
  // After these the system ends the process as soon as the handler returns, and by force after a few
  // seconds; until then the run may come to its end.
  if (event == CTRL_CLOSE_EVENT || event == CTRL_LOGOFF_EVENT || event == CTRL_SHUTDOWN_EVENT) {
    for (int wait = 0; wait < 600 && isGuarded; ++wait) Sleep(50);
  }
  return TRUE;
}

}  // namespace

InterruptGuard::InterruptGuard() {
  isRequested = 0;
  isGuarded = true;
  SetConsoleCtrlHandler(OnControlEvent, TRUE);
}

InterruptGuard::~InterruptGuard() {
  Bind(nullptr);
  SetConsoleCtrlHandler(OnControlEvent, FALSE);
  isGuarded = false;
}

bool InterruptGuard::IsRequested() { return IsStopAsked(Word()); }

const StopWord* InterruptGuard::Word() { return &isRequested; }

void InterruptGuard::Bind(std::atomic<LONG>* stop) {
  const std::lock_guard<std::mutex> lock(boundMutex);
  boundStop = stop;
  if (stop != nullptr && IsRequested()) *stop = 1;
}
