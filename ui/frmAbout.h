#pragma once

#include <string>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"
#include "ui/win/Form.h"

namespace kestrelon::ui {

// The about box: the program's name, which opens its home page, its version, a link that opens a mail to the
// support, and a button that starts the system's own information program. A little of what is behind the
// window shines through.
class frmAbout : public win::Form {
 public:
  frmAbout(const Program& program, OutsideWorld& world)
      : Form(L"frmAbout"), program_(program), world_(world) {}
  // Makes the window and runs it over `owner` until it is closed.
  void Show(HWND owner);

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnControl(win::FormControl& control, UINT code) override;
  void LayOut() override;

 private:
  void CreateControls(HWND owner);
  void Form_Load();
  void lblTitle_Click();
  void Label1_Click();
  void cmdSysInfo_Click();
  // Is it the window of a label that opens something?
  bool IsLink(HWND control);

  const Program& program_;
  OutsideWorld& world_;
};

}  // namespace kestrelon::ui
