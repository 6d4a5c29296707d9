// Minimising to the notification area and coming back.

#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class Tray : public MainFormFixture {
 protected:
  void Minimise() {
    ShowWindow(form->Handle(), SW_MINIMIZE);
    win::DoEvents();
  }
  // What the icon sends for the mouse over it.
  void IconSends(UINT mouseMessage) {
    SendMessageW(form->Handle(), WM_APP + 1, 1, static_cast<LPARAM>(mouseMessage));
    win::DoEvents();
  }
};

TEST_F(Tray, MinimisingShowsTheIconAndHidesTheWindow) {
  Start();

  Minimise();

  EXPECT_EQ(trayMessages, std::vector<DWORD>{NIM_ADD});
  EXPECT_EQ(trayTip, L"Kestrelon");
  EXPECT_TRUE(form->SysTray().IsShown());
  EXPECT_FALSE(IsWindowVisible(form->Handle()));
}

TEST_F(Tray, WithoutANotificationAreaTheWindowStaysInTheTaskBar) {
  trayWorks = false;
  Start();

  Minimise();

  EXPECT_TRUE(IsWindowVisible(form->Handle()));
  EXPECT_TRUE(IsIconic(form->Handle()));
  EXPECT_FALSE(form->SysTray().IsShown());
}

TEST_F(Tray, AClickShowsTheWindowAndRemovesTheIcon) {
  Start();
  Minimise();

  IconSends(WM_LBUTTONUP);

  EXPECT_TRUE(IsWindowVisible(form->Handle()));
  EXPECT_FALSE(IsIconic(form->Handle()));
  EXPECT_EQ(trayMessages, (std::vector<DWORD>{NIM_ADD, NIM_DELETE}));
  EXPECT_FALSE(form->SysTray().IsShown());
}

TEST_F(Tray, ADoubleClickShowsTheWindowToo) {
  Start();
  Minimise();
  IconSends(WM_LBUTTONDBLCLK);
  EXPECT_TRUE(IsWindowVisible(form->Handle()));
  EXPECT_FALSE(form->SysTray().IsShown());
}

TEST_F(Tray, OtherMouseEventsLeaveTheWindowHidden) {
  Start();
  Minimise();
  for (const UINT message : {WM_MOUSEMOVE, WM_RBUTTONUP, WM_LBUTTONDOWN})
    IconSends(static_cast<UINT>(message));
  EXPECT_FALSE(IsWindowVisible(form->Handle()));
}

TEST_F(Tray, ADialogGoesAndComesBackWithTheWindowItKeepsWaiting) {
  Start();
  const OnWindow about([](HWND window) { return TextOf(window).find(L"bout") != std::wstring::npos; },
                       [&](HWND window) {
                         Minimise();
                         EXPECT_FALSE(IsWindowVisible(form->Handle()));
                         IconSends(WM_LBUTTONUP);
                         EXPECT_TRUE(IsWindowVisible(form->Handle()));
                         EXPECT_TRUE(IsWindowVisible(window));
                         EXPECT_EQ(GetForegroundWindow(), window);
                         SendMessageW(window, WM_CLOSE, 0, 0);
                       });
  SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(Menus().IdOf(L"meu_about"), 0), 0);
  EXPECT_TRUE(about.Done());
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
}

TEST_F(Tray, GoesAndComesAgain) {
  Start();
  for (int i = 0; i < 2; ++i) {
    Minimise();
    EXPECT_FALSE(IsWindowVisible(form->Handle()));
    IconSends(WM_LBUTTONUP);
    EXPECT_TRUE(IsWindowVisible(form->Handle()));
  }
}

TEST_F(Tray, ThePanesAreInPlaceAfterTheReturn) {
  Start();
  RECT before, after;
  GetWindowRect(List().Handle(), &before);
  Minimise();
  IconSends(WM_LBUTTONUP);
  GetWindowRect(List().Handle(), &after);
  EXPECT_TRUE(EqualRect(&before, &after));
}

TEST_F(Tray, TheIconComesAgainWhenTheTaskBarHasStartedAnew) {
  Start();
  Minimise();

  SendMessageW(form->Handle(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);

  EXPECT_EQ(trayMessages, (std::vector<DWORD>{NIM_ADD, NIM_ADD}));
  EXPECT_FALSE(IsWindowVisible(form->Handle()));
  IconSends(WM_LBUTTONUP);
  EXPECT_TRUE(IsWindowVisible(form->Handle()));
}

TEST_F(Tray, ANewTaskBarGetsNoIconOfAWindowThatIsShown) {
  Start();
  SendMessageW(form->Handle(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);
  EXPECT_TRUE(trayMessages.empty());
}

TEST_F(Tray, TheWindowComesBackWhenANewTaskBarTakesNoIcon) {
  Start();
  Minimise();
  trayWorks = false;

  SendMessageW(form->Handle(), RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);

  EXPECT_TRUE(IsWindowVisible(form->Handle()));
  EXPECT_FALSE(IsIconic(form->Handle()));
}

TEST_F(Tray, TheIconGoesWithTheWindow) {
  Start();
  Minimise();
  End();
  EXPECT_EQ(trayMessages, (std::vector<DWORD>{NIM_ADD, NIM_DELETE}));
}

}  // namespace
}  // namespace kestrelon::test
