#pragma once

#include "app/base/Win32.h"

#include <functional>
#include <string>
#include <vector>

#include "tests/support/Pump.h"
#include "ui/win/CheckList.h"
#include "ui/win/Form.h"
#include "ui/win/ListView.h"
#include "ui/win/Toolbar.h"
#include "ui/win/TreeView.h"

namespace kestrelon::test {

// A main window for controls under test: shown, in the foreground, and with their notifications passed on.
class Host : public win::Form {
 public:
  Host() : Form(L"Host") {
    win::WindowSpec spec;
    spec.caption = L"Host";
    spec.x = spec.y = 10;
    spec.width = 800;
    spec.height = 600;
    Create(spec);
    ShowWindow(Handle(), SW_SHOW);
    SetForegroundWindow(Handle());
    win::DoEvents();
  }
  ~Host() override { Destroy(); }

  win::TreeView* tree = nullptr;
  win::ListView* list = nullptr;
  win::CheckList* checkList = nullptr;
  win::Toolbar* toolbar = nullptr;
  std::vector<UINT> commands;                       // of menus
  std::vector<std::wstring> pressed;                // buttons clicked
  std::function<void(UINT message)> beforeMessage;  // may throw

 protected:
  void OnControl(win::FormControl& control, UINT code) override {
    if (code == BN_CLICKED) pressed.push_back(control.name);
  }
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
    if (beforeMessage) beforeMessage(message);
    if (message == WM_NOTIFY) {
      NMHDR& header = *reinterpret_cast<NMHDR*>(lParam);
      if (tree != nullptr && header.hwndFrom == tree->Handle()) return tree->OnNotify(header);
      if (list != nullptr && header.hwndFrom == list->Handle()) return list->OnNotify(header);
      if (checkList != nullptr && header.hwndFrom == checkList->Handle()) return checkList->OnNotify(header);
      if (toolbar != nullptr && toolbar->OnNotify(header)) return 0;
    }
    if (message == WM_COMMAND && lParam == 0) {
      commands.push_back(LOWORD(wParam));
      return 0;
    }
    return Form::OnMessage(message, wParam, lParam);
  }
};

}  // namespace kestrelon::test
