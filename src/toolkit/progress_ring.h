// progress_ring.h
//
// The ring that shows a percentage or turns, on a picture and on the task bar's button.
#pragma once
#include <windows.h>

#include <cstdint>

class GuiWindow;
struct ITaskbarList3;

// What the thread that turns the ring works from. The thread that has the window writes it while none runs,
// and `stop` at any time.
struct RingJob {
  HWND window;
  uint32_t penColor;  // ARGB
  COLORREF backColor;
  int32_t size;  // pixels
  int32_t speed;
  int32_t stop;  // the thread ends when it isn't 0
};

struct ProgressRing {
  int32_t pictureId;                        // the picture that shows it; -1 none
  int32_t mode;                             // 0 idle, 1 percentage, 2 turning
  int32_t value;                            // the last percentage, or the last speed
  int32_t size;                             // edge in pixels
  uint32_t penColor, textColor, backColor;  // ARGB: arc; digits and turning arc; behind the ring
  GuiWindow* window;                        // of the picture; null if there is none
  RingJob job;
  HANDLE thread;           // INVALID_HANDLE_VALUE if there is none
  ITaskbarList3* taskbar;  // null if it couldn't be had

  ProgressRing();
};
