#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/KeyInput.h"
#include "tests/ui/Host.h"
#include "ui/win/TreeView.h"

namespace kestrelon::win {
namespace {

using Log = std::vector<std::wstring>;

struct TreeEventsFixture : testing::Test {
  TreeEventsFixture() {
    tree.Create(host.Handle(), 60);
    host.tree = &tree;
    SetWindowPos(tree.Handle(), nullptr, 0, 0, 300, 400, SWP_NOZORDER);
    a = &tree.Add(nullptr, Relationship::kLast, L"A", L"Books");
    b = &tree.Add(nullptr, Relationship::kLast, L"B", L"Music");
    tree.events.nodeClick = [this](TreeNode& node) { log.push_back(L"click " + node.Key()); };
    tree.events.afterLabelEdit = [this](const std::wstring& text) {
      log.push_back(L"edited " + text);
      return accept;
    };
    tree.events.keyDown = [this](int key, int shift) {
      log.push_back(L"key " + std::to_wstring(key) + L" " + std::to_wstring(shift));
    };
    tree.events.mouseDown = [this](int button, int shift, POINT) {
      log.push_back(L"down " + std::to_wstring(button) + L" " + std::to_wstring(shift));
    };
    tree.events.mouseUp = [this](int button, int, POINT) { log.push_back(L"up " + std::to_wstring(button)); };
    win::DoEvents();
    log.clear();
  }
  POINT On(TreeNode& node) {
    const RECT rectangle = tree.TextRectangle(node);
    return {rectangle.left + 3, (rectangle.top + rectangle.bottom) / 2};
  }
  HWND Edit() { return TreeView_GetEditControl(tree.Handle()); }
  void Type(const std::wstring& text) { SetWindowTextW(Edit(), text.c_str()); }

  test::Host host;
  TreeView tree;
  TreeNode *a = nullptr, *b = nullptr;
  bool accept = true;
  Log log;
};
using TreeViewEventsTest = TreeEventsFixture;

TEST_F(TreeViewEventsTest, AClickOnANodeIsPressClickRelease) {
  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, On(*b), MK_LBUTTON);
  test::SendMouse(tree.Handle(), WM_LBUTTONUP, On(*b));

  EXPECT_EQ(log, (Log{L"down 1 0", L"click B", L"up 1"}));
  EXPECT_EQ(tree.Selected(), b);
}

TEST_F(TreeViewEventsTest, APressIsToldBeforeTheControlSelects) {
  tree.Select(a);
  TreeNode* selectedThen = nullptr;
  tree.events.mouseDown = [&](int, int, POINT) { selectedThen = tree.Selected(); };

  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, On(*b), MK_LBUTTON);

  EXPECT_EQ(selectedThen, a);
}

TEST_F(TreeViewEventsTest, AClickBesideTheNodesClicksNone) {
  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, {150, 380}, MK_LBUTTON);
  test::SendMouse(tree.Handle(), WM_LBUTTONUP, {150, 380});

  EXPECT_EQ(log, (Log{L"down 1 0", L"up 1"}));
}

TEST_F(TreeViewEventsTest, ARightClickIsNoNodeClickAndLeavesTheSelection) {
  tree.Select(a);

  test::SendMouse(tree.Handle(), WM_RBUTTONDOWN, On(*b), MK_RBUTTON);
  test::SendMouse(tree.Handle(), WM_RBUTTONUP, On(*b));

  EXPECT_EQ(log, (Log{L"down 2 0", L"up 2"}));
  EXPECT_EQ(tree.Selected(), a);
  EXPECT_EQ(GetFocus(), tree.Handle());
}

TEST_F(TreeViewEventsTest, AReleaseWithoutAPressIsNotTold) {
  test::SendMouse(tree.Handle(), WM_LBUTTONUP, On(*b));
  test::SendMouse(tree.Handle(), WM_RBUTTONUP, On(*b));
  EXPECT_EQ(log, Log{});
}

TEST_F(TreeViewEventsTest, RealClicksAreReleasedExactlyOnce) {
  POINT point = On(*b);
  ClientToScreen(tree.Handle(), &point);
  SetCursorPos(point.x, point.y);
  INPUT inputs[4] = {};
  const DWORD flags[4] = {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP, MOUSEEVENTF_RIGHTDOWN,
                          MOUSEEVENTF_RIGHTUP};
  for (int i = 0; i < 4; ++i) {
    inputs[i].type = INPUT_MOUSE;
    inputs[i].mi.dwFlags = flags[i];
  }
  SendInput(4, inputs, sizeof(INPUT));

  EXPECT_TRUE(test::PumpUntil([&] { return log.size() >= 5; }));
  win::DoEvents();
  EXPECT_EQ(log, (Log{L"down 1 0", L"click B", L"up 1", L"down 2 0", L"up 2"}));
}

TEST_F(TreeViewEventsTest, ANodeThatGoesDuringItsClickIsNotTold) {
  tree.events.mouseDown = [&](int, int, POINT) {};
  tree.events.mouseMove = nullptr;
  tree.events.gotFocus = [&] { tree.Remove(*b); };  // comes while the control handles the press

  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, On(*b), MK_LBUTTON);

  EXPECT_EQ(log, Log{});
  EXPECT_EQ(tree.Count(), 1u);
}

TEST_F(TreeViewEventsTest, TheShiftStateTellsShiftCtrlAndAlt) {
  const test::KeysDown held({VK_SHIFT, VK_CONTROL, VK_MENU});
  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, {150, 380}, MK_LBUTTON | MK_SHIFT | MK_CONTROL);
  EXPECT_EQ(log, Log{L"down 1 7"});
}

TEST_F(TreeViewEventsTest, MovesTellTheButtonsHeldAndThePoint) {
  Log moves;
  tree.events.mouseMove = [&](int buttons, int, POINT point) {
    moves.push_back(std::to_wstring(buttons) + L" at " + std::to_wstring(point.x) + L"," +
                    std::to_wstring(point.y));
  };

  test::SendMouse(tree.Handle(), WM_MOUSEMOVE, {5, 6});
  test::SendMouse(tree.Handle(), WM_MOUSEMOVE, {-7, 8}, MK_LBUTTON);
  test::SendMouse(tree.Handle(), WM_MOUSEMOVE, {9, 9}, MK_RBUTTON);

  EXPECT_EQ(moves, (Log{L"0 at 5,6", L"1 at -7,8", L"2 at 9,9"}));
}

TEST_F(TreeViewEventsTest, ArrowKeysClickTheNodeTheyReach) {
  tree.Select(a);
  SetFocus(tree.Handle());

  test::SendKey(tree.Handle(), VK_DOWN);

  EXPECT_EQ(tree.Selected(), b);
  EXPECT_EQ(log, (Log{L"key 40 0", L"click B"}));
}

TEST_F(TreeViewEventsTest, KeysComeWithTheirShiftState) {
  test::SendKey(tree.Handle(), 'F', {VK_CONTROL});
  test::SendKey(tree.Handle(), VK_DELETE);
  test::SendKey(tree.Handle(), VK_F2, {VK_SHIFT});

  EXPECT_EQ(log, (Log{L"key 70 2", L"key 46 0", L"key 113 1"}));
}

TEST_F(TreeViewEventsTest, EnterReachesTheTreeThroughTheFormWithoutADefaultButton) {
  SetFocus(tree.Handle());
  test::PressKey(tree.Handle(), VK_RETURN);
  EXPECT_EQ(log, Log{L"key 13 0"});
}

TEST_F(TreeViewEventsTest, TellsTheFocus) {
  int focused = 0;
  tree.events.gotFocus = [&] { ++focused; };
  SetFocus(host.Handle());
  SetFocus(tree.Handle());
  EXPECT_GE(focused, 1);
}

TEST_F(TreeViewEventsTest, LabelEditingIsRefusedUnlessAutomaticOrStarted) {
  SetFocus(tree.Handle());
  tree.Select(a);
  const HTREEITEM item = TreeView_GetSelection(tree.Handle());

  TreeView_EditLabel(tree.Handle(), item);
  EXPECT_FALSE(tree.EditingLabel());

  tree.SetAutomaticLabelEdit(true);
  TreeView_EditLabel(tree.Handle(), item);
  EXPECT_TRUE(tree.EditingLabel());
}

TEST_F(TreeViewEventsTest, StartsEditingTheSelectedNodeAndTakesTheFocus) {
  tree.Select(b);
  SetFocus(nullptr);

  tree.StartLabelEdit();

  EXPECT_TRUE(tree.EditingLabel());
  EXPECT_EQ(GetFocus(), Edit());
  EXPECT_EQ(test::TextOf(Edit()), L"Music");
  EXPECT_FALSE(tree.AutomaticLabelEdit());
}

TEST_F(TreeViewEventsTest, StartsNoEditWithoutASelection) {
  tree.Select(nullptr);
  tree.StartLabelEdit();
  EXPECT_FALSE(tree.EditingLabel());
}

TEST_F(TreeViewEventsTest, AnAcceptedEditRenamesTheNode) {
  tree.Select(a);
  tree.StartLabelEdit();
  Type(L"Films");

  test::PressKey(Edit(), VK_RETURN);

  EXPECT_FALSE(tree.EditingLabel());
  EXPECT_EQ(log, Log{L"edited Films"});
  EXPECT_EQ(a->Text(), L"Films");
}

TEST_F(TreeViewEventsTest, ARejectedEditKeepsTheOldText) {
  accept = false;
  tree.Select(a);
  tree.StartLabelEdit();
  Type(L"  ");

  test::PressKey(Edit(), VK_RETURN);

  EXPECT_EQ(log, Log{L"edited   "});
  EXPECT_EQ(a->Text(), L"Books");
  wchar_t shown[100] = {};
  TVITEMW item{};
  item.mask = TVIF_HANDLE | TVIF_TEXT;
  item.hItem = TreeView_GetSelection(tree.Handle());
  item.pszText = shown;
  item.cchTextMax = 100;
  SendMessageW(tree.Handle(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  EXPECT_STREQ(shown, L"Books");
}

TEST_F(TreeViewEventsTest, EscapeGivesTheEditUp) {
  tree.Select(a);
  tree.StartLabelEdit();
  Type(L"Films");

  test::PressKey(Edit(), VK_ESCAPE);

  EXPECT_FALSE(tree.EditingLabel());
  EXPECT_EQ(log, Log{});
  EXPECT_EQ(a->Text(), L"Books");
}

TEST_F(TreeViewEventsTest, EnterAndEscapeBelongToTheEditEvenWithDefaultAndCancelButtons) {
  FormControl& ok =
      host.AddControl({L"Command1", -1, ControlKind::kCommandButton, L"", L"OK", {0, 6000, 900, 300}});
  host.SetDefaultButton(ok);
  host.SetCancelButton(ok);
  tree.Select(a);
  tree.StartLabelEdit();
  Type(L"Films");

  test::PressKey(Edit(), VK_RETURN);

  EXPECT_EQ(a->Text(), L"Films");
  EXPECT_EQ(host.pressed, Log{});
  tree.StartLabelEdit();
  test::PressKey(Edit(), VK_ESCAPE);
  EXPECT_FALSE(tree.EditingLabel());
  EXPECT_EQ(host.pressed, Log{});
}

TEST_F(TreeViewEventsTest, TooLongANameCanBeTypedAndArrivesWhole) {
  tree.Select(a);
  tree.StartLabelEdit();
  for (int i = 0; i < 300; ++i) SendMessageW(Edit(), WM_CHAR, L'n', 1);

  test::PressKey(Edit(), VK_RETURN);

  EXPECT_EQ(log, Log{L"edited " + std::wstring(300, L'n')});
  EXPECT_EQ(a->Text(), std::wstring(300, L'n'));
}

TEST_F(TreeViewEventsTest, AClickElsewhereEndsTheEditAsTyped) {
  tree.Select(a);
  tree.StartLabelEdit();
  Type(L"Films");

  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, On(*b), MK_LBUTTON);

  EXPECT_FALSE(tree.EditingLabel());
  EXPECT_EQ(a->Text(), L"Films");
  EXPECT_EQ(log, (Log{L"edited Films", L"down 1 0", L"click B"}));
}

TEST_F(TreeViewEventsTest, RemovingTheNodeUnderEditIsNoEdit) {
  tree.Select(a);
  tree.StartLabelEdit();
  Type(L"Films");

  tree.Remove(*a);
  win::DoEvents();

  EXPECT_FALSE(tree.EditingLabel());
  EXPECT_EQ(log, Log{});
}

}  // namespace
}  // namespace kestrelon::win
