#pragma once

#include <array>
#include <cstddef>
#include <string>

#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

// The dialog that shows and changes all of an item but its alias.
class FilePropterty : public win::Form {
 public:
  explicit FilePropterty(win::MainParts& parts) : Form(L"FilePropterty"), parts_(parts) {}
  // Makes the window for the item of a row and runs it over `owner` until it is closed. OK changes the table
  // and the row; when the table refuses one of the texts nothing changes, and the dialog stays with them and
  // with a balloon at one of them that says why.
  void Show(HWND owner, std::size_t row);

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnControl(win::FormControl& control, UINT code) override;

 private:
  static constexpr std::size_t kFields = 4;  // Text2: file name, path, time added, comment
  void CreateControls();
  void Form_Load(std::size_t row);
  void Form_Activate();
  void GotFocus(win::FormControl& field);
  void Command1_Click();
  void Command2_Click(int index);
  win::FormControl& Text2(std::size_t index) { return *text2_[index]; }

  win::MainParts& parts_;
  std::array<win::FormControl*, kFields> text2_{};
  win::FormControl* Text1_ = nullptr;   // the status: where the file is, or that there is none
  win::FormControl* Label2_ = nullptr;  // hidden: the item's FileIndex
};

// The statement that changes an item. The texts: file name, path, time added, comment, and the FileIndex of
// the item that is changed.
std::wstring PropertiesStatement(const std::array<std::wstring, 5>& texts);

// Opens the dialog for the selected row; does nothing without one.
void meu_Properties_Click(win::MainParts& parts);

}  // namespace kestrelon::items
