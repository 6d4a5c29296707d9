#pragma once

#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

// What shall become of the selected items.
enum class DeleteChoice { kNone, kToRecycleBin, kListOnly };

// The small dialog that asks whether items go with their files or alone. No command opens it at present: the
// deletion asks by two questions instead.
class frmDeletebox : public win::Form {
 public:
  explicit frmDeletebox(win::MainParts& parts) : Form(L"frmDeletebox"), parts_(parts) {}
  // Makes the window and runs it over `owner` until a choice is made or the window is closed (kNone). There
  // is no OK button: a click on an option, or Enter or the space bar there, is the choice. Walking over the
  // options by the arrow keys only marks them.
  DeleteChoice Ask(HWND owner);

 protected:
  void OnControl(win::FormControl& control, UINT code) override;

 private:
  static LRESULT CALLBACK OptionProcedure(HWND, UINT, WPARAM, LPARAM, UINT_PTR, DWORD_PTR);
  void CreateControls();
  void AddOption(int index, const wchar_t* caption, double top, DWORD style);
  void Mark(int index);  // the option that has the focus, and no other
  void Option1_Click(int index);

  win::MainParts& parts_;
  DeleteChoice choice_ = DeleteChoice::kNone;
  bool pressed_ = false;  // a click that comes now is the user's
};

}  // namespace kestrelon::items
