// The least that a Windows program can do: one empty window. start-bench compares the program's start with
// it.
#include "app/base/Win32.h"

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
  WNDCLASSW windowClass{};
  windowClass.lpfnWndProc = [](HWND window, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
    if (message == WM_DESTROY) ::PostQuitMessage(0);
    return ::DefWindowProcW(window, message, wParam, lParam);
  };
  windowClass.hInstance = instance;
  windowClass.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
  windowClass.hbrBackground = ::GetSysColorBrush(COLOR_WINDOW);
  windowClass.lpszClassName = L"BareWindow";
  ::RegisterClassW(&windowClass);
  const HWND window = ::CreateWindowExW(0, windowClass.lpszClassName, L"bare", WS_OVERLAPPEDWINDOW, 50, 50,
                                        900, 560, nullptr, nullptr, instance, nullptr);
  ::ShowWindow(window, show);
  ::UpdateWindow(window);
  MSG message;
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
    ::TranslateMessage(&message);
    ::DispatchMessageW(&message);
  }
  return 0;
}
