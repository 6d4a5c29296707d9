#include "ui/win/StatusBar.h"

#include <commctrl.h>

#include <cstddef>

#include "app/base/File.h"

namespace kestrelon::win {

namespace {
constexpr std::size_t kPanels = 3;
}

void StatusBar::Create(HWND parent, UINT id) {
  texts_.assign(kPanels, std::wstring());
  behind_.assign(kPanels, false);
  handle_ = ::CreateWindowExW(0, STATUSCLASSNAMEW, L"", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0,
                              parent, reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)),
                              ::GetModuleHandleW(nullptr), nullptr);
  if (handle_ == nullptr) ThrowLastError(L"status bar");
  SetPanelWidths({0, 0});
}

std::wstring StatusBar::PanelText(int panel) const { return texts_.at(static_cast<std::size_t>(panel) - 1); }

void StatusBar::SetPanelText(int panel, const std::wstring& text) {
  const std::size_t index = static_cast<std::size_t>(panel) - 1;
  std::wstring& kept = texts_.at(index);
  if (kept == text && !behind_[index]) return;
  kept = text;
  behind_[index] = false;
  ::SendMessageW(handle_, SB_SETTEXTW, static_cast<WPARAM>(panel - 1),
                 reinterpret_cast<LPARAM>(kept.c_str()));
}

void StatusBar::KeepPanelText(int panel, const std::wstring& text) {
  const std::size_t index = static_cast<std::size_t>(panel) - 1;
  texts_.at(index) = text;
  behind_[index] = true;
}

void StatusBar::SetPanelWidths(const std::vector<int>& allButTheLast) {
  std::vector<int> rightEdges;
  int edge = 0;
  for (const int width : allButTheLast) rightEdges.push_back(edge += width);
  rightEdges.push_back(-1);
  ::SendMessageW(handle_, SB_SETPARTS, rightEdges.size(), reinterpret_cast<LPARAM>(rightEdges.data()));
}

int StatusBar::Height() const {
  RECT rectangle{};
  ::GetWindowRect(handle_, &rectangle);
  return rectangle.bottom - rectangle.top;
}

}  // namespace kestrelon::win
