// gui_event.h
//
// The one record into which the messages of all windows are turned.
#pragma once
#include <windows.h>

#include <cstdint>

class GuiWindow;

// What a code below 0 stands for.
enum GuiEventCode : int32_t {
  EvSized = -4,
  EvFilesDropped = -5,
  EvQuit = -6,
  EvMinimize = -7,
  EvRestore = -8,
  EvMaximize = -9,
  EvMouseDown = -10,
  EvMouseUp = -11,
  EvRightDown = -12,
  EvRightUp = -13,
  EvDoubleClick = -14,
  EvRightDoubleClick = -15,
  EvMouseMove = -16,
  EvWheel = -17,
  EvFrameDoubleClick = -18,
  EvActivated = -19,
  EvDeactivated = -20,
  EvHover = -21,
  EvContextMenu = -22,
  EvFrameMouseLeave = -23,
  EvMoving = -24,
  EvMoved = -25,
  EvReturn = -26,
  EvFrameDown = -27,
  EvFrameUp = -28,
  EvFrameActive = -29,
  EvFrameInactive = -30,
  EvEndSession = -31,
  EvItemSelected = -45,
  EvItemDeselected = -46,
  EvItemChecked = -47,
  EvItemUnchecked = -48,
  EvItemDeleted = -49,
  EvScrollBegin = -50,
  EvScrollEnd = -51,
  EvItemFocusLost = -52,
  EvItemRenamed = -53,
  EvColumnClick = -54,
  EvComboSelected = -65,
  EvComboOpened = -66,
  EvComboClosed = -67,
  EvComboFocused = -68,
  EvComboDoubleClick = -69,
  EvComboEdited = -70,
  EvEditUpdate = -75,
  EvEditChanged = -76,
  EvEditFocused = -77,
  EvEditBlurred = -78,
  EvChar = -201,
  EvMenuLoopEnter = -206,
  EvMenuLoopExit = -207,
  EvDeviceChange = -208,
  EvQueueEnded = -300,
};

struct GuiEvent {
  int32_t code;      // 0 none, above 0 a control's id, below 0 a GuiEventCode
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
