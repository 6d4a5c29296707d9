#pragma once

#include "app/base/Win32.h"

#include <shellapi.h>

#include <functional>
#include <string>

namespace kestrelon::ui {

// The program's icon in the notification area.
class cSysTray {
 public:
  // Shell_NotifyIconW; tests hand in another function.
  using Notify = std::function<bool(DWORD message, NOTIFYICONDATAW& data)>;

  cSysTray();
  explicit cSysTray(Notify notify);
  ~cSysTray() { Remove(); }
  cSysTray(const cSysTray&) = delete;
  cSysTray& operator=(const cSysTray&) = delete;

  // The window that hears of the icon, by a message of its own choice (from WM_APP on).
  void Create(HWND window, UINT callbackMessage);

  // Shows the icon, which is borrowed, with a tip: the program's title, of which 127 units are shown. False
  // when there is no notification area; the caller must not hide its window then, since nothing would bring
  // it back.
  bool Add(HICON icon, const std::wstring& tip);
  void Remove();  // does nothing when the icon is not shown
  bool IsShown() const { return shown_; }

  // A click or a double click with the left button, or the loss of the icon: the window is to come back. A
  // click is not raised any more once the icon has been removed.
  std::function<void()> activated;

  // To be shown every message of the window. True when it was the icon's callback; after a restart of the
  // task bar the icon is added again.
  bool OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  NOTIFYICONDATAW Data() const;

  Notify notify_;
  HWND window_ = nullptr;
  UINT callback_ = 0;
  UINT taskbarCreated_ = 0;
  HICON icon_ = nullptr;
  std::wstring tip_;
  bool shown_ = false;
};

}  // namespace kestrelon::ui
