// control_record.h
//
// One row of a window's table of controls, and what the row keeps for its kind.
#pragma once
#include <windows.h>

#include <cstdint>

enum ControlKind : int32_t {
  KindButton = 3,
  KindCombo = 5,
  KindReadOnlyText = 9,
  KindIcon = 11,
  KindEdit = 12,
  KindLabel = 13,
  KindListView = 15,
  KindSubmenu = 16,
  KindMenuItem = 17,
  KindPicture = 19,
  KindProgressBar = 20,
  KindLink = 31,
  KindImageButton = 34,
  KindCheckBox = 35,     // two rows: image and label
  KindRadioButton = 36,  // the same
  KindPanel = 40,
};

enum ControlFlags : uint32_t {
  FlagOpaque = 0x0400,          // paints its whole rectangle; the window's erase leaves it out
  FlagDoubleBuffered = 0x0800,  // paints by way of a bitmap
  FlagDragsWindow = 0x1000,
  FlagRepaintParent = 0x8000,  // after layout the parent's rectangle below it is invalidated
};

struct ImageButtonData {
  int32_t state;      // index of the image that shows
  HBITMAP images[4];  // normal, hover, focus, disabled; owned
};

// Of a check box or radio button, shared by its two rows.
struct ToggleData {
  int32_t imageId, labelId;
  int32_t state;                         // 4 checked, 8 unchecked
  HBITMAP checkedImage, uncheckedImage;  // not owned
  COLORREF normalColor, hoverColor;
};

struct PanelChildren {
  int32_t count;
  int32_t ids[255];
};

struct ControlRecord {
  int32_t kind;  // ControlKind
  HWND handle;   // null for menu items
  HMENU menu;    // of a control its popup, of a menu item the menu that holds it, of a submenu its own popup
  int32_t id;    // the row's index; 0 marks a free row
  HBRUSH backBrush;             // owned; null: none
  HFONT font;                   // owned; null: none
  HCURSOR cursor;               // the system's; null: none
  int32_t textColor;            // COLORREF
  int32_t backColor;            // COLORREF; -1 text without a background, -2 nothing is painted behind it
  int32_t x, y, width, height;  // as designed, in the parent's client coordinates
  int32_t parentWidth, parentHeight;  // of the window's client area at that time
  uint32_t flags;                     // ControlFlags and anchors
  union {
    HICON icon;               // KindIcon; owned
    HBITMAP picture;          // KindPicture; owned
    ImageButtonData* button;  // KindImageButton; owned
    ToggleData* toggle;       // KindCheckBox, KindRadioButton; the two rows own it together
    PanelChildren* children;  // KindPanel; owned
  } extra;
};
