// no_windows.cc
//
// What AppObject's members for windows need to come and go in a program that has none: they are never
// created, so there is nothing to close and nothing to give back. The one file here that includes
// headers of the toolkit.
#include "toolkit/busy_window.h"
#include "toolkit/gui_event.h"
#include "toolkit/gui_message.h"
#include "toolkit/gui_window.h"
#include "toolkit/pictures.h"

GuiEvent::GuiEvent()
    : code(0),
      window(nullptr),
      message(0),
      detail(0),
      data(0),
      msg(),
      source(nullptr),
      active(nullptr),
      pending(false) {}

GuiWindow::GuiWindow()
    : controls(nullptr),
      lastId(0),
      capacity(0),
      followerCount(0),
      followers(),
      instance(nullptr),
      clientX(0),
      clientY(0),
      clientWidth(0),
      clientHeight(0),
      fontSize(0),
      fontWeight(0),
      fontFlags(0),
      fontFace(),
      fontQuality(0),
      eventRecord(&ownEvent),
      backgroundBitmap(nullptr),
      savedBitmap(nullptr),
      memoryDC(nullptr),
      defaultButtonId(0),
      defaultFlags(0),
      currentPanelId(0),
      backgroundBrush(nullptr),
      controlBrush(nullptr),
      backgroundMode(0),
      classAtom(0),
      dropHandle(nullptr),
      dropPoint(),
      defaultTextColor(-1),
      defaultBackColor(-1),
      hwnd(nullptr),
      currentParent(nullptr),
      tooltip(nullptr),
      accelerators(nullptr),
      classExisted(false),
      cornerDiameter(0),
      borderWidth(0),
      borderColor(0),
      hoveredId(0) {}

GuiWindow::~GuiWindow() = default;

void GuiWindow::Hide() {}
void GuiWindow::Destroy() {}

GuiMessage::GuiMessage()
    : textId(0),
      firstButtonId(-1),
      secondButtonId(-1),
      thirdButtonId(-1),
      type(-1),
      outerColor(0),
      innerColor(0),
      footerColor(0),
      textColor(0),
      cornerDiameter(0),
      eventRecord(nullptr) {}

GuiMessage::~GuiMessage() = default;

ProgressRing::ProgressRing()
    : pictureId(-1),
      mode(0),
      value(0),
      size(0),
      penColor(0),
      textColor(0),
      backColor(0),
      window(nullptr),
      job(),
      thread(INVALID_HANDLE_VALUE),
      taskbar(nullptr) {}

BusyWindow::BusyWindow()
    : ringId(0),
      textId(0),
      firstButtonId(0),
      secondButtonId(0),
      headerId(0),
      ringSize(0),
      outerColor(0),
      innerColor(0),
      footerColor(0),
      textColor(0),
      ringColor(0),
      cornerDiameter(0),
      owner(nullptr) {}

BusyWindow::~BusyWindow() = default;

HBITMAP PaintCheckBox(int32_t) { return nullptr; }
void ReleaseBitmap(HBITMAP) {}
void ReleaseImage(Gdiplus::Image*) {}
void ReleaseIcon(HICON) {}
