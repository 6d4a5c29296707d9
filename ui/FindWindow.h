#pragma once

#include <string>

#include "ui/win/Form.h"
#include "ui/win/MainParts.h"

namespace kestrelon::ui {

// What the two windows that search have in common: a tool window beside the main window, with the text to
// find
// (`Text1`) and two buttons (`Command1`), of which one searches and one closes. It stays open after a search,
// so that the next press goes on with it, and is one of the magnetic windows while it is open. While a
// question or a long operation waits for its end, which may be about what is selected, the window does
// nothing.
class FindWindow : public win::Form {
 public:
  // `shown` is the flag in MainParts that says whether this window is open.
  FindWindow(std::wstring name, win::MainParts& parts, bool& shown);
  ~FindWindow() override;

  // Makes the window, in the language in use, and shows it. Does nothing while it is open.
  void Open();

 protected:
  enum : int { kSearch, kCancel };  // indexes of Command1

  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
  void OnControl(win::FormControl& control, UINT code) override;
  // The window is there, without controls and caption: makes them and gives it its size.
  virtual void CreateControls() = 0;
  // Text1 holds another text than before, which is not empty.
  virtual void TextChanged() {}
  // The button was pressed; `text` is not empty.
  virtual void Search(const std::wstring& text) = 0;
  // An information box, during which the main window waits too.
  void SayNotFound(const std::wstring& text);

  win::MainParts& parts_;

 private:
  void Form_Unload();
  void Text1_Change();
  void Command1_Click(int index);
  bool MainWindowWaits() const;

  bool& shown_;
};

}  // namespace kestrelon::ui
