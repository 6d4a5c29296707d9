#pragma once

#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "ui/win/Form.h"
#include "ui/win/Window.h"

namespace kestrelon::test {

// In every program that includes this file an exception that leaves a handler of a window fails the test.
inline const win::LastResort kPreviousLastResort = win::SetLastResort(
    [](const char* what) { ADD_FAILURE() << "an exception left a window's handler: " << what; });

// Handles messages until the condition holds; false when that takes longer than `milliseconds`.
inline bool PumpUntil(const std::function<bool()>& condition, DWORD milliseconds = 5000) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  for (;;) {
    win::DoEvents();
    if (condition()) return true;
    const ULONGLONG now = GetTickCount64();
    if (now >= end) return false;
    MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(std::min<ULONGLONG>(end - now, 20)),
                                QS_ALLINPUT, MWMO_INPUTAVAILABLE);
  }
}

// Runs an action once, inside whatever message loop runs next, as soon as a window that passes `matches` is
// visible on this thread: the way into modal windows.
class OnWindow {
 public:
  OnWindow(std::function<bool(HWND)> matches, std::function<void(HWND)> act)
      : matches_(std::move(matches)), act_(std::move(act)), timer_(SetTimer(nullptr, 0, 15, &Tick)) {
    Live().push_back(this);
  }
  ~OnWindow() {
    if (timer_ != 0) KillTimer(nullptr, timer_);
    std::erase(Live(), this);
  }
  OnWindow(const OnWindow&) = delete;
  OnWindow& operator=(const OnWindow&) = delete;
  bool Done() const { return done_; }

 private:
  static std::vector<OnWindow*>& Live() {
    static std::vector<OnWindow*> live;
    return live;
  }
  static void CALLBACK Tick(HWND, UINT, UINT_PTR id, DWORD) {
    const auto self =
        std::find_if(Live().begin(), Live().end(), [id](OnWindow* o) { return o->timer_ == id; });
    if (self != Live().end()) (*self)->Look();
  }
  void Look() {
    std::pair<OnWindow*, HWND> found{this, nullptr};
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND window, LPARAM parameter) -> BOOL {
          auto& result = *reinterpret_cast<std::pair<OnWindow*, HWND>*>(parameter);
          if (!IsWindowVisible(window) || !result.first->matches_(window)) return TRUE;
          result.second = window;
          return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    if (found.second == nullptr) return;
    done_ = true;
    KillTimer(nullptr, std::exchange(timer_, UINT_PTR{0}));
    act_(found.second);
  }

  std::function<bool(HWND)> matches_;
  std::function<void(HWND)> act_;
  UINT_PTR timer_;
  bool done_ = false;
};

// The same for the system's own dialogs: message boxes, the Open dialog, the folder picker.
class OnDialog : public OnWindow {
 public:
  explicit OnDialog(std::function<void(HWND)> act)
      : OnWindow(
            [](HWND window) {
              wchar_t name[16] = {};
              GetClassNameW(window, name, 16);
              return lstrcmpW(name, L"#32770") == 0;
            },
            std::move(act)) {}
};

inline std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)), L'\0');
  text.resize(
      static_cast<std::size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()) + 1)));
  return text;
}

}  // namespace kestrelon::test
