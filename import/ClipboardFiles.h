#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <string>
#include <vector>

namespace kestrelon::imports {

// The paths of the file list (CF_HDROP) on the clipboard, in its order; folders are among them, empty names
// are passed over. A path is read into 260 units, its end included: of a longer one the first 259 come back.
// Empty when the clipboard holds no file list or another window keeps it open.
std::vector<std::wstring> ReadClipboardFiles(HWND owner);

// Tells a window when the contents of the clipboard change. The window's own procedure sees every message
// first, and its results hold.
//
// The window becomes a clipboard viewer the old way, by SetClipboardViewer, and does nothing else for the
// chain of viewers: it passes no notification on to the next viewer, does not handle WM_CHANGECBCHAIN and
// does not leave the chain; after Remove it merely answers no more. Viewers that registered before it
// therefore hear nothing through it.
class ClipboardHook {
 public:
  ClipboardHook() = default;
  ~ClipboardHook() { Remove(); }
  ClipboardHook(const ClipboardHook&) = delete;
  ClipboardHook& operator=(const ClipboardHook&) = delete;

  // `changed` is called at once too, with the clipboard as it then is; its failures are ignored. Throws
  // std::system_error when the window cannot be hooked. A hook serves one window at a time.
  void Install(HWND window, std::function<void()> changed);
  void Remove();  // does nothing when not installed, or when the window is gone

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                                    DWORD_PTR self) noexcept;
  HWND window_ = nullptr;
  std::function<void()> changed_;
};

}  // namespace kestrelon::imports
