#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"
#include "ui/win/Form.h"

namespace kestrelon::ui {

// The lines of a tips file, in their order, empty ones too; what follows the last line's end is no tip unless
// there is something. Lines end in LF or CR LF. The bytes are UTF-8, with or without a byte order mark; what
// is no UTF-8 is read by the system's ANSI code page.
std::vector<std::wstring> TipsOf(std::string_view bytes);

// The tip of the day: a tip chosen at random, and by a button the next ones in the order of the file
// "TIPOFDAY.TXT" beside the program. The file is read each time the window opens; without one the window says
// that it is missing.
class frmTip : public win::Form {
 public:
  frmTip(const Program& program, OutsideWorld& world) : Form(L"frmTip"), program_(program), world_(world) {}
  // Makes the window and runs it over `owner` until it is closed.
  void Show(HWND owner);

 protected:
  void OnControl(win::FormControl& control, UINT code) override;

 private:
  void CreateControls(HWND owner);
  void Form_Load();
  void cmdNextTip_Click();
  void ShowTip();

  const Program& program_;
  OutsideWorld& world_;
  std::vector<std::wstring> tips_;
  std::size_t tip_ = 0;  // the number of the tip that is shown, from 1; 0 without tips
};

}  // namespace kestrelon::ui
