#include "operations/status_lines.h"

#include <commctrl.h>
#include <shlwapi.h>

namespace {

constexpr int32_t kMostPathUnits = 512;
constexpr UINT kPathWidth = 430;  // pixels

// The window's background shows through the line, so its parent has to paint there again.
void SetLine(HWND line, const wchar_t* text) {
  if (!line) return;
  SetWindowTextW(line, text);
  RECT area;
  HWND parent = GetParent(line);
  if (!parent || !GetClientRect(line, &area)) return;
  MapWindowPoints(line, parent, reinterpret_cast<POINT*>(&area), 2);
  InvalidateRect(parent, &area, TRUE);
}

// Shortens in the middle what doesn't fit the line.
void SetPathLine(HWND line, HWND measure, const wchar_t* word, const wchar_t* path) {
  if (!line) return;
  WString whole;
  whole.Concat(word, path);
  WString text;
  text.Reserve(kMostPathUnits + MAX_PATH, whole.CStr());
  text.Truncate(text.Length() < kMostPathUnits ? text.Length() : kMostPathUnits);
  HDC dc = measure ? GetDC(measure) : nullptr;
  if (dc) {
    PathCompactPathW(dc, text.CStr(), kPathWidth);
    ReleaseDC(measure, dc);
  }
  SetLine(line, text.CStr());
}

void SetMarquee(HWND bar, bool isOn) {
  if (!bar) return;
  LONG style = GetWindowLongW(bar, GWL_STYLE);
  if (isOn) {
    SetWindowLongW(bar, GWL_STYLE, style | PBS_MARQUEE);
    SendMessageW(bar, PBM_SETMARQUEE, 1, 0);
  } else {
    SendMessageW(bar, PBM_SETMARQUEE, 0, 0);
    SetWindowLongW(bar, GWL_STYLE, style & ~PBS_MARQUEE);
    SendMessageW(bar, PBM_SETPOS, 0, 0);
  }
}

}  // namespace

void ShowCounting(const OperationContext& context, const wchar_t* source, const wchar_t* target) {
  SetPathLine(context.firstLine, context.firstLine, L"Source:", source);
  SetPathLine(context.secondLine, context.firstLine, L"Target:", target);
  SetLine(context.thirdLine, L"Enumerating the items to copy, please wait...");
  SetMarquee(context.bar, true);
}

void ShowAccountCreation(const OperationContext& context, const wchar_t* original, const wchar_t* target) {
  SetLine(context.firstLine, (L"Original user account: " + WString(original)).CStr());
  SetLine(context.secondLine, (L"Target user account: " + WString(target)).CStr());
  SetLine(context.thirdLine, L"Creating and loading the new user account, please wait...");
}

void ShowCopying(const OperationContext& context) {
  SetMarquee(context.bar, false);
  SetLine(context.thirdLine, L"Copying files from source to destination...");
}
