#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>

#include <string>
#include <vector>

#include "ui/win/Handles.h"

namespace kestrelon::win {

// The toolbar. Buttons count from 1; separators are counted too.
class Toolbar {
 public:
  struct Button {
    UINT id = 0;    // command identifier; 0 for a separator
    int image = 0;  // position in the image list, from 0
    std::wstring tip;
  };
  // Flat, with tooltips; the buttons are as large as the image list's pictures ask.
  void Create(HWND parent, UINT id, const std::vector<Button>& buttons, UniqueImageList images);
  void SetImages(UniqueImageList images);  // on a new DPI
  HWND Handle() const { return handle_; }
  void Enable(int button, bool enabled);
  bool IsEnabled(int button) const;
  void SetTip(int button, const std::wstring& text);
  const std::wstring& Tip(int button) const { return buttons_[static_cast<std::size_t>(button) - 1].tip; }
  int Height() const;
  void AutoSize();
  // TTN_GETDISPINFO of the toolbar's tooltips, from the parent's WM_NOTIFY. True when it was one of ours.
  bool OnNotify(NMHDR& header);

 private:
  HWND handle_ = nullptr;
  std::vector<Button> buttons_;
  UniqueImageList images_;
};

}  // namespace kestrelon::win
