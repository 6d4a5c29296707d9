// Which windows snap to each other.

#include "tests/support/MainFormFixture.h"
#include "ui/cMagneticWnd.h"

namespace kestrelon::test {
namespace {

class MagneticWindows : public MainFormFixture {
 protected:
  bool TakesPart(HWND window) {
    // Who is in already is refused a second time.
    if (!form->Magnets().AddWindow(window)) return true;
    form->Magnets().RemoveWindow(window);
    return false;
  }
  HWND Comment() { return form->ListHelpers().comment->Handle(); }
};

TEST_F(MagneticWindows, AreTheMainWindowAndTheToolWindowsWhileTheyAreOpen) {
  Start();
  EXPECT_TRUE(TakesPart(form->Handle()));
  Command(L"meu_comment");
  form->Toolbar1_ButtonClick(4);
  SetFocus(List().Handle());
  form->Toolbar1_ButtonClick(4);
  ASSERT_TRUE(Parts().treeFindShown);
  ASSERT_TRUE(Parts().listFindShown);
  for (const HWND window :
       {Comment(), form->ListHelpers().find->Handle(), form->TreeHelpers().find->Handle()}) {
    EXPECT_TRUE(TakesPart(window));
  }
}

TEST_F(MagneticWindows, LeaveTheGroupWhenTheyAreClosed) {
  Start();
  Command(L"meu_comment");
  Command(L"meu_comment");
  EXPECT_FALSE(TakesPart(Comment()));
  Command(L"meu_comment");
  EXPECT_TRUE(TakesPart(Comment()));
}

TEST_F(MagneticWindows, AreGluedToTheMainWindowTheyTouch) {
  Start();
  Command(L"meu_comment");
  EXPECT_FALSE(form->Magnets().Glued(Comment()));
  RECT main;
  GetWindowRect(form->Handle(), &main);
  SetWindowPos(Comment(), nullptr, main.right, main.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  form->Magnets().CheckGlueing();
  EXPECT_TRUE(form->Magnets().Glued(Comment()));
}

TEST_F(MagneticWindows, GoWithTheMainWindowThatClosesWhileTheyAreOpen) {
  Start();
  Command(L"meu_comment");
  form->Toolbar1_ButtonClick(4);
  const HWND comment = Comment();
  program.databaseSaved = true;
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_FALSE(IsWindow(comment));
}

}  // namespace
}  // namespace kestrelon::test
