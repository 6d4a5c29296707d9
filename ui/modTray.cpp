#include "ui/modTray.h"

#include <iterator>
#include <utility>

namespace kestrelon::ui {

namespace {
constexpr UINT kIconId = 1;
}

cSysTray::cSysTray()
    : cSysTray([](DWORD message, NOTIFYICONDATAW& data) {
        return ::Shell_NotifyIconW(message, &data) != FALSE;
      }) {}

cSysTray::cSysTray(Notify notify)
    : notify_(std::move(notify)), taskbarCreated_(::RegisterWindowMessageW(L"TaskbarCreated")) {}

void cSysTray::Create(HWND window, UINT callbackMessage) {
  window_ = window;
  callback_ = callbackMessage;
}

NOTIFYICONDATAW cSysTray::Data() const {
  NOTIFYICONDATAW data{};
  data.cbSize = sizeof data;
  data.hWnd = window_;
  data.uID = kIconId;
  data.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
  data.uCallbackMessage = callback_;
  data.hIcon = icon_;
  tip_.copy(data.szTip, std::size(data.szTip) - 1);
  return data;
}

bool cSysTray::Add(HICON icon, const std::wstring& tip) {
  icon_ = icon;
  tip_ = tip;
  NOTIFYICONDATAW data = Data();
  shown_ = notify_(shown_ ? NIM_MODIFY : NIM_ADD, data);
  return shown_;
}

void cSysTray::Remove() {
  if (!std::exchange(shown_, false)) return;
  NOTIFYICONDATAW data = Data();
  notify_(NIM_DELETE, data);
}

bool cSysTray::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == taskbarCreated_ && shown_) {
    NOTIFYICONDATAW data = Data();
    // Some systems send the message with the task bar still there, when the screen changes its DPI: the icon
    // is there as well then and cannot be added.
    shown_ = notify_(NIM_ADD, data) || notify_(NIM_MODIFY, data);
    if (!shown_ && activated) activated();  // nothing else would bring the window back
    return false;                           // others may want to hear of it too
  }
  if (callback_ == 0 || message != callback_ || wParam != kIconId) return false;
  if (shown_ && (lParam == WM_LBUTTONUP || lParam == WM_LBUTTONDBLCLK) && activated) activated();
  return true;
}

}  // namespace kestrelon::ui
