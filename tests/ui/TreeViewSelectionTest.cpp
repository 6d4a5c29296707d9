// The selection belongs to the user and to the program: what the control would select by itself, and what
// becomes of a selection whose place goes. The notifications come as one version of the control or another
// sends them; this machine's own need not send them all.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/KeyInput.h"
#include "tests/ui/Host.h"
#include "ui/win/TreeView.h"

namespace kestrelon::win {
namespace {

using Log = std::vector<std::wstring>;

// A(B(C)), D; the branches of A and B are open. Nothing is selected.
struct TreeSelectionFixture : testing::Test {
  TreeSelectionFixture() {
    tree.Create(host.Handle(), 60);
    host.tree = &tree;
    SetWindowPos(tree.Handle(), nullptr, 0, 0, 300, 400, SWP_NOZORDER);
    a = &tree.Add(nullptr, Relationship::kLast, L"A", L"Books");
    b = &tree.Add(a, Relationship::kChild, L"B", L"Novels");
    c = &tree.Add(b, Relationship::kChild, L"C", L"Read");
    d = &tree.Add(nullptr, Relationship::kLast, L"D", L"Music");
    tree.Expand(*a);
    tree.Expand(*b);
    tree.events.nodeClick = [this](TreeNode& node) { log.push_back(L"click " + node.Key()); };
    tree.events.afterLabelEdit = [this](const std::wstring& text) {
      log.push_back(L"edited " + text);
      return true;
    };
    tree.events.mouseDown = [this](int button, int, POINT) {
      log.push_back(L"down " + std::to_wstring(button));
    };
    tree.events.keyDown = [this](int key, int) { log.push_back(L"key " + std::to_wstring(key)); };
    SetFocus(host.Handle());
    win::DoEvents();
    tree.Select(nullptr);
    log.clear();
  }
  POINT On(TreeNode& node) {
    const RECT rectangle = tree.TextRectangle(node);
    return {rectangle.left + 3, (rectangle.top + rectangle.bottom) / 2};
  }
  // The button left of a node that opens and closes its branch.
  POINT Expander(TreeNode& node) {
    const POINT text = On(node);
    for (LONG x = 0; x < text.x; ++x) {
      TVHITTESTINFO hit{};
      hit.pt = {x, text.y};
      SendMessageW(tree.Handle(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
      if ((hit.flags & TVHT_ONITEMBUTTON) != 0) return {x + 2, text.y};
    }
    ADD_FAILURE() << "no button";
    return {};
  }
  HTREEITEM ItemOf(TreeNode* node, HTREEITEM parent = TVI_ROOT) {
    HTREEITEM item = node == nullptr ? nullptr : TreeView_GetChild(tree.Handle(), parent);
    for (; item != nullptr; item = TreeView_GetNextSibling(tree.Handle(), item)) {
      TVITEMW query{};
      query.mask = TVIF_PARAM;
      query.hItem = item;
      SendMessageW(tree.Handle(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&query));
      if (query.lParam == reinterpret_cast<LPARAM>(node)) return item;
      if (const HTREEITEM below = ItemOf(node, item)) return below;
    }
    return nullptr;
  }
  LRESULT Notify(UINT code, UINT action, TreeNode* before, TreeNode* after) {
    NMTREEVIEWW change{};
    change.hdr = {tree.Handle(), 60, code};
    change.action = action;
    change.itemOld.hItem = ItemOf(before);
    change.itemNew.hItem = ItemOf(after);
    return SendMessageW(host.Handle(), WM_NOTIFY, 60, reinterpret_cast<LPARAM>(&change));
  }
  void Type(const std::wstring& text) {
    ASSERT_TRUE(tree.EditingLabel());
    SetWindowTextW(TreeView_GetEditControl(tree.Handle()), text.c_str());
  }
  bool IsOpen(TreeNode& node) {
    return (TreeView_GetItemState(tree.Handle(), ItemOf(&node), TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
  }

  test::Host host;
  TreeView tree;
  TreeNode *a = nullptr, *b = nullptr, *c = nullptr, *d = nullptr;
  Log log;
};
using TreeViewSelectionTest = TreeSelectionFixture;

TEST_F(TreeViewSelectionTest, TheFocusSelectsNothing) {
  SetFocus(tree.Handle());
  EXPECT_EQ(tree.Selected(), nullptr);
  EXPECT_EQ(log, Log{});
}

TEST_F(TreeViewSelectionTest, AClickBesideTheNodesThatBringsTheFocusSelectsNothing) {
  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, {150, 380}, MK_LBUTTON);
  test::SendMouse(tree.Handle(), WM_LBUTTONUP, {150, 380});
  EXPECT_EQ(GetFocus(), tree.Handle());
  EXPECT_EQ(tree.Selected(), nullptr);
}

TEST_F(TreeViewSelectionTest, TheControlMaySelectForTheUserOnly) {
  EXPECT_NE(Notify(TVN_SELCHANGINGW, TVC_UNKNOWN, nullptr, a), 0);
  EXPECT_EQ(Notify(TVN_SELCHANGINGW, TVC_BYMOUSE, nullptr, a), 0);
  EXPECT_EQ(Notify(TVN_SELCHANGINGW, TVC_BYKEYBOARD, nullptr, a), 0);
  tree.Select(d);
  EXPECT_EQ(tree.Selected(), d);
}

TEST_F(TreeViewSelectionTest, AClickSelectsWhetherTheControlDoesOrNot) {
  tree.events.mouseDown = nullptr;
  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, On(*d), MK_LBUTTON);
  EXPECT_EQ(tree.Selected(), d);
  EXPECT_EQ(log, Log{L"click D"});
}

TEST_F(TreeViewSelectionTest, NoNeighbourIsSelectedForANodeThatGoes) {
  SetFocus(tree.Handle());
  TreeNode& e = tree.Add(a, Relationship::kChild, L"E", L"Plays");
  tree.Select(&e);
  tree.Remove(e);
  EXPECT_EQ(tree.Selected(), nullptr);
  tree.Select(c);
  tree.Remove(*a);
  EXPECT_EQ(tree.Selected(), nullptr);
  EXPECT_EQ(tree.Count(), 1u);
  EXPECT_EQ(log, Log{});
}

TEST_F(TreeViewSelectionTest, ANodeThatGoesLeavesTheSelectionOfAnother) {
  tree.Select(d);
  tree.Remove(*a);
  EXPECT_EQ(tree.Selected(), d);
}

TEST_F(TreeViewSelectionTest, AMovedNodeStaysSelected) {
  tree.Select(c);
  tree.SetParent(*b, *d);
  EXPECT_EQ(tree.Selected(), c);
  tree.Select(nullptr);
  tree.SetParent(*b, *a);
  EXPECT_EQ(tree.Selected(), nullptr);
  EXPECT_EQ(log, Log{});
}

TEST_F(TreeViewSelectionTest, AClosedBranchTakesTheSelectionThatWasInItWithOneEvent) {
  tree.Select(c);
  SetFocus(tree.Handle());

  test::SendMouse(tree.Handle(), WM_LBUTTONDOWN, Expander(*a), MK_LBUTTON);
  test::SendMouse(tree.Handle(), WM_LBUTTONUP, Expander(*a));

  EXPECT_FALSE(IsOpen(*a));
  EXPECT_EQ(tree.Selected(), a);
  EXPECT_EQ(log, (Log{L"down 1", L"click A"}));
}

TEST_F(TreeViewSelectionTest, AClosedBranchTakesTheSelectionOnceWhateverTheControlTellsOfItself) {
  tree.Select(c);

  EXPECT_EQ(Notify(TVN_ITEMEXPANDINGW, TVE_COLLAPSE, nullptr, a), 0);
  Notify(TVN_SELCHANGINGW, TVC_UNKNOWN, c, a);
  Notify(TVN_SELCHANGEDW, TVC_UNKNOWN, c, a);
  Notify(TVN_ITEMEXPANDEDW, TVE_COLLAPSE, nullptr, a);

  EXPECT_EQ(tree.Selected(), a);
  EXPECT_EQ(log, Log{L"click A"});
}

TEST_F(TreeViewSelectionTest, OpeningAndClosingOtherBranchesIsNoSelection) {
  tree.Select(b);
  Notify(TVN_ITEMEXPANDINGW, TVE_EXPAND, nullptr, a);
  Notify(TVN_ITEMEXPANDINGW, TVE_COLLAPSE, nullptr, b);  // its own
  Notify(TVN_ITEMEXPANDINGW, TVE_COLLAPSE, nullptr, d);
  tree.Select(nullptr);
  Notify(TVN_ITEMEXPANDINGW, TVE_COLLAPSE, nullptr, a);
  EXPECT_EQ(tree.Selected(), nullptr);
  EXPECT_EQ(log, Log{});
}

TEST_F(TreeViewSelectionTest, TheFirstKeyGoesToTheFirstNodeOrTheLast) {
  SetFocus(tree.Handle());
  for (const auto& [key, node] : {std::pair{VK_DOWN, L"A"},
                                  {VK_UP, L"A"},
                                  {VK_HOME, L"A"},
                                  {VK_LEFT, L"A"},
                                  {VK_RIGHT, L"A"},
                                  {VK_PRIOR, L"A"},
                                  {VK_END, L"D"},
                                  {VK_NEXT, L"D"}}) {
    tree.Select(nullptr);
    log.clear();
    test::SendKey(tree.Handle(), static_cast<WORD>(key));
    EXPECT_EQ(log, (Log{L"key " + std::to_wstring(key), std::wstring(L"click ") + node}));
    ASSERT_NE(tree.Selected(), nullptr) << key;
    EXPECT_EQ(tree.Selected()->Key(), node);
  }
  log.clear();
  tree.Select(a);
  test::SendKey(tree.Handle(), VK_DOWN);
  EXPECT_EQ(log, (Log{L"key 40", L"click B"})) << "from there on the control goes its way";
}

TEST_F(TreeViewSelectionTest, OtherKeysSelectNothingAndNoKeyDoesInAnEmptyTree) {
  SetFocus(tree.Handle());
  for (const WORD key : {WORD{VK_F5}, WORD{VK_TAB}, WORD{VK_RETURN}}) test::SendKey(tree.Handle(), key);
  EXPECT_EQ(tree.Selected(), nullptr);
  tree.Clear();
  test::SendKey(tree.Handle(), VK_DOWN);
  EXPECT_EQ(tree.Selected(), nullptr);
}

TEST_F(TreeViewSelectionTest, AProgramThatSelectsForTheUserClicks) {
  EXPECT_TRUE(TreeView_SelectItem(tree.Handle(), ItemOf(c)));
  EXPECT_EQ(tree.Selected(), c);
  EXPECT_EQ(log, Log{L"click C"});

  EXPECT_FALSE(TreeView_SelectItem(tree.Handle(), nullptr));
  EXPECT_EQ(tree.Selected(), c);
}

TEST_F(TreeViewSelectionTest, NothingThatIsPostedReachesATreeWhoseWindowWaits) {
  tree.Select(a);
  const HTREEITEM item = ItemOf(d);
  EnableWindow(host.Handle(), FALSE);

  for (const UINT press : {WM_LBUTTONDOWN, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN})
    test::SendMouse(tree.Handle(), static_cast<UINT>(press), On(*d), MK_LBUTTON);
  for (const WORD key : {WORD{VK_DELETE}, WORD{VK_F2}, WORD{VK_DOWN}}) test::SendKey(tree.Handle(), key);
  SendMessageW(tree.Handle(), WM_CHAR, L'm', 1);
  TreeView_SelectItem(tree.Handle(), item);

  EXPECT_EQ(log, Log{});
  EXPECT_EQ(tree.Selected(), a);
  EnableWindow(host.Handle(), TRUE);
}

struct TreeViewLabelEndTest : TreeSelectionFixture {
  TreeViewLabelEndTest() {
    tree.Select(d);
    tree.StartLabelEdit();
    Type(L"Songs");
    log.clear();
  }
  void ExpectKept() {
    EXPECT_FALSE(tree.EditingLabel());
    EXPECT_EQ(d->Text(), L"Songs");
  }
};

TEST_F(TreeViewLabelEndTest, APressEndsTheEditBeforeItIsTold) {
  test::SendMouse(tree.Handle(), WM_RBUTTONDOWN, On(*a), MK_RBUTTON);
  ExpectKept();
  EXPECT_EQ(log, (Log{L"edited Songs", L"down 2"}));
}

TEST_F(TreeViewLabelEndTest, ASelectionEndsTheEditWhileTheEditedNodeIsStillSelected) {
  tree.events.afterLabelEdit = [this](const std::wstring& text) {
    log.push_back(text + L" of " + tree.Selected()->Key());
    return true;
  };
  tree.Select(a);
  ExpectKept();
  EXPECT_EQ(log, Log{L"Songs of D"});
  EXPECT_EQ(tree.Selected(), a);
}

TEST_F(TreeViewLabelEndTest, RemovingAnotherNodeKeepsWhatWasTyped) {
  tree.Remove(*a);
  ExpectKept();
}

TEST_F(TreeViewLabelEndTest, MovingANodeKeepsWhatWasTyped) {
  tree.SetParent(*d, *a);
  ExpectKept();
  EXPECT_EQ(tree.Selected(), d);
}

TEST_F(TreeViewLabelEndTest, ClosingABranchKeepsWhatWasTyped) {
  Notify(TVN_ITEMEXPANDINGW, TVE_COLLAPSE, nullptr, a);
  ExpectKept();
}

TEST_F(TreeViewLabelEndTest, CanBeEndedByCallAndOnlyOnce) {
  tree.EndLabelEdit();
  tree.EndLabelEdit();
  ExpectKept();
  EXPECT_EQ(log, Log{L"edited Songs"});
}

TEST_F(TreeViewLabelEndTest, ARefusedTextIsNotKept) {
  tree.events.afterLabelEdit = [](const std::wstring&) { return false; };
  tree.Select(a);
  EXPECT_EQ(d->Text(), L"Music");
  EXPECT_EQ(tree.Selected(), a);
}

TEST_F(TreeViewSelectionTest, ATextThatWasLeftAsItIsIsNoEdit) {
  // Some versions of the control tell of it, others tell that the edit was given up.
  std::wstring text = d->Text();
  NMTVDISPINFOW end{};
  end.hdr = {tree.Handle(), 60, TVN_ENDLABELEDITW};
  end.item.hItem = ItemOf(d);
  end.item.pszText = text.data();
  EXPECT_EQ(SendMessageW(host.Handle(), WM_NOTIFY, 60, reinterpret_cast<LPARAM>(&end)), 0);
  EXPECT_EQ(log, Log{});
}

}  // namespace
}  // namespace kestrelon::win
