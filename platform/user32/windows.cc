// windows.cc
//
// No message waits, and no window exists. What is asked about no window fails as on Windows, and a window
// that nobody can have ends the program.
#include <windows.h>

#include "machine/call.h"

using namespace machine;

namespace {

BOOL NoWindow(const char* call, HWND window) {
  EnterCall();
  if (window) Unsupported(call, "windows");
  return Fail(ERROR_INVALID_WINDOW_HANDLE);
}

}  // namespace

BOOL WINAPI PeekMessageW(MSG*, HWND window, UINT, UINT, UINT) {
  EnterCall();
  if (window) Unsupported("PeekMessageW", "windows");
  return FALSE;
}
BOOL WINAPI TranslateMessage(const MSG*) { Unsupported("TranslateMessage", "messages"); }
LRESULT WINAPI DispatchMessageW(const MSG*) { Unsupported("DispatchMessageW", "messages"); }
void WINAPI PostQuitMessage(INT) { Unsupported("PostQuitMessage", "messages"); }

BOOL WINAPI EnumWindows(WNDENUMPROC, LPARAM) {
  EnterCall();
  return TRUE;
}
BOOL WINAPI IsWindowVisible(HWND window) { return NoWindow("IsWindowVisible", window); }
DWORD WINAPI GetWindowThreadProcessId(HWND window, DWORD*) {
  return static_cast<DWORD>(NoWindow("GetWindowThreadProcessId", window));
}
BOOL WINAPI SetWindowTextW(HWND window, const wchar_t*) { return NoWindow("SetWindowTextW", window); }
LRESULT WINAPI SendMessageW(HWND window, UINT, WPARAM, LPARAM) { return NoWindow("SendMessageW", window); }
BOOL WINAPI GetClientRect(HWND window, RECT*) { return NoWindow("GetClientRect", window); }
LONG WINAPI GetWindowLongW(HWND window, INT) { return NoWindow("GetWindowLongW", window); }
LONG WINAPI SetWindowLongW(HWND window, INT, LONG) { return NoWindow("SetWindowLongW", window); }
HWND WINAPI GetParent(HWND window) {
  NoWindow("GetParent", window);
  return nullptr;
}

// Without a window these mean the desktop, which isn't there either.
BOOL WINAPI PostMessageW(HWND, UINT, WPARAM, LPARAM) { Unsupported("PostMessageW", "messages"); }
HDC WINAPI GetDC(HWND) { Unsupported("GetDC", "the desktop"); }
INT WINAPI ReleaseDC(HWND, HDC) { Unsupported("ReleaseDC", "the desktop"); }
INT WINAPI MapWindowPoints(HWND, HWND, POINT*, UINT) { Unsupported("MapWindowPoints", "the desktop"); }
BOOL WINAPI InvalidateRect(HWND, const RECT*, BOOL) { Unsupported("InvalidateRect", "the desktop"); }
