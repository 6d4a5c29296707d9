#pragma once

#include "app/base/Win32.h"

#include <string>

#include "ui/win/Handles.h"

namespace kestrelon::ui {

// The arrow in the header of the column by which a list is sorted. The list's header borrows the pictures:
// the object must outlive the list.
class cLVHeaderSortIcons {
 public:
  // Loads "ico\sortascending.ico" and "ico\sortdescending.ico" from the program folder (which ends in a
  // backslash or not). Where one is missing no arrow is ever shown.
  explicit cLVHeaderSortIcons(const std::wstring& programFolder);

  // Marks one column, counted from 0, and clears the arrows of all others. Does nothing unless the list is in
  // report view. The pictures follow the list's DPI: after a change of it, call this again.
  void ShowSortIcon(HWND listView, int column, bool descending);

  // Image 0 is ascending, image 1 descending.
  HIMAGELIST Images() const { return images_.get(); }

 private:
  void Load(unsigned dpi);

  std::wstring folder_;  // of the icon files; ends in a backslash
  unsigned dpi_ = 0;     // that images_ were made for
  win::UniqueImageList images_;
};

}  // namespace kestrelon::ui
