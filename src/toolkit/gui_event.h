// gui_event.h
//
// The one record into which the messages of all windows are turned.
#pragma once
#include <windows.h>

#include <cstdint>

class GuiWindow;

struct GuiEvent {
  int32_t code;      // 0 none, above 0 a control id, below 0 a kind of event
  HWND window;       // the top-level window or panel that the message was for
  uint32_t message;  // the message that gave the event
  int32_t detail;
  intptr_t data;
  MSG msg;            // the raw message that was fetched last
  GuiWindow* source;  // the window that wrote the event
  GuiWindow* active;  // the window that gets accelerators and dialog keys
  bool pending;       // written outside of a pump step and still to be delivered

  GuiEvent();
};
