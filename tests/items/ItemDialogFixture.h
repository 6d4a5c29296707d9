#pragma once

#include <functional>
#include <string>
#include <vector>

#include "items/ItemCommands.h"
#include "items/ShowData.h"
#include "tests/support/Dialogs.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {

// The main window with items in its list, and a way into the modal dialogs that edit them.
class ItemDialogFixture : public MainFormFixture {
 protected:
  using Texts = std::vector<std::wstring>;

  // One row for each item, numbered from 1 in category "A_"; the first is selected, and everything is saved.
  void StartWith(const std::vector<Item>& items) {
    Start();
    SelectCategory(AddCategory(L"A_", L"A"));
    int number = 0;
    for (const Item& item : items) AddItem(L"A_", ++number, item);
    items::ShowData(Parts(), L"A_");
    if (!items.empty()) List().SelectOnly(0);
    items::EnableItemCommands(Parts());
    SetFocus(List().Handle());
    win::DoEvents();
    program.databaseSaved = true;
  }
  // Runs `open`, hands the dialog of that name to `act` and closes it afterwards if it is still there.
  void InDialog(const std::wstring& name, const std::function<void()>& open,
                const std::function<void(win::Form&)>& act) {
    const OnForm dialog(name, act);
    open();
    EXPECT_TRUE(dialog.Done());
    EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  }
  void InDialogOf(const wchar_t* command, const std::wstring& name,
                  const std::function<void(win::Form&)>& act) {
    InDialog(
        name, [&] { Command(command); }, act);
  }
  // What of an edit is selected.
  static std::wstring SelectionOf(HWND edit) {
    DWORD start = 0, end = 0;
    SendMessageW(edit, EM_GETSEL, reinterpret_cast<WPARAM>(&start), reinterpret_cast<LPARAM>(&end));
    return TextOf(edit).substr(start, end - start);
  }
  static void PutCaretAtStart(HWND edit) { SendMessageW(edit, EM_SETSEL, 0, 0); }
};

}  // namespace kestrelon::test
