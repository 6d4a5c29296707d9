#include "ui/FindWindow.h"

#include <utility>

#include "lang/SelectLanguage.h"
#include "ui/cMagneticWnd.h"
#include "ui/win/Boxes.h"

namespace kestrelon::ui {

FindWindow::FindWindow(std::wstring name, win::MainParts& parts, bool& shown)
    : Form(std::move(name)), parts_(parts), shown_(shown) {}

FindWindow::~FindWindow() { Destroy(); }

void FindWindow::Open() {
  if (shown_) return;
  CreateDialogWindow({}, parts_.form.Handle(), WS_EX_TOOLWINDOW);
  CreateControls();
  lang::ReadLanguage(*this, parts_.program, parts_.program.languageName, parts_.world);
  Text1_Change();
  shown_ = true;
  if (parts_.magnets) parts_.magnets->AddWindow(Handle(), parts_.form.Handle());
  ::ShowWindow(Handle(), SW_SHOW);
  ::SetFocus(Find(L"Text1")->window);
}

void FindWindow::Form_Unload() {
  shown_ = false;
  if (parts_.magnets) parts_.magnets->RemoveWindow(Handle());
}

bool FindWindow::MainWindowWaits() const { return parts_.busy || !::IsWindowEnabled(parts_.form.Handle()); }

void FindWindow::Text1_Change() {
  const bool empty = ::GetWindowTextLengthW(Find(L"Text1")->window) == 0;
  ::EnableWindow(Find(L"Command1", kSearch)->window, !empty);
  if (!empty && !MainWindowWaits()) TextChanged();
}

void FindWindow::Command1_Click(int index) {
  if (index == kCancel) {
    Close();
    return;
  }
  const std::wstring text = ControlCaption(*Find(L"Text1"));
  if (!text.empty() && !MainWindowWaits()) Search(text);
}

void FindWindow::SayNotFound(const std::wstring& text) {
  // The box itself makes only this window wait.
  const HWND main = parts_.form.Handle();
  ::EnableWindow(main, FALSE);
  const win::Finally enable([main] { ::EnableWindow(main, TRUE); });
  win::Inform(parts_.world, Handle(), L"Cannot find '" + text + L"'  ", parts_.program.productName);
}

void FindWindow::OnControl(win::FormControl& control, UINT code) {
  if (control.name == L"Text1" && code == EN_CHANGE) Text1_Change();
  if (control.name == L"Command1" && code == BN_CLICKED) Command1_Click(control.index);
}

LRESULT FindWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_DESTROY) Form_Unload();
  return Form::OnMessage(message, wParam, lParam);
}

}  // namespace kestrelon::ui
