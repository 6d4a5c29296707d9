#include "app/CloseAllWindows.h"

#include "app/base/Win32.h"

#include <vector>

#include "ui/win/Window.h"

namespace kestrelon::app {
namespace {

// In Z order: a window stands in front of the one that owns it.
std::vector<win::Window*> OpenWindows() {
  std::vector<win::Window*> windows;
  ::EnumThreadWindows(
      ::GetCurrentThreadId(),
      [](HWND handle, LPARAM list) -> BOOL {
        if (win::Window* window = win::Window::Of(handle)) {
          reinterpret_cast<std::vector<win::Window*>*>(list)->push_back(window);
        }
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&windows));
  return windows;
}

}  // namespace

void CloseAllWindows(bool force) {
  // One at a time: a window that goes takes those with it that it owns.
  for (std::vector<win::Window*> open = OpenWindows(); !open.empty();) {
    open.front()->Destroy();
    std::vector<win::Window*> left = OpenWindows();
    if (left.size() >= open.size()) break;
    open = std::move(left);
  }
  if (force || OpenWindows().empty()) ::PostQuitMessage(0);
}

}  // namespace kestrelon::app
