// SaveTree and LoadTree.

#include "app/base/Win32.h"

#include <commctrl.h>
#include <gmock/gmock.h>

#include "tests/store/StoreFixture.h"

namespace kestrelon::store {
namespace {

using testing::ElementsAre;

class CategoryTreeTest : public StoreTest {
 protected:
  std::vector<std::wstring> Rows() {
    return RowsOf(Working(), L"SELECT * FROM TreeviewTable order by i", {u"parent", u"key", u"text"});
  }
};

TEST_F(CategoryTreeTest, WritesParentsBeforeChildrenAndSiblingsInOrder) {
  win::TreeNode& a = AddCategory(nullptr, L"A", L"first");
  AddCategory(nullptr, L"B", L"second");
  win::TreeNode& a1 = AddCategory(&a, L"A1", L"child");
  AddCategory(&a, L"A2", L"other child");
  AddCategory(&a1, L"A11", L"grandchild");

  SaveTree(parts);

  EXPECT_THAT(Rows(), ElementsAre(L"0_|A|first", L"A|A1|child", L"A1|A11|grandchild", L"A|A2|other child",
                                  L"0_|B|second"));
}

TEST_F(CategoryTreeTest, WritesTheOrderOnScreenAndNotTheOrderOfAdding) {
  win::TreeNode& late = AddCategory(nullptr, L"A", L"moved");
  win::TreeNode& target = AddCategory(nullptr, L"B", L"target");
  tree.Add(nullptr, win::Relationship::kFirst, L"C", L"added last, shown first");
  tree.SetParent(late, target);

  SaveTree(parts);

  EXPECT_THAT(Rows(), ElementsAre(L"0_|C|added last, shown first", L"0_|B|target", L"B|A|moved"));
}

TEST_F(CategoryTreeTest, ReplacesWhatTheTableHeld) {
  Execute(InsertCategory(L"0_", L"old", L"old"));
  AddCategory(nullptr, L"A", L"new");

  SaveTree(parts);

  EXPECT_THAT(Rows(), ElementsAre(L"0_|A|new"));
  EXPECT_FALSE(connection.IsOpen());
}

TEST_F(CategoryTreeTest, ComesBackInTheSameShapeOrderAndCaptions) {
  win::TreeNode& a = AddCategory(nullptr, L"A", L"Über \"uns\" & 'andere'");
  AddCategory(&a, L"A1", L"照片");
  AddCategory(&AddCategory(&a, L"A2", L"New Category"), L"A21", L"New Category");
  AddCategory(nullptr, L"B", L"");
  const std::wstring before = Shape();
  SaveTree(parts);

  LoadTree(parts);

  EXPECT_EQ(Shape(), before);
  EXPECT_EQ(tree.Count(), 5u);
}

TEST_F(CategoryTreeTest, ComesBackFromAThousandLevels) {
  win::TreeNode* node = nullptr;
  for (int level = 0; level < 1000; ++level) {
    node = &AddCategory(node, L"K" + std::to_wstring(level), L"level " + std::to_wstring(level));
  }
  AddCategory(nullptr, L"last", L"beside the deep one");
  SaveTree(parts);

  LoadTree(parts);

  ASSERT_EQ(tree.Count(), 1001u);
  int depth = 1;
  for (node = tree.FirstRoot(); node->Child() != nullptr; node = node->Child()) ++depth;
  EXPECT_EQ(depth, 1000);
  EXPECT_EQ(node->Key(), L"K999");
  EXPECT_EQ(tree.FirstRoot()->Next()->Key(), L"last");
}

TEST_F(CategoryTreeTest, ComesBackTrimmedAtEveryLevel) {
  Execute(InsertCategory(L" 0_ ", L"  A ", L"  top  "));
  Execute(InsertCategory(L" A", L" A1  ", L" child "));
  Execute(InsertCategory(L"A1 ", L"A11", L"  grand child"));

  LoadTree(parts);

  EXPECT_EQ(Shape(), L"A=top(A1=child(A11=grand child))");
}

TEST_F(CategoryTreeTest, HasTheCategoryPicturesOnEveryNode) {
  Execute(InsertCategory(L"0_", L"A", L"top"));
  Execute(InsertCategory(L"A", L"A1", L"child"));

  LoadTree(parts);

  for (std::size_t index = 1; index <= 2; ++index) {
    EXPECT_EQ(tree.At(index).Image(), 1);
    EXPECT_EQ(tree.At(index).SelectedImage(), 2);
  }
}

TEST_F(CategoryTreeTest, LeavesNoCategoryCurrent) {
  AddCategory(nullptr, L"old", L"old");
  win::SetCurrentCategory(parts, L"old", L"old");
  list.Append(win::ListRow());
  win::ShowObjectCount(parts);
  Execute(InsertCategory(L"0_", L"A", L"top"));

  LoadTree(parts);

  EXPECT_EQ(status.PanelText(1), L"Category : ");
  EXPECT_EQ(status.PanelText(2), L"");
  EXPECT_EQ(status.PanelText(3), L"0 Objects");
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(tree.Selected(), nullptr);
}

TEST_F(CategoryTreeTest, IsEmptyAfterAnEmptyTable) {
  AddCategory(nullptr, L"old", L"old");

  LoadTree(parts);

  EXPECT_EQ(tree.Count(), 0u);
}

TEST_F(CategoryTreeTest, RefusesARowWhoseParentIsMissingAndKeepsTheTree) {
  Execute(InsertCategory(L"0_", L"A", L"top"));
  Execute(InsertCategory(L"nobody", L"B", L"orphan"));
  Execute(InsertCategory(L"0_", L"C", L"third"));
  AddCategory(nullptr, L"OLD", L"old");

  EXPECT_THROW(LoadTree(parts), win::ControlError);

  EXPECT_EQ(Shape(), L"OLD=old");
  EXPECT_FALSE(connection.IsOpen());
}

TEST_F(CategoryTreeTest, RefusesAKeyThatIsTakenAndKeepsTheTree) {
  Execute(InsertCategory(L"0_", L"A", L"top"));
  Execute(InsertCategory(L"A", L" A ", L"again"));
  AddCategory(nullptr, L"OLD", L"old");

  EXPECT_THROW(LoadTree(parts), win::ControlError);

  EXPECT_EQ(Shape(), L"OLD=old");
}

TEST_F(CategoryTreeTest, WritesACaptionThatOnlyItsOuterBlanksMakeTooLong) {
  AddCategory(nullptr, L"A", L"  " + std::wstring(254, L'x') + L"  ");

  SaveTree(parts);

  EXPECT_THAT(Rows(), ElementsAre(L"0_|A|" + std::wstring(254, L'x')));
}

TEST_F(CategoryTreeTest, RefusesACaptionThatTheTableCannotHold) {
  AddCategory(nullptr, L"A", std::wstring(256, L'x'));

  EXPECT_THROW(SaveTree(parts), jet::Error);
  EXPECT_FALSE(connection.IsOpen());
}

LRESULT CALLBACK NoteRedraw(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                            DWORD_PTR switches) {
  if (message == WM_SETREDRAW) reinterpret_cast<std::vector<bool>*>(switches)->push_back(wParam != FALSE);
  return DefSubclassProc(window, message, wParam, lParam);
}

TEST_F(CategoryTreeTest, IsDrawnOnceAfterLoadingAndNotAtAllAfterAFailure) {
  std::vector<bool> switches;
  SetWindowSubclass(tree.Handle(), NoteRedraw, 1, reinterpret_cast<DWORD_PTR>(&switches));

  Execute(InsertCategory(L"0_", L"A", L"top"));
  LoadTree(parts);
  EXPECT_FALSE(switches.front());
  EXPECT_TRUE(switches.back());

  switches.clear();
  Execute(InsertCategory(L"nobody", L"B", L"orphan"));
  EXPECT_THROW(LoadTree(parts), win::ControlError);
  EXPECT_TRUE(switches.empty());
  RemoveWindowSubclass(tree.Handle(), NoteRedraw, 1);
}

}  // namespace
}  // namespace kestrelon::store
