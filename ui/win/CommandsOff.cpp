#include "ui/win/CommandsOff.h"

namespace kestrelon::win {

namespace {
constexpr ULONGLONG kPaintEvery = 50;  // milliseconds
}

CommandsOff::CommandsOff(MainParts& parts, std::initializer_list<const wchar_t*> menus)
    : parts_(parts), menus_(menus), focus_(::GetFocus()) {
  parts_.busy = true;
  parts_.closeRequested = false;
  Enable(false);
}

CommandsOff::~CommandsOff() {
  Enable(true);
  parts_.busy = false;
  // A window that is disabled loses the focus; after a box the form gives it to the next control that can
  // have it.
  const HWND form = parts_.form.Handle();
  if (::IsChild(form, focus_) && ::GetActiveWindow() == form) ::SetFocus(focus_);
  if (parts_.closeRequested) ::PostMessageW(parts_.form.Handle(), WM_CLOSE, 0, 0);
  parts_.closeRequested = false;
}

void CommandsOff::Enable(bool enabled) {
  for (const wchar_t* menu : menus_) parts_.menus.Enable(menu, enabled);
  for (const HWND control :
       {parts_.TreeView1.Handle(), parts_.ListView1.Handle(), parts_.Toolbar1.Handle()}) {
    ::EnableWindow(control, enabled);
  }
  ::DrawMenuBar(parts_.form.Handle());
}

ProgressText::~ProgressText() { statusBar_.SetPanelText(1, statusBar_.PanelText(1)); }

void ProgressText::Show(const std::wstring& text) {
  statusBar_.SetPanelText(1, text);
  const ULONGLONG now = ::GetTickCount64();
  if (now - painted_ < kPaintEvery) return;
  painted_ = now;
  ::UpdateWindow(statusBar_.Handle());
}

void ProgressText::ShowInPassing(const std::wstring& text) {
  if (::GetTickCount64() - painted_ < kPaintEvery) {
    statusBar_.KeepPanelText(1, text);
  } else {
    Show(text);
  }
}

}  // namespace kestrelon::win
