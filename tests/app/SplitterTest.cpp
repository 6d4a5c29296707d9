// Layout of the panes and the bar between them.

#include "app/MainLayout.h"
#include "app/Splitter.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

using app::PaneLayout;

TEST(PanesOnResize, LeavesTheBarAndGivesTheListTheRestLess80) {
  const PaneLayout panes = app::PanesOnResize(3000, 75, 12000);
  EXPECT_EQ(panes.barLeft, 3000);
  EXPECT_EQ(panes.treeWidth, 3000);
  EXPECT_EQ(panes.listLeft, 3075);
  EXPECT_EQ(panes.listWidth, 8920);
}

TEST(BarWhileDragging, FollowsThePointerLess35) {
  EXPECT_EQ(app::BarWhileDragging(3000, 135), 3100);
  EXPECT_EQ(app::BarWhileDragging(3000, -165), 2800);
}

TEST(PanesOnRelease, HasItsOwnFigures) {
  const PaneLayout panes = app::PanesOnRelease(3000, 75, 12000);
  EXPECT_EQ(panes.barLeft, 3025);
  EXPECT_EQ(panes.treeWidth, 3000);
  EXPECT_EQ(panes.listLeft, 3100);
  EXPECT_EQ(panes.listWidth, 8910);
}

TEST(PanesOnRelease, BeyondTheRightEdgeIs100Inside) {
  const PaneLayout panes = app::PanesOnRelease(12500, 75, 12000);
  EXPECT_EQ(panes.treeWidth, 11900);
  EXPECT_EQ(panes.barLeft, 11925);
  EXPECT_EQ(panes.listWidth, 10);
}

TEST(PanesOnRelease, AtTheRightEdgeItselfStays) {
  EXPECT_EQ(app::PanesOnRelease(12000, 75, 12000).treeWidth, 12000);
}

TEST(PanesOnRelease, AtTheFarLeftKeeps10) {
  EXPECT_EQ(app::PanesOnRelease(-700, 75, 12000).treeWidth, 10);
  EXPECT_EQ(app::PanesOnRelease(9, 75, 12000).treeWidth, 10);
  EXPECT_EQ(app::PanesOnRelease(-700, 75, 12000).barLeft, 35);
}

TEST(PanesOnRelease, TakesAWholeNumber) { EXPECT_EQ(app::PanesOnRelease(3000.4, 75, 12000).treeWidth, 3000); }

// The real bar, moved by messages. At 96 pixels an inch a pixel is 15 units.
class SplitterBar : public MainFormFixture {
 protected:
  HWND Bar() { return form->Picture1().Handle(); }
  RECT PlaceOf(HWND child) {
    RECT place;
    GetWindowRect(child, &place);
    MapWindowPoints(nullptr, form->Handle(), reinterpret_cast<POINT*>(&place), 2);
    return place;
  }
  int InnerWidth() {
    RECT inner;
    GetClientRect(form->Handle(), &inner);
    return inner.right;
  }
  int InnerHeight() {
    RECT inner;
    GetClientRect(form->Handle(), &inner);
    return inner.bottom;
  }
  // Presses on the bar, moves the pointer to a place of the window in steps, releases.
  void DragTo(int target) {
    SendMouse(Bar(), WM_LBUTTONDOWN, {2, 20}, MK_LBUTTON);
    for (int step = 0; step < 4; ++step) {
      SendMouse(Bar(), WM_MOUSEMOVE, {target - PlaceOf(Bar()).left, 20}, MK_LBUTTON);
    }
    SendMouse(Bar(), WM_LBUTTONUP, {2, 20});
    win::DoEvents();
  }
};

TEST_F(SplitterBar, PanesFillTheWindowBetweenToolbarAndStatusBar) {
  Start();
  const int top = Parts().Toolbar1.Height();
  const int bottom = InnerHeight() - Parts().StatusBar1.Height();
  ASSERT_GT(top, 0);
  for (const HWND pane : {Tree().Handle(), Bar(), List().Handle()}) {
    EXPECT_EQ(PlaceOf(pane).top, top);
    EXPECT_EQ(PlaceOf(pane).bottom, bottom);
  }
  const double width = InnerWidth() * 15.0;
  EXPECT_EQ(PlaceOf(Tree().Handle()).left, 0);
  EXPECT_EQ(PlaceOf(Tree().Handle()).right, 200);
  EXPECT_EQ(PlaceOf(Bar()).left, 200);
  EXPECT_EQ(PlaceOf(Bar()).right, 205);
  EXPECT_EQ(PlaceOf(List().Handle()).left, 205);
  EXPECT_EQ(PlaceOf(List().Handle()).right - 205, win::PixelsFromTwips(width - 3000 - 80, 96));
}

TEST_F(SplitterBar, KeepsItsPlaceWhenTheWindowIsSized) {
  Start();
  SetWindowPos(form->Handle(), nullptr, 0, 0, 700, 500, SWP_NOMOVE | SWP_NOZORDER);
  EXPECT_EQ(PlaceOf(Bar()).left, 200);
  EXPECT_EQ(PlaceOf(List().Handle()).right - 205, win::PixelsFromTwips(InnerWidth() * 15.0 - 3080, 96));
  EXPECT_EQ(PlaceOf(List().Handle()).bottom, InnerHeight() - Parts().StatusBar1.Height());
  EXPECT_EQ(PlaceOf(Parts().StatusBar1.Handle()).bottom, InnerHeight());
}

TEST_F(SplitterBar, MovesWithThePointerWhileTheButtonIsDown) {
  Start();
  SendMouse(Bar(), WM_LBUTTONDOWN, {2, 20}, MK_LBUTTON);
  EXPECT_TRUE(form->Picture1().Dragging());
  SendMouse(Bar(), WM_MOUSEMOVE, {42, 20}, MK_LBUTTON);
  EXPECT_DOUBLE_EQ(form->BarLeft(), 3000 + 42 * 15 - 35);
  EXPECT_EQ(PlaceOf(Bar()).left, win::PixelsFromTwips(3595, 96));
  EXPECT_EQ(PlaceOf(Tree().Handle()).right, 200) << "the panes follow at the release";

  SendMouse(Bar(), WM_LBUTTONUP, {2, 20});
  EXPECT_FALSE(form->Picture1().Dragging());
  EXPECT_DOUBLE_EQ(form->BarLeft(), 3620);
  EXPECT_EQ(PlaceOf(Tree().Handle()).right, win::PixelsFromTwips(3595, 96));
  EXPECT_EQ(PlaceOf(List().Handle()).left, win::PixelsFromTwips(3595 + 75 + 25, 96));
}

TEST_F(SplitterBar, HasThePanesDrawnAnewWhereItWasDraggedOverThem) {
  Start();
  form->ShowNow(SW_SHOWNORMAL);
  win::DoEvents();
  SendMouse(Bar(), WM_LBUTTONDOWN, {2, 20}, MK_LBUTTON);
  SendMouse(Bar(), WM_MOUSEMOVE, {152, 20}, MK_LBUTTON);
  UpdateWindow(List().Handle());

  SendMouse(Bar(), WM_LBUTTONUP, {2, 20});

  RECT inner, invalid;
  GetClientRect(List().Handle(), &inner);
  ASSERT_TRUE(GetUpdateRect(List().Handle(), &invalid, FALSE));
  EXPECT_EQ(invalid.left, inner.left);
  EXPECT_EQ(invalid.right, inner.right);
  EXPECT_EQ(invalid.bottom, inner.bottom);
}

TEST_F(SplitterBar, DoesNotMoveWithoutAPress) {
  Start();
  SendMouse(Bar(), WM_MOUSEMOVE, {42, 20});
  EXPECT_DOUBLE_EQ(form->BarLeft(), 3000);
}

TEST_F(SplitterBar, ReleasedBeyondTheRightEdgeStands100Inside) {
  Start();
  DragTo(InnerWidth() + 60);
  EXPECT_DOUBLE_EQ(form->BarLeft(), InnerWidth() * 15.0 - 100 + 25);
  EXPECT_EQ(PlaceOf(Tree().Handle()).right, win::PixelsFromTwips(InnerWidth() * 15.0 - 100, 96));
}

TEST_F(SplitterBar, ReleasedAtTheFarLeftKeeps10OfTheTree) {
  Start();
  DragTo(-80);
  EXPECT_DOUBLE_EQ(form->BarLeft(), 35);
  EXPECT_GE(PlaceOf(Tree().Handle()).right, 1);
}

TEST_F(SplitterBar, EndsTheDragWhenTheMouseIsTakenAway) {
  Start();
  SendMouse(Bar(), WM_LBUTTONDOWN, {2, 20}, MK_LBUTTON);
  SetCapture(form->Handle());
  ReleaseCapture();
  EXPECT_FALSE(form->Picture1().Dragging());
  SendMouse(Bar(), WM_MOUSEMOVE, {42, 20}, MK_LBUTTON);
  EXPECT_DOUBLE_EQ(form->BarLeft(), 3025);
}

TEST_F(SplitterBar, CanBeDraggedAgainAfterARelease) {
  Start();
  DragTo(InnerWidth() + 60);
  SendMouse(Bar(), WM_LBUTTONDOWN, {2, 20}, MK_LBUTTON);
  SendMouse(Bar(), WM_MOUSEMOVE, {-100, 20}, MK_LBUTTON);
  SendMouse(Bar(), WM_LBUTTONUP, {2, 20});
  EXPECT_LT(form->BarLeft(), InnerWidth() * 15.0 - 1000);
}

TEST_F(SplitterBar, AWindowWithoutRoomForTheListIsNoError) {
  Start();
  DragTo(InnerWidth() + 60);
  SetWindowPos(form->Handle(), nullptr, 0, 0, 300, 200, SWP_NOMOVE | SWP_NOZORDER);
  EXPECT_GE(PlaceOf(List().Handle()).right, PlaceOf(List().Handle()).left);
}

TEST_F(SplitterBar, TheLastStatusPanelTakesTheRest) {
  Start();
  int edges[3] = {};
  SendMessageW(Parts().StatusBar1.Handle(), SB_GETPARTS, 3, reinterpret_cast<LPARAM>(edges));
  EXPECT_EQ(edges[0], 420);
  EXPECT_EQ(edges[1], 620);
  EXPECT_EQ(edges[2], -1);
}

}  // namespace
}  // namespace kestrelon::test
