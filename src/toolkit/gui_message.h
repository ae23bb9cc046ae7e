// gui_message.h
//
// The application's one message box or tip.
#pragma once
#include "toolkit/gui_window.h"

class GuiMessage {
 public:
  int32_t textId;
  int32_t firstButtonId, secondButtonId, thirdButtonId;  // -1 if there is none
  int32_t type;                                          // -1 when closed
  uint32_t outerColor, innerColor, footerColor;          // ARGB
  COLORREF textColor;
  int32_t cornerDiameter;  // pixels
  GuiEvent* eventRecord;   // the owner's, at the last time that it was shown
  GuiWindow window;

  GuiMessage();
  ~GuiMessage();
};
