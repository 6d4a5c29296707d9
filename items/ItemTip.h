#pragma once

#include "app/base/Win32.h"

#include <optional>
#include <string>

#include "ui/CTooltip.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

// The item information tip: a balloon for the row under the pointer while `meu_ShowItemInfo` is checked. Its
// title is the row's file name, its text the file's information.
class ItemTip {
 public:
  // The pointer is at this place of the list (client pixels). A new balloon is built only for another row
  // than the last.
  void MouseMove(win::MainParts& parts, POINT point);
  void Hide();
  // The row that the shown tip was built for; nothing when no tip is shown.
  std::optional<std::size_t> Row() const { return row_; }
  const ui::CTooltip& Tooltip() const { return tooltip_; }

 private:
  ui::CTooltip tooltip_;
  std::optional<std::size_t> row_;
  std::wstring path_;  // of the row then: the list may have been filled anew since
};

}  // namespace kestrelon::items
