#pragma once

#include "app/base/Win32.h"

#include <string>
#include <vector>

namespace kestrelon::win {

// The status bar with three panels, counted from 1.
class StatusBar {
 public:
  void Create(HWND parent, UINT id);
  HWND Handle() const { return handle_; }
  std::wstring PanelText(int panel) const;
  void SetPanelText(int panel, const std::wstring& text);
  // The panel's text from now on, but not shown before the next SetPanelText: the control draws at once what
  // it is given, which takes longer than most steps of a long operation.
  void KeepPanelText(int panel, const std::wstring& text);
  // Pixels; the last panel takes the rest of the bar.
  void SetPanelWidths(const std::vector<int>& allButTheLast);
  int Height() const;

 private:
  HWND handle_ = nullptr;
  std::vector<std::wstring> texts_;  // of the panels, whole; the control may cut what it shows
  std::vector<bool> behind_;         // the control does not have the panel's text yet
};

}  // namespace kestrelon::win
