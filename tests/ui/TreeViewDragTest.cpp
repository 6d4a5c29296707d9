#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/KeyInput.h"
#include "tests/ui/Host.h"
#include "ui/win/NodeDrag.h"
#include "ui/win/TreeView.h"

namespace kestrelon::win {
namespace {

using Log = std::vector<std::wstring>;

// A tree of 40 nodes, 300 by 200 pixels. A drag begins with the first move while the left button is down, as
// in the program.
struct TreeViewDragTest : testing::Test {
  TreeViewDragTest() : tree(std::make_unique<TreeView>()) {
    tree->Create(host.Handle(), 60);
    host.tree = tree.get();
    SetWindowPos(tree->Handle(), nullptr, 0, 0, 300, 200, SWP_NOZORDER);
    {
      const RedrawOff off(tree->Handle());
      for (int i = 1; i <= 40; ++i) {
        const std::wstring name = std::to_wstring(i);
        tree->Add(nullptr, Relationship::kLast, L"K" + name, L"Category " + name);
      }
    }
    SetFocus(tree->Handle());
    ParkPointer();
    Listen();
    win::DoEvents();
    log.clear();
  }
  void Listen() {
    tree->events.mouseDown = [this](int button, int, POINT) {
      log.push_back(L"down " + std::to_wstring(button));
    };
    tree->events.mouseMove = [this](int buttons, int, POINT) {
      log.push_back(L"move " + std::to_wstring(buttons));
      if (buttons == 1) tree->BeginDrag(tree->At(1));
    };
    tree->events.mouseUp = [this](int button, int, POINT) {
      log.push_back(L"up " + std::to_wstring(button) + State());
    };
    tree->events.keyDown = [this](int key, int) { log.push_back(L"key " + std::to_wstring(key)); };
    tree->events.dragOver = [this](POINT point) { log.push_back(L"over " + At(point)); };
    tree->events.dragDrop = [this](POINT point) { log.push_back(L"drop " + At(point) + State()); };
    tree->events.dragCancel = [this] { log.push_back(L"cancel" + State()); };
  }
  static std::wstring At(POINT point) { return std::to_wstring(point.x) + L"," + std::to_wstring(point.y); }
  // Anything that should be over by then.
  std::wstring State() {
    return std::wstring(tree != nullptr && tree->Dragging() ? L" still dragging" : L"") +
           (GetCapture() != nullptr ? L" still captured" : L"");
  }
  // In the middle of the tree, where nothing scrolls.
  void ParkPointer() { PutPointer({150, 100}); }
  void PutPointer(POINT client) {
    ClientToScreen(tree->Handle(), &client);
    SetCursorPos(client.x, client.y);
    win::DoEvents();
  }
  void Mouse(UINT message, POINT point, WPARAM keys = 0) {
    test::SendMouse(tree->Handle(), message, point, keys);
  }
  void StartDrag() {
    Mouse(WM_LBUTTONDOWN, {100, 50}, MK_LBUTTON);
    Mouse(WM_MOUSEMOVE, {101, 50}, MK_LBUTTON);
    ASSERT_TRUE(tree->Dragging());
    ASSERT_EQ(GetCapture(), tree->Handle());
    log.clear();
  }
  HTREEITEM FirstVisible() { return TreeView_GetFirstVisible(tree->Handle()); }
  HTREEITEM Top() { return TreeView_GetRoot(tree->Handle()); }
  int LineHeight() { return TreeView_GetItemHeight(tree->Handle()); }

  test::Host host;
  std::unique_ptr<TreeView> tree;
  Log log;
};

TEST_F(TreeViewDragTest, TellsPressMoveAndThenTheDragUpToTheDrop) {
  Mouse(WM_LBUTTONDOWN, {100, 50}, MK_LBUTTON);
  Mouse(WM_MOUSEMOVE, {101, 50}, MK_LBUTTON);
  Mouse(WM_MOUSEMOVE, {102, 60}, MK_LBUTTON);
  Mouse(WM_MOUSEMOVE, {-5, 70}, MK_LBUTTON);
  Mouse(WM_LBUTTONUP, {103, 80});

  EXPECT_EQ(log, (Log{L"down 1", L"move 1", L"over 102,60", L"over -5,70", L"up 1", L"drop 103,80"}));
}

TEST_F(TreeViewDragTest, AReleaseOutsideTheTreeCancels) {
  for (const POINT outside : {POINT{-1, 50}, POINT{50, -1}, POINT{320, 50}, POINT{50, 220}}) {
    StartDrag();
    Mouse(WM_LBUTTONUP, outside);
    EXPECT_EQ(log, (Log{L"up 1", L"cancel"})) << outside.x << "," << outside.y;
  }
}

TEST_F(TreeViewDragTest, NoneBeginsAndNoneDropsWhileTheWindowWaitsForADialog) {
  EnableWindow(host.Handle(), FALSE);
  tree->BeginDrag(tree->At(1));
  EXPECT_FALSE(tree->Dragging());
  EnableWindow(host.Handle(), TRUE);

  StartDrag();
  EnableWindow(host.Handle(), FALSE);
  Mouse(WM_LBUTTONUP, {50, 50});
  EnableWindow(host.Handle(), TRUE);
  EXPECT_EQ(log.back(), L"cancel");
  EXPECT_FALSE(tree->Dragging());
}

TEST_F(TreeViewDragTest, OrdinaryEventsComeAgainAfterADrag) {
  StartDrag();
  Mouse(WM_LBUTTONUP, {50, 50});
  log.clear();

  Mouse(WM_MOUSEMOVE, {50, 51});
  test::SendKey(tree->Handle(), VK_ESCAPE);
  Mouse(WM_LBUTTONUP, {50, 50});

  EXPECT_EQ(log, (Log{L"move 0", L"key 27"}));
}

TEST_F(TreeViewDragTest, EscapeCancels) {
  StartDrag();
  test::PressKey(tree->Handle(), VK_ESCAPE);
  EXPECT_EQ(log, Log{L"cancel"});
}

TEST_F(TreeViewDragTest, EscapeBelongsToTheDragEvenWithACancelButton) {
  FormControl& button =
      host.AddControl({L"Command1", -1, ControlKind::kCommandButton, L"", L"Cancel", {0, 6000, 900, 300}});
  host.SetCancelButton(button);
  StartDrag();

  test::PressKey(tree->Handle(), VK_ESCAPE);
  EXPECT_EQ(log, Log{L"cancel"});
  EXPECT_EQ(host.pressed, Log{});

  test::PressKey(tree->Handle(), VK_ESCAPE);
  EXPECT_EQ(host.pressed, Log{L"Command1"});
}

TEST_F(TreeViewDragTest, TakesTheFocusForEscape) {
  SetFocus(host.Handle());
  tree->BeginDrag(tree->At(1));
  EXPECT_EQ(GetFocus(), tree->Handle());
}

TEST_F(TreeViewDragTest, AGivenUpDragDoesNotBeginAgainBeforeTheNextPress) {
  StartDrag();
  test::SendKey(tree->Handle(), VK_ESCAPE);

  Mouse(WM_MOUSEMOVE, {60, 60}, MK_LBUTTON);
  Mouse(WM_LBUTTONUP, {60, 60});
  Mouse(WM_LBUTTONDOWN, {100, 50}, MK_LBUTTON);
  Mouse(WM_MOUSEMOVE, {101, 50}, MK_LBUTTON);

  EXPECT_EQ(log, (Log{L"cancel", L"move 0", L"up 1", L"down 1", L"move 1"}));
  EXPECT_TRUE(tree->Dragging());
}

TEST_F(TreeViewDragTest, OtherKeysDoNothing) {
  tree->Select(&tree->At(1));
  StartDrag();
  TreeNode* const selected = tree->Selected();

  test::PressKey(tree->Handle(), VK_DELETE);
  test::PressKey(tree->Handle(), VK_DOWN);
  test::PressKey(tree->Handle(), VK_TAB);
  SendMessageW(tree->Handle(), WM_CHAR, L'c', 1);  // looks for a node whose name begins so

  EXPECT_EQ(log, Log{});
  EXPECT_EQ(tree->Selected(), selected);
  EXPECT_EQ(GetFocus(), tree->Handle());
  EXPECT_TRUE(tree->Dragging());
}

TEST_F(TreeViewDragTest, TheRightButtonCancelsAndIsNoClick) {
  StartDrag();
  Mouse(WM_RBUTTONDOWN, {50, 50}, MK_LBUTTON | MK_RBUTTON);
  Mouse(WM_RBUTTONUP, {50, 50}, MK_LBUTTON);
  EXPECT_EQ(log, Log{L"cancel"});
}

TEST_F(TreeViewDragTest, APressCancelsADragWhoseReleaseNeverCame) {
  StartDrag();
  Mouse(WM_LBUTTONDOWN, {100, 50}, MK_LBUTTON);
  EXPECT_EQ(log, (Log{L"cancel", L"down 1"}));
}

TEST_F(TreeViewDragTest, LosingTheMouseCancelsOnce) {
  StartDrag();
  SetCapture(host.Handle());
  EXPECT_EQ(log, Log{L"cancel still captured"});  // by the other window
  EXPECT_EQ(GetCapture(), host.Handle());
  ReleaseCapture();

  EXPECT_EQ(log.size(), 1u);
}

TEST_F(TreeViewDragTest, ATreeThatIsDisabledMeanwhileCancelsOnce) {
  StartDrag();
  EnableWindow(tree->Handle(), FALSE);
  EXPECT_EQ(log, Log{L"cancel"});
}

TEST_F(TreeViewDragTest, LosingTheFocusCancelsOnce) {
  StartDrag();
  SetFocus(host.Handle());
  EXPECT_EQ(log, Log{L"cancel"});
}

TEST_F(TreeViewDragTest, ATreeThatGoesMeanwhileCancelsOnce) {
  StartDrag();
  DestroyWindow(tree->Handle());
  EXPECT_EQ(log, Log{L"cancel"});
}

TEST_F(TreeViewDragTest, IsGivenUpSilentlyWithItsObject) {
  StartDrag();
  host.tree = nullptr;
  tree.reset();
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(TreeViewDragTest, ADisabledTreeBeginsNone) {
  EnableWindow(tree->Handle(), FALSE);
  tree->BeginDrag(tree->At(1));
  EXPECT_FALSE(tree->Dragging());
  EXPECT_NE(GetCapture(), tree->Handle());
}

TEST_F(TreeViewDragTest, MayBeEndedByItsOwnEvent) {
  tree->events.dragOver = [this](POINT) {
    log.push_back(L"over");
    EnableWindow(tree->Handle(), FALSE);
  };
  StartDrag();
  Mouse(WM_MOUSEMOVE, {60, 60}, MK_LBUTTON);
  EXPECT_EQ(log, (Log{L"over", L"cancel"}));
}

TEST_F(TreeViewDragTest, GoesOnWhenItsNodeIsRemoved) {
  StartDrag();
  tree->Remove(tree->At(1));
  Mouse(WM_MOUSEMOVE, {60, 60}, MK_LBUTTON);
  Mouse(WM_LBUTTONUP, {60, 61});
  EXPECT_EQ(log, (Log{L"over 60,60", L"up 1", L"drop 60,61"}));
}

TEST_F(TreeViewDragTest, WithImagesGoesTheSameWay) {
  UniqueImageList images(ImageList_Create(16, 16, ILC_COLOR32, 1, 0));
  ImageList_ReplaceIcon(images.get(), -1, LoadIconW(nullptr, MAKEINTRESOURCEW(32512)));
  tree->SetImageList(std::move(images));
  StartDrag();

  Mouse(WM_MOUSEMOVE, {60, 70}, MK_LBUTTON);
  Mouse(WM_LBUTTONUP, {60, 71});

  EXPECT_EQ(log, (Log{L"over 60,70", L"up 1", L"drop 60,71"}));
  EXPECT_EQ(ImageList_GetDragImage(nullptr, nullptr), nullptr);
}

TEST_F(TreeViewDragTest, HasNoPictureWithoutImages) {
  StartDrag();
  EXPECT_EQ(ImageList_GetDragImage(nullptr, nullptr), nullptr);
}

TEST_F(TreeViewDragTest, PaintsTheHighlightAtOnce) {
  tree->events.dragOver = [this](POINT point) { tree->SetDropHighlight(tree->HitTest(point)); };
  StartDrag();
  const RECT third = tree->TextRectangle(tree->At(3));

  Mouse(WM_MOUSEMOVE, {third.left + 3, third.top + 3}, MK_LBUTTON);

  EXPECT_EQ(tree->DropHighlight(), &tree->At(3));
  EXPECT_FALSE(GetUpdateRect(tree->Handle(), nullptr, FALSE));
}

TEST_F(TreeViewDragTest, ScrollsWhileThePointerRestsAtAnEdgeAndTellsIt) {
  StartDrag();
  PutPointer({150, 190});
  log.clear();

  ASSERT_TRUE(test::PumpUntil([&] { return log.size() >= 2; }));

  EXPECT_EQ(log[0], L"over 150,190");
  EXPECT_EQ(log[1], L"over 150,190");
  EXPECT_NE(FirstVisible(), Top());
}

TEST_F(TreeViewDragTest, ARealDragEndsWithOneReleaseAndOneDrop) {
  const auto send = [](DWORD flags) {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    SendInput(1, &input, sizeof input);
    win::DoEvents();
  };
  PutPointer({100, 50});
  log.clear();

  send(MOUSEEVENTF_LEFTDOWN);
  PutPointer({110, 60});
  PutPointer({120, 100});
  send(MOUSEEVENTF_LEFTUP);
  const auto count = [&](const wchar_t* event) { return std::count(log.begin(), log.end(), event); };
  EXPECT_TRUE(test::PumpUntil([&] { return count(L"drop 120,100") > 0; }));

  EXPECT_EQ(count(L"down 1"), 1);
  EXPECT_EQ(count(L"move 1"), 1);
  EXPECT_EQ(count(L"up 1"), 1);
  EXPECT_EQ(count(L"drop 120,100"), 1);
  EXPECT_EQ(count(L"cancel"), 0);
  EXPECT_EQ(GetCapture(), nullptr);
}

TEST_F(TreeViewDragTest, ScrollNearEdgeScrollsALineAtTheTopAndTheBottom) {
  tree->ScrollNearEdge({150, 190});
  tree->ScrollNearEdge({150, 190});
  EXPECT_EQ(FirstVisible(),
            TreeView_GetNextSibling(tree->Handle(), TreeView_GetNextSibling(tree->Handle(), Top())));

  tree->ScrollNearEdge({150, LineHeight() - 1});
  EXPECT_EQ(FirstVisible(), TreeView_GetNextSibling(tree->Handle(), Top()));
  tree->ScrollNearEdge({150, 0});
  tree->ScrollNearEdge({150, 0});
  EXPECT_EQ(FirstVisible(), Top());
}

TEST_F(TreeViewDragTest, ScrollNearEdgeLeavesTheMiddleAndTheOutside) {
  tree->EnsureVisible(tree->At(30));
  const HTREEITEM before = FirstVisible();
  ASSERT_NE(before, Top());

  for (const POINT point : {POINT{150, 100}, POINT{150, -1}, POINT{150, 210}, POINT{-1, 3}, POINT{310, 3}})
    tree->ScrollNearEdge(point);

  EXPECT_EQ(FirstVisible(), before);
}

TEST_F(TreeViewDragTest, ScrollNearEdgeReachesALittleOutsideWhileANodeIsDragged) {
  StartDrag();
  tree->ScrollNearEdge({150, 200});
  EXPECT_EQ(FirstVisible(), TreeView_GetNextSibling(tree->Handle(), Top()));
  tree->ScrollNearEdge({150, -1});
  EXPECT_EQ(FirstVisible(), Top());

  tree->ScrollNearEdge({150, 400});
  EXPECT_EQ(FirstVisible(), Top());
}

TEST_F(TreeViewDragTest, ScrollNearEdgeScrollsSidewaysAtTheSides) {
  tree->SetText(tree->At(1), std::wstring(200, L'W'));
  win::DoEvents();
  RECT area{};
  GetClientRect(tree->Handle(), &area);

  tree->ScrollNearEdge({area.right - 1, 100});
  EXPECT_GT(GetScrollPos(tree->Handle(), SB_HORZ), 0);
  for (int i = 0; i < 3; ++i) tree->ScrollNearEdge({0, 100});
  EXPECT_EQ(GetScrollPos(tree->Handle(), SB_HORZ), 0);
}

struct NodeDragTest : TreeViewDragTest {
  static UniqueImageList Picture() {
    UniqueImageList picture(ImageList_Create(16, 16, ILC_COLOR32, 1, 0));
    ImageList_ReplaceIcon(picture.get(), -1, LoadIconW(nullptr, MAKEINTRESOURCEW(32512)));
    return picture;
  }
  // From the corner of the window, as the picture's place counts.
  POINT InWindow(POINT client) {
    ClientToScreen(tree->Handle(), &client);
    RECT window{};
    GetWindowRect(tree->Handle(), &window);
    return {client.x - window.left, client.y - window.top};
  }
};

TEST_F(NodeDragTest, ShowsItsPictureAtThePointerAndHoldsTheMouse) {
  {
    NodeDrag drag(tree->Handle(), Picture(), {4, 5}, {60, 70});

    POINT place{}, hotSpot{};
    EXPECT_NE(ImageList_GetDragImage(&place, &hotSpot), nullptr);
    EXPECT_EQ(At(place), At(InWindow({60, 70})));
    EXPECT_EQ(At(hotSpot), L"4,5");
    EXPECT_TRUE(drag.PictureShown());
    EXPECT_EQ(GetCapture(), tree->Handle());
  }
  EXPECT_EQ(ImageList_GetDragImage(nullptr, nullptr), nullptr);
  EXPECT_EQ(GetCapture(), nullptr);
  EXPECT_FALSE(KillTimer(tree->Handle(), NodeDrag::kTimer));
}

TEST_F(NodeDragTest, MovesItsPictureHiddenOrNot) {
  NodeDrag drag(tree->Handle(), Picture(), {0, 0}, {60, 70});
  POINT place{};

  drag.MovePicture({61, 72});
  ImageList_GetDragImage(&place, nullptr);
  EXPECT_EQ(At(place), At(InWindow({61, 72})));

  drag.HidePicture();
  EXPECT_FALSE(drag.PictureShown());
  drag.MovePicture({63, 74});
  drag.ShowPicture();
  EXPECT_TRUE(drag.PictureShown());
  ImageList_GetDragImage(&place, nullptr);
  EXPECT_EQ(At(place), At(InWindow({63, 74})));
}

TEST_F(NodeDragTest, ShowsNothingWithoutAPicture) {
  NodeDrag drag(tree->Handle(), UniqueImageList(), {0, 0}, {60, 70});
  EXPECT_EQ(ImageList_GetDragImage(nullptr, nullptr), nullptr);

  drag.ShowPicture();
  drag.MovePicture({61, 71});
  EXPECT_FALSE(drag.PictureShown());
  EXPECT_EQ(GetCapture(), tree->Handle());
}

TEST_F(NodeDragTest, LeavesThePictureOfAnotherDragAlone) {
  const NodeDrag first(tree->Handle(), Picture(), {0, 0}, {60, 70});
  { const NodeDrag second(tree->Handle(), Picture(), {0, 0}, {90, 90}); }
  EXPECT_NE(ImageList_GetDragImage(nullptr, nullptr), nullptr);
}

}  // namespace
}  // namespace kestrelon::win
