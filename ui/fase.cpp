#include "ui/fase.h"

namespace kestrelon::ui {

bool MakeTranslucent(HWND window, BYTE alpha) {
  const LONG_PTR before = ::GetWindowLongPtrW(window, GWL_EXSTYLE);
  ::SetWindowLongPtrW(window, GWL_EXSTYLE, before | WS_EX_LAYERED);
  if (::SetLayeredWindowAttributes(window, 0, alpha, LWA_ALPHA)) return true;
  // A layered window without attributes would not be seen.
  ::SetWindowLongPtrW(window, GWL_EXSTYLE, before);
  return false;
}

}  // namespace kestrelon::ui
