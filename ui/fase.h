#pragma once

#include "app/base/Win32.h"

namespace kestrelon::ui {

// Makes a top-level window translucent: alpha 255 is opaque, 0 is not seen at all. False when the system
// cannot do it; the window is then as it was.
bool MakeTranslucent(HWND window, BYTE alpha);

}  // namespace kestrelon::ui
