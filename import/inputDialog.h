#pragma once

#include <string>
#include <vector>

#include "import/ClipboardFiles.h"
#include "ui/win/CheckList.h"
#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::imports {

// The window through which files are imported from the clipboard. While it is open its list shows the files
// that were last copied; the user ticks those wanted and inserts them into the current category.
class inputDialog : public win::Form {
 public:
  explicit inputDialog(win::MainParts& parts) : Form(L"inputDialog"), parts_(parts) {}
  ~inputDialog() override { Destroy(); }
  // Makes the window and runs it over `owner` until it is closed.
  void Show(HWND owner);
  win::CheckList& ListView1() { return ListView1_; }  // for tests

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnControl(win::FormControl& control, UINT code) override;

 private:
  void CreateControls();
  void Form_Load();
  void Form_Unload();
  void Check1_Click();
  void ListView1_ItemClick(std::size_t row);
  void Command1_Click(int index);
  void ShowClipboardFiles();
  void InsertTicked();
  void RowsReplaced();  // by rows that are not ticked: the label and the box that ticks all follow

  win::MainParts& parts_;
  win::CheckList ListView1_;  // of full paths
  win::FormControl* Label1_ = nullptr;
  win::FormControl* Check1_ = nullptr;
  bool inserting_ = false;         // boxes may be open meanwhile, and let messages in
  bool clipboardChanged_ = false;  // while that went on
  ClipboardHook hook_;
};

// Asks for a category when none is current, else opens the dialog. A failure shows the box
// "meu_Imput_Clipboard_Click Error:".
void meu_Imput_Clipboard_Click(win::MainParts& parts);

}  // namespace kestrelon::imports
