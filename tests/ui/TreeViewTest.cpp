#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/ui/Host.h"
#include "ui/win/TreeView.h"

namespace kestrelon::win {
namespace {

struct TreeFixture : testing::Test {
  TreeFixture() {
    tree.Create(host.Handle(), 60);
    host.tree = &tree;
    SetWindowPos(tree.Handle(), nullptr, 0, 0, 300, 400, SWP_NOZORDER);
  }
  TreeNode& Add(TreeNode* relative, Relationship how, const std::wstring& key) {
    return tree.Add(relative, how, key, L"text of " + key, 1, 2);
  }
  TreeNode& Child(TreeNode& parent, const std::wstring& key) {
    return Add(&parent, Relationship::kChild, key);
  }
  TreeNode& Root(const std::wstring& key) { return Add(nullptr, Relationship::kLast, key); }

  // The model as one line: "A(B(C) D) E".
  std::wstring Model(TreeNode* first) {
    std::wstring line;
    for (TreeNode* node = first; node != nullptr; node = node->Next()) {
      if (!line.empty()) line += L" ";
      line += node->Key();
      if (node->Child() != nullptr) line += L"(" + Model(node->Child()) + L")";
    }
    return line;
  }
  std::wstring Model() { return Model(tree.FirstRoot()); }
  // The same from what the control holds.
  std::wstring Shown(HTREEITEM first) {
    std::wstring line;
    for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(tree.Handle(), item)) {
      if (!line.empty()) line += L" ";
      line += TextOf(item).substr(8);  // after "text of "
      if (const HTREEITEM child = TreeView_GetChild(tree.Handle(), item)) line += L"(" + Shown(child) + L")";
    }
    return line;
  }
  std::wstring Shown() { return Shown(TreeView_GetRoot(tree.Handle())); }
  std::wstring TextOf(HTREEITEM item) {
    wchar_t text[2000] = {};
    TVITEMW query{};
    query.mask = TVIF_HANDLE | TVIF_TEXT;
    query.hItem = item;
    query.pszText = text;
    query.cchTextMax = 2000;
    SendMessageW(tree.Handle(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&query));
    return text;
  }
  HTREEITEM ItemOf(TreeNode& node) {  // by the way of the selection
    TreeNode* const before = tree.Selected();
    tree.Select(&node);
    const HTREEITEM item = TreeView_GetSelection(tree.Handle());
    tree.Select(before);
    return item;
  }
  bool Expanded(TreeNode& node) {
    return (TreeView_GetItemState(tree.Handle(), ItemOf(node), TVIS_EXPANDED) & TVIS_EXPANDED) != 0;
  }
  bool Highlighted(TreeNode& node) {
    return (TreeView_GetItemState(tree.Handle(), ItemOf(node), TVIS_DROPHILITED) & TVIS_DROPHILITED) != 0;
  }
  std::vector<std::wstring> KeysByIndex() {
    std::vector<std::wstring> keys;
    for (std::size_t i = 1; i <= tree.Count(); ++i) {
      keys.push_back(tree.At(i).Key());
      EXPECT_EQ(tree.At(i).Index(), i);
    }
    return keys;
  }

  test::Host host;
  TreeView tree;
};
using TreeViewTest = TreeFixture;
using Keys = std::vector<std::wstring>;

TEST_F(TreeViewTest, StartsEmpty) {
  EXPECT_EQ(tree.Count(), 0u);
  EXPECT_EQ(tree.FirstRoot(), nullptr);
  EXPECT_EQ(tree.Selected(), nullptr);
  EXPECT_EQ(tree.Find(L"A"), nullptr);
}

TEST_F(TreeViewTest, PlacesANodeByItsRelationship) {
  TreeNode& b = Root(L"B");
  TreeNode& d = Root(L"D");
  Add(&d, Relationship::kPrevious, L"C");
  Add(&b, Relationship::kNext, L"b2");
  Add(&d, Relationship::kFirst, L"A");
  Add(&b, Relationship::kLast, L"E");
  TreeNode& y = Child(d, L"y");
  Child(d, L"z");
  Add(&y, Relationship::kPrevious, L"x");

  EXPECT_EQ(Model(), L"A B b2 C D(x y z) E");
  EXPECT_EQ(Shown(), Model());
}

TEST_F(TreeViewTest, PutsANodeWithoutARelativeAtTheTopLevel) {
  Root(L"B");
  Add(nullptr, Relationship::kFirst, L"A");
  Add(nullptr, Relationship::kChild, L"C");

  EXPECT_EQ(Model(), L"A B C");
  EXPECT_EQ(Shown(), Model());
}

TEST_F(TreeViewTest, CountsIndexesInTheOrderOfAdding) {
  TreeNode& a = Root(L"A");
  Add(&a, Relationship::kFirst, L"B");
  Child(a, L"C");

  EXPECT_EQ(KeysByIndex(), (Keys{L"A", L"B", L"C"}));
}

TEST_F(TreeViewTest, RefusesAKeyThatIsTakenAndAddsNothing) {
  TreeNode& a = Root(L"A");
  try {
    Child(a, L"A");
    FAIL() << "the key was taken";
  } catch (const ControlError& error) {
    EXPECT_EQ(error.Number(), 35602);
  }
  EXPECT_EQ(tree.Count(), 1u);
  EXPECT_EQ(Shown(), L"A");
}

TEST_F(TreeViewTest, TellsKeysApartByCase) {
  TreeNode& small = Root(L"a");
  TreeNode& capital = Root(L"A");
  EXPECT_EQ(tree.Find(L"a"), &small);
  EXPECT_EQ(tree.Find(L"A"), &capital);
}

TEST_F(TreeViewTest, RefusesAnIndexThatIsNotThere) {
  Root(L"A");
  EXPECT_THROW(tree.At(0), ControlError);
  EXPECT_THROW(tree.At(2), ControlError);
}

TEST_F(TreeViewTest, KnowsTheNeighboursOfANode) {
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");
  TreeNode& x = Child(b, L"x");
  TreeNode& y = Child(b, L"y");

  EXPECT_EQ(a.Parent(), nullptr);
  EXPECT_EQ(a.Next(), &b);
  EXPECT_EQ(b.Previous(), &a);
  EXPECT_EQ(b.Child(), &x);
  EXPECT_EQ(b.LastChild(), &y);
  EXPECT_EQ(b.ChildCount(), 2u);
  EXPECT_EQ(y.Parent(), &b);
  EXPECT_EQ(&y.FirstSibling(), &x);
  EXPECT_EQ(&x.LastSibling(), &y);
  EXPECT_EQ(&b.FirstSibling(), &a);
  EXPECT_EQ(&a.LastSibling(), &b);
}

TEST_F(TreeViewTest, JoinsTheTextsOfAPathByBackslashes) {
  TreeNode& a = tree.Add(nullptr, Relationship::kLast, L"1", L"Books");
  TreeNode& b = tree.Add(&a, Relationship::kChild, L"2", L"New Category ");
  TreeNode& c = tree.Add(&b, Relationship::kChild, L"3", L"x");

  EXPECT_EQ(a.FullPath(), L"Books");
  EXPECT_EQ(c.FullPath(), L"Books\\New Category \\x");
}

TEST_F(TreeViewTest, ShowsTheImagesCountedFromOne) {
  TreeNode& pictured = tree.Add(nullptr, Relationship::kLast, L"1", L"a", 1, 2);
  TreeNode& plain = tree.Add(nullptr, Relationship::kLast, L"2", L"b");
  TVITEMW item{};
  item.mask = TVIF_HANDLE | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
  item.hItem = ItemOf(pictured);
  SendMessageW(tree.Handle(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));

  EXPECT_EQ(item.iImage, 0);
  EXPECT_EQ(item.iSelectedImage, 1);
  EXPECT_EQ(pictured.Image(), 1);
  EXPECT_EQ(pictured.SelectedImage(), 2);
  EXPECT_EQ(plain.Image(), 0);
}

TEST_F(TreeViewTest, RemovesANodeWithItsSubtreeAndClosesTheIndexes) {
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");
  TreeNode& x = Child(a, L"x");
  Child(b, L"y");
  Child(x, L"z");
  Root(L"C");

  tree.Remove(a);

  EXPECT_EQ(Model(), L"B(y) C");
  EXPECT_EQ(Shown(), Model());
  EXPECT_EQ(KeysByIndex(), (Keys{L"B", L"y", L"C"}));
  EXPECT_EQ(tree.Find(L"x"), nullptr);
  EXPECT_EQ(tree.Find(L"z"), nullptr);
  EXPECT_EQ(tree.Find(L"y")->Key(), L"y");
}

TEST_F(TreeViewTest, RemovesTheOnlyTheFirstAndTheLastOfSiblings) {
  TreeNode& a = Root(L"A");
  TreeNode& x = Child(a, L"x");
  TreeNode& y = Child(a, L"y");
  TreeNode& z = Child(a, L"z");

  tree.Remove(x);
  EXPECT_EQ(Model(), L"A(y z)");
  tree.Remove(z);
  EXPECT_EQ(Model(), L"A(y)");
  EXPECT_EQ(a.LastChild(), &y);
  tree.Remove(y);
  EXPECT_EQ(Model(), L"A");
  EXPECT_EQ(a.Child(), nullptr);
  EXPECT_EQ(a.LastChild(), nullptr);
  tree.Remove(a);
  EXPECT_EQ(tree.FirstRoot(), nullptr);
  EXPECT_EQ(Shown(), L"");
}

TEST_F(TreeViewTest, TakesAKeyAgainAfterItsNodeIsGone) {
  tree.Remove(Root(L"A"));
  Root(L"A");
  EXPECT_EQ(tree.Find(L"A")->Index(), 1u);
}

TEST_F(TreeViewTest, RemovingTheSelectedNodeRaisesNoClick) {
  int clicks = 0;
  tree.events.nodeClick = [&](TreeNode&) { ++clicks; };
  TreeNode& a = Root(L"A");
  Root(L"B");
  tree.Select(&a);

  tree.Remove(a);
  win::DoEvents();

  EXPECT_EQ(clicks, 0);
}

TEST_F(TreeViewTest, RemovingTheHighlightedNodeForgetsTheHighlight) {
  TreeNode& a = Root(L"A");
  tree.SetDropHighlight(&Child(a, L"x"));

  tree.Remove(a);

  EXPECT_EQ(tree.DropHighlight(), nullptr);
}

TEST_F(TreeViewTest, ClearTakesEverything) {
  TreeNode& a = Root(L"A");
  Child(a, L"x");
  tree.Select(&a);

  tree.Clear();

  EXPECT_EQ(tree.Count(), 0u);
  EXPECT_EQ(tree.Selected(), nullptr);
  EXPECT_EQ(Shown(), L"");
  Root(L"A");
  EXPECT_EQ(Model(), L"A");
  EXPECT_EQ(Shown(), L"A");
}

TEST_F(TreeViewTest, MovesANodeWithItsSubtreeToTheEndOfTheTarget) {
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");
  Child(a, L"u");
  TreeNode& v = Child(a, L"v");
  TreeNode& w = Child(v, L"w");
  Child(v, L"w2");
  Child(w, L"deep");
  Child(b, L"x");

  tree.SetParent(v, b);

  EXPECT_EQ(Model(), L"A(u) B(x v(w(deep) w2))");
  EXPECT_EQ(Shown(), Model());
  EXPECT_EQ(v.Parent(), &b);
  EXPECT_EQ(a.ChildCount(), 1u);
  EXPECT_EQ(b.ChildCount(), 2u);
}

TEST_F(TreeViewTest, MovingKeepsTheIndexes) {
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");
  Child(a, L"x");
  Root(L"C");

  tree.SetParent(a, b);

  EXPECT_EQ(KeysByIndex(), (Keys{L"A", L"B", L"x", L"C"}));
}

TEST_F(TreeViewTest, MovingUnderTheOwnParentPutsTheNodeLast) {
  TreeNode& a = Root(L"A");
  TreeNode& x = Child(a, L"x");
  Child(a, L"y");

  tree.SetParent(x, a);

  EXPECT_EQ(Model(), L"A(y x)");
  EXPECT_EQ(Shown(), Model());
}

TEST_F(TreeViewTest, MovingKeepsWhatWasExpandedAndSelected) {
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");
  TreeNode& v = Child(a, L"v");
  TreeNode& w = Child(v, L"w");
  Child(w, L"deep");
  tree.Expand(a);
  tree.Expand(v);
  tree.Select(&v);
  ASSERT_TRUE(Expanded(v));
  ASSERT_FALSE(Expanded(w));

  tree.SetParent(v, b);

  EXPECT_TRUE(Expanded(v));
  EXPECT_FALSE(Expanded(w));
  EXPECT_EQ(tree.Selected(), &v);
}

TEST_F(TreeViewTest, RefusesToMoveANodeOntoItselfOrBelowItself) {
  TreeNode& a = Root(L"A");
  TreeNode& x = Child(a, L"x");
  TreeNode& y = Child(x, L"y");
  for (TreeNode* target : {&a, &x, &y}) {
    try {
      tree.SetParent(a, *target);
      FAIL() << "moved";
    } catch (const ControlError& error) {
      EXPECT_EQ(error.Number(), 35614);
    }
  }
  EXPECT_EQ(Model(), L"A(x(y))");
  EXPECT_EQ(Shown(), Model());
}

TEST_F(TreeViewTest, MovingRaisesNoClick) {
  int clicks = 0;
  tree.events.nodeClick = [&](TreeNode&) { ++clicks; };
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");
  tree.Select(&a);

  tree.SetParent(a, b);
  win::DoEvents();

  EXPECT_EQ(clicks, 0);
}

TEST_F(TreeViewTest, SelectsWithoutAClick) {
  int clicks = 0;
  tree.events.nodeClick = [&](TreeNode&) { ++clicks; };
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");

  tree.Select(&b);
  EXPECT_EQ(tree.Selected(), &b);
  tree.Select(&a);
  EXPECT_EQ(tree.Selected(), &a);
  tree.Select(nullptr);
  EXPECT_EQ(tree.Selected(), nullptr);
  EXPECT_EQ(clicks, 0);
}

TEST_F(TreeViewTest, ANewTextShows) {
  TreeNode& a = Root(L"A");

  tree.SetText(a, L"text of other");

  EXPECT_EQ(a.Text(), L"text of other");
  EXPECT_EQ(Shown(), L"other");
  EXPECT_EQ(a.Key(), L"A");
}

TEST_F(TreeViewTest, HighlightsADropTarget) {
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");

  tree.SetDropHighlight(&a);
  EXPECT_EQ(tree.DropHighlight(), &a);
  EXPECT_TRUE(Highlighted(a));

  tree.SetDropHighlight(&b);
  EXPECT_FALSE(Highlighted(a));
  EXPECT_TRUE(Highlighted(b));

  tree.SetDropHighlight(nullptr);
  EXPECT_EQ(tree.DropHighlight(), nullptr);
  EXPECT_FALSE(Highlighted(b));
}

TEST_F(TreeViewTest, FindsTheNodeAtAPointOfItsText) {
  TreeNode& a = Root(L"A");
  TreeNode& b = Root(L"B");
  const RECT rectangle = tree.TextRectangle(b);
  ASSERT_GT(rectangle.right, rectangle.left);

  EXPECT_EQ(tree.HitTest({(rectangle.left + rectangle.right) / 2, (rectangle.top + rectangle.bottom) / 2}),
            &b);
  EXPECT_EQ(tree.HitTest({rectangle.left + 2, tree.TextRectangle(a).top + 2}), &a);
  EXPECT_EQ(tree.HitTest({rectangle.right + 50, rectangle.top + 2}), nullptr);  // beside the text
  EXPECT_EQ(tree.HitTest({10, 390}), nullptr);                                  // below the last node
}

TEST_F(TreeViewTest, ANodeInAClosedBranchHasNoRectangle) {
  TreeNode& a = Root(L"A");
  TreeNode& x = Child(a, L"x");
  EXPECT_EQ(tree.TextRectangle(x).right, 0);

  tree.EnsureVisible(x);

  EXPECT_TRUE(Expanded(a));
  EXPECT_GT(tree.TextRectangle(x).right, 0);
}

TEST_F(TreeViewTest, RemembersTheCheckState) {
  TreeNode& a = Root(L"A");
  EXPECT_FALSE(a.Checked());
  a.SetChecked(true);
  EXPECT_TRUE(a.Checked());
}

TEST_F(TreeViewTest, GoesWithItsParentWindow) {
  Root(L"A");
  host.Destroy();
  EXPECT_EQ(tree.Handle(), nullptr);
  EXPECT_EQ(tree.Count(), 1u);  // the model stays
}

}  // namespace
}  // namespace kestrelon::win
