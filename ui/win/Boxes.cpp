#include "ui/win/Boxes.h"

namespace kestrelon::win {

void Exclaim(OutsideWorld& world, HWND owner, const std::wstring& text, const std::wstring& title) {
  world.messageBox(owner, text, title, MB_OK | MB_ICONEXCLAMATION);
}

void Inform(OutsideWorld& world, HWND owner, const std::wstring& text, const std::wstring& title) {
  world.messageBox(owner, text, title, MB_OK | MB_ICONINFORMATION);
}

// The spelling is the program's own and stands in every such box.
std::wstring ErrorText(const std::exception& error) { return L"Unkonw Error:" + Widen(error.what()); }

}  // namespace kestrelon::win
