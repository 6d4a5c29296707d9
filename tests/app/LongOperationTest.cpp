// What the main window does while a long operation runs.

#include <algorithm>

#include "app/MainFormTables.h"
#include "tests/support/MainFormFixture.h"
#include "ui/win/CommandsOff.h"

namespace kestrelon::test {
namespace {

using LongOperation = MainFormFixture;

TEST_F(LongOperation, DisablesItsMenusAndControlsAndEnablesThemAgain) {
  Start();
  {
    const win::CommandsOff off(Parts(), {L"meu_file", L"meu_misc"});
    EXPECT_FALSE(Menus().IsEnabled(L"meu_file"));
    EXPECT_FALSE(Menus().IsEnabled(L"meu_misc"));
    EXPECT_TRUE(Menus().IsEnabled(L"meu_help"));
    for (const HWND control : {Tree().Handle(), List().Handle(), Parts().Toolbar1.Handle()}) {
      EXPECT_FALSE(IsWindowEnabled(control));
    }
  }
  EXPECT_TRUE(Menus().IsEnabled(L"meu_file"));
  EXPECT_TRUE(Menus().IsEnabled(L"meu_misc"));
  for (const HWND control : {Tree().Handle(), List().Handle(), Parts().Toolbar1.Handle()}) {
    EXPECT_TRUE(IsWindowEnabled(control));
  }
}

TEST_F(LongOperation, GivesTheFocusBackToThePaneThatHadIt) {
  Start();
  SetFocus(Tree().Handle());
  { const win::CommandsOff off(Parts(), {L"meu_file"}); }
  EXPECT_EQ(GetFocus(), Tree().Handle());
}

TEST_F(LongOperation, GivesTheFocusBackAlsoAfterABoxThatWasShownMeanwhile) {
  Start();
  for (const HWND pane : {Tree().Handle(), List().Handle()}) {
    SetFocus(pane);
    {
      const win::CommandsOff off(Parts(), {L"meu_file"});
      const OnDialog answer([](HWND box) { PostMessageW(box, WM_COMMAND, IDOK, 0); });
      EXPECT_EQ(MessageBoxW(form->Handle(), L"Operation Finished!", L"", MB_OK), IDOK);
    }
    EXPECT_EQ(GetFocus(), pane);
  }
}

TEST_F(LongOperation, PutsOffTheClosingOfTheWindowUntilItsEnd) {
  Start();
  {
    const win::CommandsOff off(Parts(), {L"meu_file"});
    SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(Parts().closeRequested);
    EXPECT_TRUE(world.boxes.empty());
    win::DoEvents();
    ASSERT_TRUE(IsWindow(form->Handle()));
  }
  world.answers = {IDCANCEL};
  win::DoEvents();
  EXPECT_EQ(world.boxes.size(), 1u);  // the question comes now
  EXPECT_FALSE(Parts().closeRequested);
}

// Every command of the menu and every button, as other programs may post them.
class CommandsFromElsewhere : public MainFormFixture {
 protected:
  void StartWithItem() {
    Start();
    SelectCategory(AddCategory(L"A_", L"A"));
    AddItem(L"A_", 1, {L"one"});
    SelectCategory(*Tree().Find(L"A_"));
    Click(List().Handle(), MiddleOfRow(0));
    SetFocus(Tree().Handle());
    program.databaseSaved = true;
  }
  void SendAll(const std::vector<const wchar_t*>& menusLeftOut = {}) {
    for (std::size_t i = 0; i < app::MainFormTables::kCommandCount; ++i) {
      const app::MainFormTables::Command& command = app::MainFormTables::kCommands[i];
      if (command.depth == 0 && command.name) {
        menu_ = command.name;
        continue;
      }
      const bool leftOut = std::any_of(menusLeftOut.begin(), menusLeftOut.end(),
                                       [this](const wchar_t* menu) { return menu_ == menu; });
      if (leftOut || !command.name) continue;
      SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(Menus().IdOf(command.name), 0), 0);
    }
    for (WORD button = 1; button <= 9; ++button)
      SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(200 + button, 0), 0);
    for (const WORD key : {WORD{VK_DELETE}, WORD{VK_F2}, WORD{VK_F6}, WORD{VK_RETURN}}) {
      PressKey(Tree().Handle(), key);
      PressKey(List().Handle(), key);
    }
    for (const HWND pane : {Tree().Handle(), List().Handle()}) {
      SendKey(pane, 'F', {VK_CONTROL});
      SendMessageW(pane, WM_LBUTTONDBLCLK, MK_LBUTTON, MAKELPARAM(30, 30));
    }
    win::DoEvents();
  }
  // A world that is asked anything has failed the test by then.
  void ExpectNothingDone() {
    EXPECT_EQ(ShownTree(), L"A");
    EXPECT_EQ(List().Count(), 1u);
    EXPECT_EQ(Panel(2), L"A_");
    EXPECT_TRUE(program.databaseSaved);
    EXPECT_EQ(program.languageName, L"English");
    EXPECT_FALSE(Tree().EditingLabel());
    EXPECT_FALSE(Parts().treeFindShown);
    EXPECT_FALSE(Parts().listFindShown);
    EXPECT_FALSE(Parts().closeRequested);
  }

 private:
  std::wstring menu_;
};

TEST_F(CommandsFromElsewhere, AreRefusedWhileALongOperationHasTheMenusSwitchedOff) {
  StartWithItem();
  const win::CommandsOff off(Parts(), {L"meu_file", L"meu_Category", L"meu_List", L"meu_misc", L"meu_help"});
  SendAll();
  ExpectNothingDone();
}

TEST_F(CommandsFromElsewhere, ThatAreSwitchedOffAreRefusedAndTheOthersAreNot) {
  StartWithItem();
  const win::CommandsOff off(Parts(), {L"meu_file", L"meu_Category", L"meu_List"});
  SendAll({L"meu_misc", L"meu_help"});
  ExpectNothingDone();
  Command(L"meu_Chinese_Simplified");
  EXPECT_EQ(program.languageName, L"Chinese_S");
}

TEST_F(CommandsFromElsewhere, AreRefusedWhileADialogIsOpen) {
  StartWithItem();
  EnableWindow(form->Handle(), FALSE);
  SendAll();
  ExpectNothingDone();
  EnableWindow(form->Handle(), TRUE);
}

TEST_F(CommandsFromElsewhere, OfItemsAreRefusedWhileNoneIsSelected) {
  StartWithItem();
  SelectCategory(*Tree().Find(L"A_"));
  for (const wchar_t* name : {L"meu_Delete", L"meu_rename", L"meu_openfile", L"meu_Properties"})
    Command(name);
  for (WORD button = 6; button <= 9; ++button)
    SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(200 + button, 0), 0);
  ExpectNothingDone();
}

TEST_F(LongOperation, LetsNothingBeDroppedOnThePanes) {
  Start();
  EXPECT_NE(form->TreeDrops().Object(), nullptr);
  EXPECT_NE(form->ListDrops().Object(), nullptr);
  AddCategory(L"A_", L"Alpha");
  const win::CommandsOff off(Parts(), {L"meu_file"});
  DWORD effect = DROPEFFECT_COPY;
  form->TreeDrops().Object()->DragOver(MK_LBUTTON, {5, 5}, &effect);
  EXPECT_EQ(effect, static_cast<DWORD>(DROPEFFECT_NONE));
}

TEST_F(LongOperation, ProgressIsAlwaysInTheStatusBarsText) {
  Start();
  win::ProgressText progress(Parts().StatusBar1);
  for (const wchar_t* step : {L"one", L"two", L"three"}) {
    progress.Show(step);
    EXPECT_EQ(Panel(1), step);
  }
}

}  // namespace
}  // namespace kestrelon::test
