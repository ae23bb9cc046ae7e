#include "foundation/waiting_messages.h"

#include <windows.h>

bool HandleWaitingMessages() {
  bool handled = false;
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {
      // It ends the loop that waits around this work, and is gone once it was taken.
      PostQuitMessage(static_cast<int>(message.wParam));
      break;
    }
    TranslateMessage(&message);
    DispatchMessageW(&message);
    handled = true;
  }
  return handled;
}
