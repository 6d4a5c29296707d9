#include "app/Splitter.h"

#include <windowsx.h>

namespace kestrelon::app {

void Splitter::CreateIn(HWND parent) {
  win::WindowSpec spec;
  spec.className = L"KestrelonSplitter";
  spec.style = WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS;
  spec.x = spec.y = spec.width = spec.height = 0;
  spec.owner = parent;
  Create(spec);
}

void Splitter::Release() {
  if (!dragging_) return;
  dragging_ = false;
  ::InvalidateRect(Handle(), nullptr, TRUE);
  if (events.mouseUp) events.mouseUp();
}

LRESULT Splitter::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_SETCURSOR: ::SetCursor(::LoadCursorW(nullptr, IDC_SIZEWE)); return TRUE;
    case WM_ERASEBKGND: {
      RECT area;
      ::GetClientRect(Handle(), &area);
      ::FillRect(reinterpret_cast<HDC>(wParam), &area,
                 ::GetSysColorBrush(dragging_ ? COLOR_BTNSHADOW : COLOR_BTNFACE));
      return TRUE;
    }
    case WM_LBUTTONDOWN:
      dragging_ = true;
      ::SetCapture(Handle());
      ::InvalidateRect(Handle(), nullptr, TRUE);
      if (events.mouseDown) events.mouseDown();
      return 0;
    case WM_MOUSEMOVE:
      if (dragging_ && events.mouseMove) events.mouseMove(GET_X_LPARAM(lParam));
      return 0;
    case WM_LBUTTONUP:
      if (::GetCapture() == Handle()) ::ReleaseCapture();
      Release();
      return 0;
    case WM_CAPTURECHANGED: Release(); return 0;
  }
  return Window::OnMessage(message, wParam, lParam);
}

}  // namespace kestrelon::app
