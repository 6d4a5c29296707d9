#pragma once

#include "app/base/Win32.h"

#include <string>

#include "ui/win/Handles.h"

namespace kestrelon::app {

// One running program per data folder, however its path is spelled: a second one would remake the working
// database under the first. Knows the programs of this session of Windows; DataFolderLock knows all.
class SingleInstance {
 public:
  explicit SingleInstance(const std::wstring& dataFolder);
  ~SingleInstance();  // in the thread that made it
  SingleInstance(const SingleInstance&) = delete;
  SingleInstance& operator=(const SingleInstance&) = delete;

  // False while another process holds this data folder.
  bool IsFirst() const { return first_; }
  // Brings the window of the process that holds the folder to the front, and gives false then. That process
  // may be just starting or just ending and have no window: waits for either, about `milliseconds`, and
  // gives true when it has gone and this one is the first now.
  bool BecomeFirst(DWORD milliseconds);

  // What a main window is asked by; wParam tells the data folder. The window that serves this folder comes to
  // the front and answers with kAwake.
  static UINT WakeMessage();
  static constexpr LRESULT kAwake = 1;
  WPARAM FolderMark() const { return mark_; }

 private:
  bool Take(DWORD milliseconds);  // sets first_
  bool WakeTheOther() const;      // did a window answer?

  win::Unique<HANDLE, ::CloseHandle> mutex_;
  WPARAM mark_;
  bool first_ = false;
};

// Holds a data folder for this program alone, for the life of the object, by a file in it that is open
// without sharing: also against programs of other sessions of the same user, whose windows cannot be seen
// from here.
class DataFolderLock {
 public:
  DataFolderLock() = default;
  ~DataFolderLock();
  DataFolderLock(const DataFolderLock&) = delete;
  DataFolderLock& operator=(const DataFolderLock&) = delete;
  // False when another program holds the folder. True also where the file cannot be made for another reason:
  // what is wrong with the folder then, start-up finds out.
  bool Take(const std::wstring& dataFolder);

 private:
  std::wstring path_;
  win::Unique<HANDLE, ::CloseHandle> file_;
};

// The class of the main window, by which a second start finds it.
inline constexpr const wchar_t* kMainFormClass = L"KestrelonMainForm";

}  // namespace kestrelon::app
