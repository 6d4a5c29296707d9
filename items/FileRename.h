#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::items {

// The dialog that gives an item another alias.
class FileRename : public win::Form {
 public:
  explicit FileRename(win::MainParts& parts) : Form(L"FileRename"), parts_(parts) {}
  // Makes the window for the item of a row and runs it over `owner` until it is closed. OK changes the table
  // and the row; when the table refuses the alias nothing changes, and the dialog stays with the text and
  // with a balloon that says why.
  void Show(HWND owner, std::size_t row);

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnControl(win::FormControl& control, UINT code) override;

 private:
  void CreateControls();
  void Form_Load(std::size_t row);
  void Form_Activate();
  void Text1_Change();
  void Command1_Click(int index);

  win::MainParts& parts_;
  win::FormControl* Text1_ = nullptr;
  win::FormControl* Ok_ = nullptr;      // Command1, index 0
  win::FormControl* Label2_ = nullptr;  // hidden: the item's FileIndex
};

// As much of an alias as the table has room for: the first 255 UTF-16 units, or 254 where the cut would go
// through the two halves of one character.
std::wstring StoredAlias(std::wstring_view text);

// The statement that gives an item another alias.
std::wstring RenameStatement(std::wstring_view alias, std::wstring_view fileIndex);

// Opens the dialog for the selected row; does nothing without one.
void meu_rename_Click(win::MainParts& parts);

}  // namespace kestrelon::items
