// control_handler.cc
//
// Ctrl+C: the signals become calls of the program's handlers on a thread of their own, as on Windows.
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <unistd.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <vector>

#include "machine/call.h"

using namespace machine;

namespace {

// In a structure, because templates would forget how the routine is called.
struct Handler {
  PHANDLER_ROUTINE routine;
};

struct ControlState {
  std::mutex lock;
  std::vector<Handler> handlers;  // the last one is asked first
  bool isListening = false;
};

// Never destructed: the listening thread outlives the objects of the program.
ControlState& State() {
  static ControlState& state = *new ControlState;
  return state;
}

sem_t signalsCame;
std::atomic<int> lastSignal{0};

void NoteSignal(int number) {
  lastSignal = number;
  sem_post(&signalsCame);
}

bool AnyHandlerTakes(DWORD event) {
  std::vector<Handler> handlers;
  {
    std::lock_guard hold(State().lock);
    handlers = State().handlers;
  }
  return std::any_of(handlers.rbegin(), handlers.rend(),
                     [event](const Handler& handler) { return handler.routine(event) != FALSE; });
}

void* Listen(void*) {
  for (;;) {
    while (sem_wait(&signalsCame) != 0) {
    }
    if (AnyHandlerTakes(CTRL_C_EVENT)) continue;
    // Nobody took it: the process ends as it would have without us.
    int number = lastSignal;
    signal(number, SIG_DFL);
    kill(getpid(), number);
  }
  return nullptr;
}

bool StartListening() {
  pthread_t listener;
  if (sem_init(&signalsCame, 0, 0) != 0 || pthread_create(&listener, nullptr, Listen, nullptr) != 0) {
    return false;
  }
  pthread_detach(listener);
  struct sigaction action = {};
  action.sa_handler = NoteSignal;
  action.sa_flags = SA_RESTART;  // no call of the layer is to break off because of it
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  return true;
}

}  // namespace

BOOL WINAPI SetConsoleCtrlHandler(PHANDLER_ROUTINE handler, BOOL add) {
  EnterCall();
  if (!handler) Unsupported("SetConsoleCtrlHandler", "to ignore Ctrl+C");
  ControlState& state = State();
  std::lock_guard hold(state.lock);
  if (add) {
    if (!state.isListening && !StartListening()) return Fail(ERROR_NOT_ENOUGH_MEMORY);
    state.isListening = true;
    state.handlers.push_back({handler});
    return TRUE;
  }
  auto found = std::find_if(state.handlers.rbegin(), state.handlers.rend(),
                            [handler](const Handler& known) { return known.routine == handler; });
  if (found == state.handlers.rend()) return Fail(ERROR_INVALID_PARAMETER);
  state.handlers.erase(std::next(found).base());
  return TRUE;
}
