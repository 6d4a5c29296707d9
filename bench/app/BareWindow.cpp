// The least that a Windows program can do: one empty window. start-bench compares the program's start with
// it. With KESTRELON_WITH_CONTROLS the library of the common controls is loaded too, though none is made.
#include "app/base/Win32.h"

#include <commctrl.h>

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, PWSTR, int show) {
#ifdef KESTRELON_WITH_CONTROLS
  const INITCOMMONCONTROLSEX classes{sizeof(classes), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
  ::InitCommonControlsEx(&classes);
#endif
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
