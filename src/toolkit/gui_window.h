// gui_window.h
//
// A top-level window with its table of controls.
#pragma once
#include <windows.h>
#include <shellapi.h>

#include <cstdint>

#include "foundation/wstring.h"
#include "toolkit/control_record.h"
#include "toolkit/gui_event.h"

class GuiWindow {
 public:
  GuiEvent ownEvent;        // used only where nobody gives the window a shared record
  ControlRecord* controls;  // owned; the row's index is the control's id, row 0 is never used
  int32_t lastId;
  int32_t capacity;
  int32_t followerCount;
  HWND followers[48];  // boxes and tips that move along with this window
  WString text;        // scratch: dropped files, last link, control texts
  HINSTANCE instance;
  int32_t clientX, clientY, clientWidth, clientHeight;  // pixels, at the last layout
  double fontSize;                                      // points, for controls created next
  int32_t fontWeight;
  uint8_t fontFlags;  // 1 plain, 2 italic, 4 underline, 8 strike-out
  wchar_t fontFace[32];
  uint8_t fontQuality;
  GuiEvent* eventRecord;  // where events go; begins as `ownEvent`
  HBITMAP backgroundBitmap;
  HBITMAP savedBitmap;
  HDC memoryDC;
  int32_t defaultButtonId;
  uint32_t defaultFlags;
  int32_t currentPanelId;
  HBRUSH backgroundBrush;
  HBRUSH controlBrush;
  int32_t backgroundMode;  // 0 solid brush, 1 image
  ATOM classAtom;
  HDROP dropHandle;
  POINT dropPoint;
  int32_t defaultTextColor;  // COLORREF, -1 for the system's button text
  int32_t defaultBackColor;  // COLORREF, -1 for none
  HWND hwnd;                 // null when closed
  HWND currentParent;
  HWND tooltip;
  HACCEL accelerators;
  bool classExisted;
  int32_t cornerDiameter;
  uint32_t borderWidth;
  COLORREF borderColor;
  int32_t hoveredId;

  GuiWindow();
  GuiWindow(const GuiWindow&) = delete;
  GuiWindow& operator=(const GuiWindow&) = delete;
  ~GuiWindow();

  void Hide();
  void Destroy();
};
