// pictures.h
//
// The pictures that the application object owns: how the check box is painted, and how each kind is
// given back. Programs without windows own none.
#pragma once
#include <windows.h>

#include <cstdint>

namespace Gdiplus {
class Image;
}

// A new picture of a check box, checked (1) or not (0), which ReleaseBitmap frees. Null if there is none.
HBITMAP PaintCheckBox(int32_t checked);

// Each takes null, too.
void ReleaseBitmap(HBITMAP bitmap);
void ReleaseImage(Gdiplus::Image* image);
void ReleaseIcon(HICON icon);
