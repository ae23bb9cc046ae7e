// waitable.h
//
// What a wait can be made on: a thread, a process, an event.
#pragma once
#include "machine/handles.h"

namespace machine {

// Signalled or not, under one lock for all of them, so that a wait may look at several at once.
// Any thread may call any of these.
class Waitable : public Object {
 public:
  explicit Waitable(bool isSignaled = false, bool isAutoReset = false)
      : isSignaled_(isSignaled), isAutoReset_(isAutoReset) {}

  void Signal();
  void Unsignal();
  bool IsSignaled() const;  // takes nothing, also of an automatic one

  // Waits until it is signalled, at most `milliseconds` (INFINITE: for ever). An automatic one is not
  // signalled any more when this gives true. False: the time is over.
  bool Wait(DWORD milliseconds);

 private:
  bool isSignaled_;
  bool isAutoReset_;
};

}  // namespace machine
