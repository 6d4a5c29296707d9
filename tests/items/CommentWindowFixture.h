#pragma once

#include <string>
#include <vector>

#include "items/Filelist_Comment.h"
#include "items/ItemCommands.h"
#include "items/ShowData.h"
#include "tests/support/BalloonSpy.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {

// The main window with a category of three items, and the comment window beside it.
class CommentWindow : public MainFormFixture {
 protected:
  using Texts = std::vector<std::wstring>;

  // A category with three items, whose comments are "first", "second" and "third"; no row is selected.
  void StartWithRows() {
    Start();
    SelectCategory(AddCategory(L"A_", L"Alpha"));
    AddItem(L"A_", 1, {.alias = L"one", .comment = L"first"});
    AddItem(L"A_", 2, {.alias = L"two", .comment = L"second"});
    AddItem(L"A_", 3, {.alias = L"three", .comment = L"third"});
    items::ShowData(Parts(), L"A_");
    win::DoEvents();
    program.databaseSaved = true;
  }
  void StartWithRowOneShown() {
    StartWithRows();
    Click(List().Handle(), MiddleOfRow(0));
    Command(L"meu_comment");
  }
  win::Form& Window() { return *form->ListHelpers().comment; }
  bool IsShown() {
    return form->ListHelpers().comment && IsWindowVisible(form->ListHelpers().comment->Handle());
  }
  HWND Control(const wchar_t* name, int index = -1) { return Window().Find(name, index)->window; }
  std::wstring Text(const wchar_t* name) { return TextOf(Control(name)); }
  void Type(const std::wstring& text) {
    SendMessageW(Control(L"Text1"), EM_SETSEL, 0, -1);
    SendMessageW(Control(L"Text1"), EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
  }
  void Save() { SendMessageW(Control(L"Command1", 0), BM_CLICK, 0, 0); }
  std::vector<std::wstring> Comments() { return Query(L"SELECT Comment FROM FTable", 1); }
  void ExpectOneQuestion() {
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].text, L"(one)\n\nThe comment was changed. Save it?");
    EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
    EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_YESNO | MB_ICONQUESTION));
    EXPECT_EQ(world.boxes[0].owner, form->Handle());
  }
  void ExpectUnchanged() {
    EXPECT_EQ(Comments(), (std::vector<std::wstring>{L"first", L"second", L"third"}));
    EXPECT_EQ(Column(5), (std::vector<std::wstring>{L"first", L"second", L"third"}));
    EXPECT_TRUE(program.databaseSaved);
    EXPECT_TRUE(world.boxes.empty());
  }
};

}  // namespace kestrelon::test
