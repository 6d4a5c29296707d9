#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

#include "tests/ui/MagneticFixture.h"

namespace kestrelon::ui {
namespace {

using test::Pane;
using cMagneticWndMoveTest = test::MagneticFixture;

TEST_F(cMagneticWndMoveTest, NinePixelsFromTheWorkAreasLeftEdgeJumpAndTenDoNot) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  Enter(pane, {310, 215});

  EXPECT_EQ(Move(pane, {19, 215}), (RECT{0, 200, 200, 350}));
  EXPECT_EQ(Move(pane, {20, 215}), (RECT{10, 200, 210, 350}));
  EXPECT_EQ(Move(pane, {1, 215}), (RECT{0, 200, 200, 350}));
  EXPECT_EQ(Move(pane, {0, 215}), (RECT{-10, 200, 190, 350}));
}

TEST_F(cMagneticWndMoveTest, EveryEdgeOfTheWorkAreaIsAMagnet) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  Enter(pane, {300, 200});
  EXPECT_EQ(Move(pane, {833, 587}), (RECT{824, 578, 1024, 728}));
  EXPECT_EQ(Move(pane, {834, 588}), (RECT{834, 588, 1034, 738}));
  EXPECT_EQ(Move(pane, {300, 9}), (RECT{300, 0, 500, 150}));
}

TEST_F(cMagneticWndMoveTest, TheWorkAreaIsTakenWhenTheMoveStarts) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  world.desktop = {50, 0, 1024, 728};
  Enter(pane, {300, 200});
  world.desktop = {0, 0, 1024, 728};
  EXPECT_EQ(Move(pane, {55, 200}), (RECT{50, 200, 250, 350}));
}

TEST_F(cMagneticWndMoveTest, AHandThatIsAheadOfTheWindowHoldsItWhereItPressed) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  RECT first{}, second{};
  pane.handler = [&](UINT message, WPARAM wParam, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_SYSCOMMAND || (wParam & 0xFFF0) != SC_MOVE) return std::nullopt;
    Enter(pane, {360, 240});
    first = Move(pane, {400, 260});
    pane.Send(WM_EXITSIZEMOVE);
    return 0;
  };
  pane.Send(WM_SYSCOMMAND, SC_MOVE | HTCAPTION, MAKELPARAM(310, 215));
  EXPECT_EQ(first, (RECT{390, 245, 590, 395}));

  // The next move, of which nobody tells where it was pressed, begins where the pointer is.
  pane.handler = nullptr;
  Enter(pane, {310, 215});
  second = Move(pane, {330, 225});
  EXPECT_EQ(second, (RECT{410, 255, 610, 405}));
}

TEST_F(cMagneticWndMoveTest, AnotherWindowIsAMagnetWhereItWasWhenTheMoveStarted) {
  Pane pane({600, 200, 700, 300}), other({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  magnets.AddWindow(other.Handle());
  Enter(pane, {600, 200});
  other.Put(100, 500);
  EXPECT_EQ(Move(pane, {508, 230}), (RECT{500, 230, 600, 330}));
  EXPECT_EQ(Move(pane, {308, 530}), (RECT{308, 530, 408, 630}));
}

TEST_F(cMagneticWndMoveTest, AWindowDoesNotHoldItselfBack) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  Enter(pane, {300, 200});
  EXPECT_EQ(Move(pane, {303, 204}), (RECT{303, 204, 503, 354}));
}

TEST_F(cMagneticWndMoveTest, TheWindowsOwnProcedureSeesTheMessageButItsResultDoesNotCount) {
  Pane pane({300, 200, 500, 350});
  int seen = 0;
  pane.handler = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_MOVING && message != WM_SIZING) return std::nullopt;
    ++seen;
    return 7;
  };
  magnets.AddWindow(pane.Handle());
  Enter(pane, {300, 200});
  Move(pane, {310, 200});
  Size(pane, WMSZ_LEFT, {300, 200, 500, 350});
  EXPECT_EQ(seen, 2);
}

TEST_F(cMagneticWndMoveTest, TheGluedWindowsTravelAlong) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300}), link({600, 210, 650, 260}),
      loose({700, 600, 800, 700});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(link.Handle(), main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  magnets.AddWindow(loose.Handle(), main.Handle());
  Enter(main, {320, 210});

  EXPECT_EQ(Move(main, {260, 250}), (RECT{240, 240, 440, 390}));
  EXPECT_EQ(tool.Rectangle(), (RECT{440, 240, 540, 340}));
  EXPECT_EQ(link.Rectangle(), (RECT{540, 250, 590, 300}));
  EXPECT_EQ(loose.Rectangle(), (RECT{700, 600, 800, 700}));

  EXPECT_EQ(Move(main, {270, 230}), (RECT{250, 220, 450, 370}));
  EXPECT_EQ(tool.Rectangle(), (RECT{450, 220, 550, 320}));
  EXPECT_EQ(link.Rectangle(), (RECT{550, 230, 600, 280}));
}

TEST_F(cMagneticWndMoveTest, AParentDoesNotFollowTheWindowThatIsGluedToIt) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(tool, {500, 200});
  EXPECT_EQ(Move(tool, {509, 209}), (RECT{500, 200, 600, 300}));
  EXPECT_EQ(Move(tool, {600, 400}), (RECT{600, 400, 700, 500}));
  EXPECT_EQ(main.Rectangle(), (RECT{300, 200, 500, 350}));
}

TEST_F(cMagneticWndMoveTest, WindowsThatAreGluedToAnotherParentStayAndAreMagnets) {
  Pane pane({700, 500, 800, 600}), main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(pane.Handle());
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  ASSERT_TRUE(magnets.Glued(tool.Handle()));
  Enter(pane, {700, 500});
  EXPECT_EQ(Move(pane, {606, 230}), (RECT{600, 230, 700, 330}));
  EXPECT_EQ(tool.Rectangle(), (RECT{500, 200, 600, 300}));
}

TEST_F(cMagneticWndMoveTest, AGluedWindowDoesNotHoldItsParentBack) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(main, {300, 200});
  EXPECT_EQ(Move(main, {303, 204}), (RECT{303, 204, 503, 354}));
  EXPECT_EQ(tool.Rectangle(), (RECT{503, 204, 603, 304}));
}

TEST_F(cMagneticWndMoveTest, AGluedWindowThatIsDrawnDrawsTheWholeGroup) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300}), other({800, 100, 900, 600});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  magnets.AddWindow(other.Handle());
  Enter(main, {300, 200});

  EXPECT_EQ(Move(main, {495, 230}), (RECT{500, 230, 700, 380}));
  EXPECT_EQ(tool.Rectangle(), (RECT{700, 230, 800, 330}));
}

TEST_F(cMagneticWndMoveTest, TheWorkAreaDrawsAGluedWindowToo) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(main, {300, 200});
  EXPECT_EQ(Move(main, {720, 200}), (RECT{724, 200, 924, 350}));
  EXPECT_EQ(tool.Rectangle(), (RECT{924, 200, 1024, 300}));
}

TEST_F(cMagneticWndMoveTest, TheLastOfTheGroupThatIsDrawnHasItsWay) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300}), left({100, 100, 192, 600}),
      right({490, 100, 590, 600});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  magnets.AddWindow(left.Handle());
  magnets.AddWindow(right.Handle());
  Enter(main, {300, 200});
  // The left edge would jump 4 to the left; the tool window, which comes later, jumps 6.
  EXPECT_EQ(Move(main, {196, 230}), (RECT{190, 230, 390, 380}));
}

TEST_F(cMagneticWndMoveTest, TravellingKeepsSizeOrderAndActivation) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300}), top({20, 500, 60, 540});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  SetActiveWindow(top.Handle());
  SetWindowPos(tool.Handle(), main.Handle(), 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
  UINT flags = 0;
  tool.handler = [&](UINT message, WPARAM, LPARAM lParam) -> std::optional<LRESULT> {
    if (message == WM_WINDOWPOSCHANGING) flags = reinterpret_cast<const WINDOWPOS*>(lParam)->flags;
    return std::nullopt;
  };
  Enter(main, {300, 200});
  Move(main, {330, 230});

  EXPECT_EQ(flags & (SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE), 0x15u);
  EXPECT_EQ(tool.Rectangle(), (RECT{530, 230, 630, 330}));
  EXPECT_EQ(GetWindow(main.Handle(), GW_HWNDNEXT), tool.Handle());
  EXPECT_EQ(GetActiveWindow(), top.Handle());
}

TEST_F(cMagneticWndMoveTest, AMaximisedWindowIsAMagnetTheSizeOfTheWorkArea) {
  Pane pane({300, 200, 500, 350}), large({600, 200, 700, 300}, WS_OVERLAPPEDWINDOW | WS_VISIBLE);
  magnets.AddWindow(pane.Handle());
  magnets.AddWindow(large.Handle());
  ShowWindow(large.Handle(), SW_MAXIMIZE);
  ASSERT_FALSE(large.Rectangle() == (RECT{50, 60, 1024, 728}));
  world.desktop = {50, 60, 1024, 728};
  Enter(pane, {300, 200});
  world.desktop = {0, 0, 0, 0};
  EXPECT_EQ(Move(pane, {59, 69}), (RECT{50, 60, 250, 210}));
  EXPECT_EQ(Move(pane, {-8, 200}), (RECT{-8, 200, 192, 350}));
}

TEST_F(cMagneticWndMoveTest, AMaximisedWindowStaysWhereItIs) {
  Pane large({600, 200, 700, 300}, WS_OVERLAPPEDWINDOW | WS_VISIBLE);
  ShowWindow(large.Handle(), SW_MAXIMIZE);
  const RECT whole = large.Rectangle();
  Pane main({whole.left, 200, 500, 350});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(large.Handle(), main.Handle());
  ASSERT_TRUE(magnets.Glued(large.Handle()));
  Enter(main, {0, 200});
  Move(main, {100, 300});
  EXPECT_EQ(large.Rectangle(), whole);
}

TEST_F(cMagneticWndMoveTest, AHiddenOrMinimisedWindowIsNoMagnet) {
  Pane pane({600, 200, 700, 300}), hidden({300, 200, 500, 350}), minimised({300, 500, 500, 650});
  for (const Pane* each : {&pane, &hidden, &minimised}) magnets.AddWindow(each->Handle());
  ShowWindow(hidden.Handle(), SW_HIDE);
  Enter(pane, {600, 200});
  EXPECT_EQ(Move(pane, {505, 230}), (RECT{505, 230, 605, 330}));
  EXPECT_EQ(Move(pane, {505, 530}), (RECT{500, 530, 600, 630}));
  pane.Send(WM_EXITSIZEMOVE);

  ShowWindow(minimised.Handle(), SW_MINIMIZE);
  const RECT place = minimised.Rectangle();
  pane.Put(place.left + 300, place.top + 100);
  Enter(pane, {place.left + 300, place.top + 100});
  EXPECT_EQ(Move(pane, {place.left + 3, place.top + 3}).left, place.left + 3);
}

TEST_F(cMagneticWndMoveTest, SizingPutsTheDraggedEdgesOnOtherEdges) {
  Pane pane({600, 200, 700, 300}), other({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  magnets.AddWindow(other.Handle());
  Enter(pane, {600, 200});
  EXPECT_EQ(Size(pane, WMSZ_LEFT, {509, 205, 700, 300}), (RECT{500, 205, 700, 300}));
  EXPECT_EQ(Size(pane, WMSZ_LEFT, {510, 205, 700, 300}), (RECT{510, 205, 700, 300}));
  EXPECT_EQ(Size(pane, WMSZ_TOPLEFT, {509, 205, 700, 300}), (RECT{500, 200, 700, 300}));
  EXPECT_EQ(Size(pane, WMSZ_BOTTOMRIGHT, {600, 200, 1020, 720}), (RECT{600, 200, 1024, 728}));
}

TEST_F(cMagneticWndMoveTest, SizingIsDrawnByTheGluedWindowsTooAndMovesNone) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(main, {500, 200});
  EXPECT_EQ(Size(main, WMSZ_RIGHT, {300, 200, 507, 350}), (RECT{300, 200, 500, 350}));
  EXPECT_EQ(Size(main, WMSZ_RIGHT, {300, 200, 540, 350}), (RECT{300, 200, 540, 350}));
  EXPECT_EQ(tool.Rectangle(), (RECT{500, 200, 600, 300}));
}

TEST_F(cMagneticWndMoveTest, TheSnapWidthIsTenAndMayBeChanged) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  EXPECT_EQ(magnets.SnapWidth(), 10);
  Enter(pane, {300, 200});

  magnets.SetSnapWidth(30);
  EXPECT_EQ(magnets.SnapWidth(), 30);
  EXPECT_EQ(Move(pane, {29, 200}).left, 0);
  EXPECT_EQ(Move(pane, {30, 200}).left, 30);

  magnets.SetSnapWidth(0);
  EXPECT_EQ(Move(pane, {1, 200}).left, 1);
}

TEST_F(cMagneticWndMoveTest, AMoveWithoutItsStartTakesTheProposedPlace) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  world.cursor = {600, 600};
  RECT proposed{9, 100, 209, 250};
  EXPECT_EQ(pane.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed)), 1);
  EXPECT_EQ(proposed, (RECT{0, 100, 200, 250}));
}

TEST_F(cMagneticWndMoveTest, AWindowThatChangesItsSizeUnderWayGoesOnFromTheProposedPlace) {
  Pane main({100, 200, 600, 350}), tool({600, 200, 700, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(main, {500, 210});
  Move(main, {520, 240});
  ASSERT_EQ(tool.Rectangle(), (RECT{620, 230, 720, 330}));

  // The system makes it smaller and keeps it under the pointer.
  world.cursor = {530, 240};
  RECT proposed{430, 230, 630, 380};
  main.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed));
  EXPECT_EQ(proposed, (RECT{430, 230, 630, 380}));
  world.cursor = {550, 260};
  proposed = {0, 0, 200, 150};
  main.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed));
  EXPECT_EQ(proposed, (RECT{450, 250, 650, 400}));
  EXPECT_EQ(tool.Rectangle(), (RECT{640, 250, 740, 350}));
}

TEST_F(cMagneticWndMoveTest, TheFirstStepByKeyboardMayPutThePointerOnTheCaption) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  RECT place{};
  // The loop of moving runs inside the command.
  pane.handler = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_SYSCOMMAND) return std::nullopt;
    Enter(pane, {700, 600});
    world.cursor = {400, 210};
    place = {308, 200, 508, 350};
    pane.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&place));
    EXPECT_EQ(place, (RECT{308, 200, 508, 350}));
    place = Move(pane, {408, 218});
    pane.Send(WM_EXITSIZEMOVE);
    return 0;
  };
  pane.Send(WM_SYSCOMMAND, SC_MOVE);
  EXPECT_EQ(place, (RECT{316, 208, 516, 358}));
}

TEST_F(cMagneticWndMoveTest, AMoveByTheCaptionGoesByThePointerFromItsStartOn) {
  Pane pane({300, 200, 500, 350});
  magnets.AddWindow(pane.Handle());
  RECT place{};
  pane.handler = [&](UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
    if (message != WM_SYSCOMMAND) return std::nullopt;
    Enter(pane, {310, 210});
    place = Move(pane, {318, 214});
    pane.Send(WM_EXITSIZEMOVE);
    return 0;
  };
  pane.Send(WM_SYSCOMMAND, SC_MOVE | HTCAPTION);
  EXPECT_EQ(place, (RECT{308, 204, 508, 354}));
}

TEST_F(cMagneticWndMoveTest, AWindowThatIsAddedDuringAMoveWaitsForTheNextOne) {
  Pane main({300, 200, 500, 350}), tool({540, 240, 640, 340});
  magnets.AddWindow(main.Handle());
  Enter(main, {300, 200});
  Move(main, {340, 240});
  magnets.AddWindow(tool.Handle(), main.Handle());
  ASSERT_TRUE(magnets.Glued(tool.Handle()));

  Move(main, {400, 240});
  EXPECT_EQ(tool.Rectangle(), (RECT{540, 240, 640, 340}));
}

TEST_F(cMagneticWndMoveTest, AMoveThatIsGivenUpTakesTheGluedWindowsBack) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(main, {300, 200});
  Move(main, {340, 240});
  main.Put(300, 200);
  main.Send(WM_EXITSIZEMOVE);
  EXPECT_EQ(tool.Rectangle(), (RECT{500, 200, 600, 300}));
  EXPECT_TRUE(magnets.Glued(tool.Handle()));
}

TEST_F(cMagneticWndMoveTest, AClickOnTheCaptionMovesNoOtherWindow) {
  Pane main({300, 200, 500, 350}), tool({500, 200, 600, 300});
  magnets.AddWindow(main.Handle());
  magnets.AddWindow(tool.Handle(), main.Handle());
  Enter(main, {310, 210});
  tool.Put(700, 600);
  main.Send(WM_EXITSIZEMOVE);
  EXPECT_EQ(tool.Rectangle(), (RECT{700, 600, 800, 700}));
}

// The system's own loop of moving a window, with the real pointer.
struct MoveLoopFixture : test::MagneticFixture {
  MoveLoopFixture() {
    world.cursorPosition = SystemWorld().cursorPosition;
    real = std::make_unique<cMagneticWnd>(world.cursorPosition, world.workArea);
    real->AddWindow(main.Handle());
    real->AddWindow(tool.Handle(), main.Handle());
  }
  // Moves the window by keyboard: `keys` in their order, each when the one before has moved it.
  void MoveByKeys(std::vector<WPARAM> keys) {
    std::size_t next = 0;
    const auto press = [&] { PostMessageW(main.Handle(), WM_KEYDOWN, keys.at(next++), 0); };
    main.handler = [&](UINT message, WPARAM wParam, LPARAM lParam) -> std::optional<LRESULT> {
      if (message == WM_ENTERSIZEMOVE) {
        SetTimer(main.Handle(), 1, 5000, nullptr);
        press();
      }
      if (message == WM_MOVING) {
        proposals.push_back(*reinterpret_cast<const RECT*>(lParam));
        if (next < keys.size()) press();
      }
      if (message == WM_TIMER && wParam == 1) {  // rather than waiting for ever
        ADD_FAILURE() << "the window does not move";
        PostMessageW(main.Handle(), WM_KEYDOWN, VK_ESCAPE, 0);
      }
      if (message == WM_MOVE) places.push_back(main.Rectangle());
      return std::nullopt;
    };
    main.Send(WM_SYSCOMMAND, SC_MOVE);
    KillTimer(main.Handle(), 1);
    main.handler = nullptr;
  }

  Pane main{{300, 200, 500, 350}, WS_OVERLAPPEDWINDOW | WS_VISIBLE};
  Pane tool{{500, 200, 600, 300}};
  std::vector<RECT> proposals, places;
  std::unique_ptr<cMagneticWnd> real;
};
using cMagneticWndMoveLoopTest = MoveLoopFixture;

TEST_F(cMagneticWndMoveLoopTest, AMoveByKeyboardDoesNotJumpAndTakesTheGluedWindowAlong) {
  MoveByKeys({VK_RIGHT, VK_RIGHT, VK_DOWN, VK_RETURN});
  ASSERT_GE(proposals.size(), 3u);
  const RECT place = main.Rectangle();
  EXPECT_EQ(place, proposals.back());
  EXPECT_GT(place.left, 300);
  EXPECT_LT(place.left, 340);
  EXPECT_GT(place.top, 200);
  EXPECT_LT(place.top, 220);
  EXPECT_EQ(tool.Rectangle(), (RECT{place.right, place.top, place.right + 100, place.top + 100}));
  EXPECT_TRUE(real->Glued(tool.Handle()));
}

TEST_F(cMagneticWndMoveLoopTest, EscapeTakesTheGluedWindowBackToo) {
  MoveByKeys({VK_RIGHT, VK_DOWN, VK_ESCAPE});
  ASSERT_FALSE(places.empty());
  EXPECT_GT(places.front().left, 300);
  EXPECT_EQ(main.Rectangle(), (RECT{300, 200, 500, 350}));
  EXPECT_EQ(tool.Rectangle(), (RECT{500, 200, 600, 300}));
  EXPECT_TRUE(real->Glued(tool.Handle()));
}

}  // namespace
}  // namespace kestrelon::ui
