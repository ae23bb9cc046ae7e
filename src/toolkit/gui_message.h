// gui_message.h
//
// The application's one message box or tip.
#pragma once
#include "toolkit/gui_window.h"

enum MessageType : int32_t {
  kMessageOk = 0,
  kMessageYesNo = 1,
  kMessageOkCancel = 2,
  kMessageYesNoCancel = 3,
  kMessageTip = 4,  // no buttons
};

class GuiMessage {
 public:
  int32_t textId;
  int32_t firstButtonId, secondButtonId, thirdButtonId;  // -1 if there is none
  int32_t type;                                          // MessageType; -1 when closed
  uint32_t outerColor, innerColor, footerColor;          // ARGB
  COLORREF textColor;
  int32_t cornerDiameter;  // pixels
  GuiEvent* eventRecord;   // the owner's, at the last time that it was shown
  GuiWindow window;

  GuiMessage();
  ~GuiMessage();
};
