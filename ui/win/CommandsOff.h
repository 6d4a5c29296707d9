#pragma once

#include "app/base/Win32.h"

#include <initializer_list>
#include <string_view>
#include <vector>

#include "ui/win/MainParts.h"

namespace kestrelon::win {

// For the time of a long operation: the given menus of the bar, the tree, the list and the toolbar are
// disabled, and the main window does not close: a request to close it is remembered in
// MainParts::closeRequested, for the operation to stop early, and is carried out at the end. On every way out
// all of it is enabled again, and the keyboard focus goes back to where it was.
class CommandsOff {
 public:
  CommandsOff(MainParts& parts, std::initializer_list<const wchar_t*> menus);
  ~CommandsOff();
  CommandsOff(const CommandsOff&) = delete;
  CommandsOff& operator=(const CommandsOff&) = delete;

 private:
  void Enable(bool enabled);
  MainParts& parts_;
  std::vector<const wchar_t*> menus_;
  HWND focus_;
};

// Shows a step of a long operation in panel 1. The text is always set; it is painted at once when the last
// painting is some time ago, since painting every step would take longer than the steps.
class ProgressText {
 public:
  explicit ProgressText(StatusBar& statusBar) : statusBar_(statusBar) {}
  ~ProgressText();
  ProgressText(const ProgressText&) = delete;
  ProgressText& operator=(const ProgressText&) = delete;
  void Show(const std::wstring& text);
  // The same for thousands of short steps: the panel's text is always the last one, but the control, which
  // draws what it is given, gets it only when the last painting is some time ago, and at the end.
  void ShowInPassing(const std::wstring& text);

 private:
  StatusBar& statusBar_;
  ULONGLONG painted_ = 0;  // tick count, milliseconds
};

}  // namespace kestrelon::win
