// What the main window does while a long operation runs.

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

TEST_F(LongOperation, PutsOffTheClosingOfTheWindowUntilItsEnd) {
  Start();
  {
    const win::CommandsOff off(Parts(), {L"meu_file"});
    SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
    EXPECT_TRUE(Parts().closeRequested);
    EXPECT_TRUE(world.boxes.empty());
    EXPECT_FALSE(SendMessageW(form->Handle(), WM_QUERYENDSESSION, 0, 0));
    win::DoEvents();
    ASSERT_TRUE(IsWindow(form->Handle()));
  }
  world.answers = {IDCANCEL};
  win::DoEvents();
  EXPECT_EQ(world.boxes.size(), 1u);  // the question comes now
  EXPECT_FALSE(Parts().closeRequested);
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
