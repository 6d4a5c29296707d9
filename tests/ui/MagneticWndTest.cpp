#include <gtest/gtest.h>

#include <optional>
#include <system_error>
#include <utility>

#include "tests/ui/MagneticFixture.h"

namespace kestrelon::ui {
namespace {

using test::Pane;
using cMagneticWndTest = test::MagneticFixture;

TEST_F(cMagneticWndTest, AddWindowRefusesAWindowThatItHas) {
  const Pane pane({300, 200, 500, 350});
  EXPECT_TRUE(magnets.AddWindow(pane.Handle()));
  EXPECT_FALSE(magnets.AddWindow(pane.Handle()));
}

TEST_F(cMagneticWndTest, AddWindowRefusesWhatIsNoWindow) {
  HWND gone = nullptr;
  {
    const Pane pane({300, 200, 500, 350});
    gone = pane.Handle();
  }
  const Pane pane({300, 200, 500, 350});
  EXPECT_FALSE(magnets.AddWindow(nullptr));
  EXPECT_FALSE(magnets.AddWindow(gone));
  EXPECT_FALSE(magnets.AddWindow(pane.Handle(), gone));
  EXPECT_TRUE(magnets.AddWindow(pane.Handle()));
}

TEST_F(cMagneticWndTest, AddWindowThrowsForAWindowOfAnotherProgramAndDoesNotKeepIt) {
  EXPECT_THROW(magnets.AddWindow(GetDesktopWindow()), std::system_error);
  EXPECT_FALSE(magnets.RemoveWindow(GetDesktopWindow()));
}

TEST_F(cMagneticWndTest, AddWindowChecksTheGlueing) {
  const Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300}), away({700, 200, 800, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  magnets.AddWindow(away.Handle(), main.Handle());

  EXPECT_FALSE(magnets.Glued(main.Handle()));
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
  EXPECT_FALSE(magnets.Glued(away.Handle()));
}

TEST_F(cMagneticWndTest, AParentHoldsOnlyOnceItIsRegisteredItself) {
  const Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  EXPECT_TRUE(magnets.AddWindow(tool.Handle(), main.Handle()));
  EXPECT_FALSE(magnets.Glued(tool.Handle()));

  EXPECT_TRUE(magnets.AddWindow(main.Handle()));

  EXPECT_TRUE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, RemoveWindowRefusesAWindowThatItHasNot) {
  const Pane pane({300, 200, 500, 350});
  EXPECT_FALSE(magnets.RemoveWindow(pane.Handle()));
  magnets.AddWindow(pane.Handle());
  EXPECT_TRUE(magnets.RemoveWindow(pane.Handle()));
  EXPECT_FALSE(magnets.RemoveWindow(pane.Handle()));
}

TEST_F(cMagneticWndTest, ARemovedWindowIsNeitherSnappedNorAMagnet) {
  Pane first({300, 200, 500, 350}), second({600, 200, 700, 300});
  magnets.AddWindow(first.Handle());
  magnets.AddWindow(second.Handle());

  magnets.RemoveWindow(first.Handle());

  RECT proposed{5, 200, 205, 350};
  EXPECT_EQ(first.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed)), 0);
  EXPECT_EQ(proposed, (RECT{5, 200, 205, 350}));
  Enter(second, {600, 200});
  EXPECT_EQ(Move(second, {505, 230}), (RECT{505, 230, 605, 330}));
}

TEST_F(cMagneticWndTest, TheLaterWindowsStayRegisteredWhenOneIsRemoved) {
  Pane first({20, 500, 60, 540}), second({300, 200, 500, 350}), third({600, 200, 700, 300});
  for (const Pane* pane : {&first, &second, &third}) magnets.AddWindow(pane->Handle());

  magnets.RemoveWindow(first.Handle());

  Enter(third, {600, 200});
  EXPECT_EQ(Move(third, {505, 230}), (RECT{500, 230, 600, 330}));
}

TEST_F(cMagneticWndTest, AWindowWhoseParentWasRemovedIsNeverGluedAgain) {
  const Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  ASSERT_TRUE(magnets.Glued(tool.Handle()));

  magnets.RemoveWindow(main.Handle());
  magnets.AddWindow(main.Handle());
  magnets.CheckGlueing();

  EXPECT_FALSE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, ADestroyedWindowLeavesByItself) {
  const Pane tool({500, 200, 600, 300});
  HWND gone = nullptr;
  {
    const Pane main({300, 200, 500, 350});
    gone = main.Handle();
    magnets.AddWindow(gone);
    magnets.AddWindow(tool.Handle(), gone);
    ASSERT_TRUE(magnets.Glued(tool.Handle()));
  }
  magnets.CheckGlueing();
  EXPECT_FALSE(magnets.RemoveWindow(gone));
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, TheEndOfTheObjectLetsGoOfTheWindows) {
  Pane pane({300, 200, 500, 350});
  RECT proposed{5, 200, 205, 350};
  {
    cMagneticWnd others(world.cursorPosition, world.workArea);
    others.AddWindow(pane.Handle());
    EXPECT_EQ(pane.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed)), 1);
  }
  proposed = {5, 200, 205, 350};
  EXPECT_EQ(pane.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed)), 0);
  EXPECT_EQ(proposed.left, 5);
}

TEST_F(cMagneticWndTest, AHiddenWindowIsGluedToNothingUntilItIsShown) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300}, WS_POPUP), link({600, 210, 650, 260});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  magnets.AddWindow(link.Handle(), main.Handle());
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
  EXPECT_FALSE(magnets.Glued(link.Handle()));

  ShowWindow(tool.Handle(), SW_SHOWNOACTIVATE);
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
  EXPECT_TRUE(magnets.Glued(link.Handle()));

  ShowWindow(tool.Handle(), SW_HIDE);
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
  EXPECT_FALSE(magnets.Glued(link.Handle()));
}

TEST_F(cMagneticWndTest, AHiddenParentHoldsNothing) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  ShowWindow(main.Handle(), SW_HIDE);
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, TheEndOfAMoveChecksTheGlueing) {
  Pane main({300, 200, 500, 350}), tool({700, 200, 800, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(tool, {700, 200});
  Move(tool, {508, 230});
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
  tool.Send(WM_EXITSIZEMOVE);
  EXPECT_TRUE(magnets.Glued(tool.Handle()));

  Enter(tool, {500, 230});
  Move(tool, {700, 230});
  tool.Send(WM_EXITSIZEMOVE);
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, ACommandChecksTheGlueingAfterTheWindowHasHandledIt) {
  Pane main({300, 200, 500, 350}), tool({700, 200, 800, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  main.handler = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_COMMAND) return std::nullopt;
    tool.Put(500, 200);
    return 42;
  };
  EXPECT_EQ(main.Send(WM_COMMAND, 1), 42);
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, ACommandMayDestroyTheWindow) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  tool.handler = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_COMMAND) return std::nullopt;
    tool.Destroy();
    return 42;
  };
  const HWND window = tool.Handle();
  EXPECT_EQ(tool.Send(WM_COMMAND, 1), 42);
  EXPECT_FALSE(IsWindow(window));
  EXPECT_FALSE(magnets.RemoveWindow(window));
}

TEST_F(cMagneticWndTest, TheWindowsOwnProcedureMayRemoveTheWindow) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  pane.handler = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_MOVING) return std::nullopt;
    magnets.RemoveWindow(pane.Handle());
    return 7;
  };
  RECT proposed{5, 200, 205, 350};
  EXPECT_EQ(pane.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed)), 7);
  EXPECT_EQ(proposed.left, 5);
}

TEST_F(cMagneticWndTest, TheWindowsOwnProcedureMayEndTheObject) {
  Pane first({600, 200, 700, 300}), pane({300, 200, 500, 350});
  std::optional<cMagneticWnd> others(std::in_place, world.cursorPosition, world.workArea);
  others->AddWindow(first.Handle());
  others->AddWindow(pane.Handle());
  pane.handler = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_MOVING) return std::nullopt;
    others.reset();
    return 7;
  };
  RECT proposed{5, 200, 205, 350};
  EXPECT_EQ(pane.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed)), 7);
  EXPECT_EQ(proposed.left, 5);
}

TEST_F(cMagneticWndTest, MinimisingAndRestoringCheckTheGlueing) {
  // The window handles the commands itself, so that nothing but the command tells of them.
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  main.handler = [](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message == WM_SYSCOMMAND) return 0;
    return std::nullopt;
  };

  tool.Put(700, 200);
  main.Send(WM_SYSCOMMAND, SC_CLOSE);
  main.Send(WM_SYSCOMMAND, SC_MAXIMIZE);
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
  main.Send(WM_SYSCOMMAND, 0xF020);
  EXPECT_FALSE(magnets.Glued(tool.Handle()));

  tool.Put(500, 200);
  main.Send(WM_SYSCOMMAND, 0xF120 | 2);  // the system uses the lowest four bits
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, AWindowThatIsReallyMinimisedHoldsAgainWhenItIsRestored) {
  Pane main({300, 200, 500, 350}, WS_OVERLAPPEDWINDOW | WS_VISIBLE), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  ASSERT_TRUE(magnets.Glued(tool.Handle()));
  main.Send(WM_SYSCOMMAND, SC_MINIMIZE);
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
  main.Send(WM_SYSCOMMAND, SC_RESTORE);
  EXPECT_TRUE(magnets.Glued(tool.Handle()));

  // By the program, without a command.
  ShowWindow(main.Handle(), SW_MINIMIZE);
  EXPECT_FALSE(magnets.Glued(tool.Handle()));
  ShowWindow(main.Handle(), SW_RESTORE);
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, AChangeOfDpiChecksTheGlueing) {
  Pane main({300, 200, 500, 350}), tool({700, 200, 800, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  RECT suggested{500, 200, 600, 300};
  tool.handler = [&](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
    if (message != WM_DPICHANGED) return std::nullopt;
    const RECT& place = *reinterpret_cast<const RECT*>(lParam);
    tool.Put(place.left, place.top);
    return 0;
  };
  tool.Send(WM_DPICHANGED, MAKEWPARAM(96, 96), reinterpret_cast<LPARAM>(&suggested));
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndTest, AWindowThatIsDestroyedDuringItsMoveEndsTheMove) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300}, WS_POPUP);
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  {
    Pane other({700, 600, 800, 700});
    magnets.AddWindow(other.Handle());
    Enter(other, {700, 600});
    Move(other, {710, 610});
  }
  ShowWindow(tool.Handle(), SW_SHOWNOACTIVATE);
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
}

}  // namespace
}  // namespace kestrelon::ui
