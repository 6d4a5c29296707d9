#pragma once

#include "app/base/Win32.h"

#include <string>

#include "ui/win/Handles.h"

namespace kestrelon::app {

// One running program per data folder: a second one would remake the working database under the first.
class SingleInstance {
 public:
  explicit SingleInstance(const std::wstring& dataFolder);
  // False when another process holds this data folder.
  bool IsFirst() const { return first_; }
  // Asks the process that holds the folder to bring its window to the front.
  void WakeTheOther() const;

  // The message that WakeTheOther() posts to main windows; wParam tells the data folder.
  static UINT WakeMessage();
  WPARAM FolderMark() const { return mark_; }

 private:
  win::Unique<HANDLE, ::CloseHandle> mutex_;
  WPARAM mark_;
  bool first_;
};

// The class of the main window, by which a second start finds it.
inline constexpr const wchar_t* kMainFormClass = L"KestrelonMainForm";

}  // namespace kestrelon::app
