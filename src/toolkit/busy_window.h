// busy_window.h
//
// The application's one small window with a percent ring.
#pragma once
#include "toolkit/gui_window.h"
#include "toolkit/progress_ring.h"

class BusyWindow {
 public:
  int32_t ringId, textId;
  int32_t firstButtonId, secondButtonId;  // below 1 when absent
  int32_t headerId;
  int32_t ringSize;                              // pixels
  uint32_t outerColor, innerColor, footerColor;  // ARGB
  COLORREF textColor;
  uint32_t ringColor;  // ARGB
  int32_t cornerDiameter;
  ProgressRing ring;
  GuiWindow window;
  GuiWindow* owner;  // as given when it was opened

  BusyWindow();
  ~BusyWindow();
};
