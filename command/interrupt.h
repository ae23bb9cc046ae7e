// interrupt.h
//
// Ctrl+C and the closing of the console: a wish to stop, which the commands look at. The process isn't
// ended in the middle of a file, nor with the hives of other accounts still loaded.
#pragma once
#include <windows.h>

#include <atomic>

#include "operations/stop_word.h"

// While one is alive, the wish is noted instead of ending the process. There is one at a time.
class InterruptGuard {
 public:
  InterruptGuard();
  ~InterruptGuard();
  InterruptGuard(const InterruptGuard&) = delete;
  InterruptGuard& operator=(const InterruptGuard&) = delete;

  static bool IsRequested();

  // The word that a wish sets to 1, for what takes long and asks by itself. It is there for ever.
  static const StopWord* Word();

  // The word that a wish sets to 1, at once if it is there already. Null when it is about to go.
  static void Bind(std::atomic<LONG>* stop);
};
