#include "ui/win/Toolbar.h"

#include <cstddef>

#include "app/base/File.h"

namespace kestrelon::win {

void Toolbar::Create(HWND parent, UINT id, const std::vector<Button>& buttons, UniqueImageList images) {
  buttons_ = buttons;
  handle_ = ::CreateWindowExW(
      0, TOOLBARCLASSNAMEW, L"", WS_CHILD | WS_VISIBLE | TBSTYLE_FLAT | TBSTYLE_TOOLTIPS, 0, 0, 0, 0, parent,
      reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), ::GetModuleHandleW(nullptr), nullptr);
  if (handle_ == nullptr) ThrowLastError(L"toolbar");
  ::SendMessageW(handle_, TB_BUTTONSTRUCTSIZE, sizeof(TBBUTTON), 0);
  SetImages(std::move(images));
  std::vector<TBBUTTON> entries;
  for (const Button& button : buttons_) {
    TBBUTTON entry{};
    entry.fsState = TBSTATE_ENABLED;
    entry.idCommand = static_cast<int>(button.id);
    entry.fsStyle = button.id == 0 ? BTNS_SEP : BTNS_BUTTON;
    entry.iBitmap = button.id == 0 ? 0 : button.image;
    entries.push_back(entry);
  }
  ::SendMessageW(handle_, TB_ADDBUTTONSW, entries.size(), reinterpret_cast<LPARAM>(entries.data()));
  AutoSize();
}

void Toolbar::SetImages(UniqueImageList images) {
  int width = 0, height = 0;
  if (images && ::ImageList_GetIconSize(images.get(), &width, &height))
    ::SendMessageW(handle_, TB_SETBITMAPSIZE, 0, MAKELPARAM(width, height));
  ::SendMessageW(handle_, TB_SETIMAGELIST, 0, reinterpret_cast<LPARAM>(images.get()));
  images_ = std::move(images);  // the old pictures go only after the toolbar has let go of them
}

void Toolbar::Enable(int button, bool enabled) {
  const UINT id = buttons_.at(static_cast<std::size_t>(button) - 1).id;
  ::SendMessageW(handle_, TB_ENABLEBUTTON, id, MAKELPARAM(enabled ? TRUE : FALSE, 0));
}

bool Toolbar::IsEnabled(int button) const {
  const UINT id = buttons_.at(static_cast<std::size_t>(button) - 1).id;
  return ::SendMessageW(handle_, TB_ISBUTTONENABLED, id, 0) > 0;
}

void Toolbar::SetTip(int button, const std::wstring& text) {
  buttons_.at(static_cast<std::size_t>(button) - 1).tip = text;
}

int Toolbar::Height() const {
  RECT rectangle{};
  ::GetWindowRect(handle_, &rectangle);
  return rectangle.bottom - rectangle.top;
}

void Toolbar::AutoSize() { ::SendMessageW(handle_, TB_AUTOSIZE, 0, 0); }

bool Toolbar::OnNotify(NMHDR& header) {
  if (header.code != TTN_GETDISPINFOW) return false;
  if (reinterpret_cast<LRESULT>(header.hwndFrom) != ::SendMessageW(handle_, TB_GETTOOLTIPS, 0, 0))
    return false;
  for (Button& button : buttons_) {
    if (button.id == 0 || button.id != header.idFrom) continue;
    auto& info = reinterpret_cast<NMTTDISPINFOW&>(header);
    info.lpszText = button.tip.data();
    info.hinst = nullptr;
    return true;
  }
  return false;
}

}  // namespace kestrelon::win
