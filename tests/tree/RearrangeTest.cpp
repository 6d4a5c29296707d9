#include "store/Store.h"
#include "tests/support/MainFormFixture.h"
#include "tree/Rearrange.h"

namespace kestrelon::test {
namespace {

// A(B(C),D) and E, all open; dragged with mouse messages.
class Rearrange : public MainFormFixture {
 protected:
  void StartWithCategories(bool enabled = true) {
    dir.settings.Write(L"Drag&Drop", enabled ? L"True" : L"False");
    Start();
    win::TreeNode& a = AddCategory(L"A_", L"Alpha");
    win::TreeNode& b = AddCategory(L"B_", L"Beta", &a);
    AddCategory(L"C_", L"Gamma", &b);
    AddCategory(L"D_", L"Delta", &a);
    AddCategory(L"E_", L"Epsilon");
    for (const wchar_t* key : {L"A_", L"B_"}) Tree().Expand(*Tree().Find(key));
    win::DoEvents();
    program.databaseSaved = true;
  }
  POINT On(const wchar_t* key) { return MiddleOf(*Tree().Find(key)); }
  void Press(POINT point) { SendMouse(Tree().Handle(), WM_LBUTTONDOWN, point, MK_LBUTTON); }
  void Move(POINT point) { SendMouse(Tree().Handle(), WM_MOUSEMOVE, point, MK_LBUTTON); }
  void Release(POINT point) { SendMouse(Tree().Handle(), WM_LBUTTONUP, point); }
  void Drag(const wchar_t* from, POINT to) {
    const POINT start = On(from);
    Press(start);
    Move({start.x + 2, start.y});
    Move(to);
    Release(to);
    win::DoEvents();
  }
};

TEST_F(Rearrange, MakesTheCategoryWithItsSubtreeTheLastChildOfTheTarget) {
  StartWithCategories();
  AddCategory(L"X_", L"first child", Tree().Find(L"E_"));
  Drag(L"B_", On(L"E_"));
  EXPECT_EQ(ShownTree(), L"Alpha(Delta),Epsilon(first child,Beta(Gamma))");
  EXPECT_EQ(Tree().Find(L"B_")->Parent(), Tree().Find(L"E_"));
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(Rearrange, OntoItsOwnParentMakesItTheLastChildThere) {
  StartWithCategories();
  Drag(L"B_", On(L"A_"));
  EXPECT_EQ(ShownTree(), L"Alpha(Delta,Beta(Gamma)),Epsilon");
}

TEST_F(Rearrange, OntoItsOwnChildLeavesTheTreeUnchanged) {
  StartWithCategories();
  Drag(L"A_", On(L"B_"));
  EXPECT_EQ(ShownTree(), L"Alpha(Beta(Gamma),Delta),Epsilon");
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(Rearrange, OntoADeeperDescendantOrItselfLeavesTheTreeUnchanged) {
  StartWithCategories();
  Drag(L"A_", On(L"C_"));
  Drag(L"A_", On(L"A_"));
  EXPECT_EQ(ShownTree(), L"Alpha(Beta(Gamma),Delta),Epsilon");
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(Rearrange, OntoEmptySpaceLeavesTheTreeUnchanged) {
  StartWithCategories();
  Drag(L"B_", EmptyTreeSpace());
  EXPECT_EQ(ShownTree(), L"Alpha(Beta(Gamma),Delta),Epsilon");
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(Rearrange, DoesNothingWhileDragAndDropIsNotEnabled) {
  StartWithCategories(false);
  const POINT start = On(L"B_");
  Press(start);
  Move({start.x + 2, start.y});
  EXPECT_FALSE(Tree().Dragging());
  Move(On(L"E_"));
  Release(On(L"E_"));
  EXPECT_EQ(ShownTree(), L"Alpha(Beta(Gamma),Delta),Epsilon");
}

TEST_F(Rearrange, HighlightsTheCategoryUnderThePointerAndNoneOverEmptySpace) {
  StartWithCategories();
  Press(On(L"B_"));
  Move(On(L"B_"));
  ASSERT_TRUE(Tree().Dragging());
  Move(On(L"E_"));
  EXPECT_EQ(Tree().DropHighlight(), Tree().Find(L"E_"));
  Move(EmptyTreeSpace());
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  Release(EmptyTreeSpace());
  EXPECT_FALSE(Tree().Dragging());
}

TEST_F(Rearrange, DragsWhatWasPressedHoweverFastTheHand) {
  StartWithCategories();
  const POINT target = On(L"E_");
  Press(On(L"B_"));
  Move(On(L"D_"));  // the first move is over another category already
  Move(target);
  Release(target);
  EXPECT_EQ(ShownTree(), L"Alpha(Delta),Epsilon(Beta(Gamma))");
}

TEST_F(Rearrange, EscapeGivesTheDragUp) {
  StartWithCategories();
  Press(On(L"B_"));
  Move(On(L"B_"));
  Move(On(L"E_"));
  SetFocus(Tree().Handle());
  PressKey(Tree().Handle(), VK_ESCAPE);
  EXPECT_FALSE(Tree().Dragging());
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  Release(On(L"E_"));
  EXPECT_EQ(ShownTree(), L"Alpha(Beta(Gamma),Delta),Epsilon");
  EXPECT_TRUE(Parts().draggedCategory.empty());
}

TEST_F(Rearrange, TheRightButtonDragsNothing) {
  StartWithCategories();
  SendMouse(Tree().Handle(), WM_MOUSEMOVE, On(L"B_"), MK_RBUTTON);
  SendMouse(Tree().Handle(), WM_MOUSEMOVE, On(L"B_"), MK_LBUTTON | MK_RBUTTON);
  SendMouse(Tree().Handle(), WM_MOUSEMOVE, On(L"B_"));
  EXPECT_FALSE(Tree().Dragging());
}

TEST_F(Rearrange, ChangesNoItemAndTheCategoryStaysCurrentWithItsNewPath) {
  StartWithCategories();
  AddItem(L"B_", 1, {L"alias"});
  Drag(L"B_", On(L"E_"));
  EXPECT_EQ(Query(L"SELECT TreeviewNode, FileIndex FROM FTable", 2), std::vector<std::wstring>{L"B_|1#B_"});
  EXPECT_EQ(Panel(2), L"B_");
  EXPECT_EQ(Panel(1), L"Category : Epsilon\\Beta");
  EXPECT_EQ(Tree().Selected(), Tree().Find(L"B_"));
}

TEST_F(Rearrange, UncheckedInTheMiddleOfADragMovesNothing) {
  StartWithCategories();
  Press(On(L"B_"));
  Move(On(L"B_"));
  Move(On(L"E_"));
  Menus().Check(L"meu_aa", false);
  Release(On(L"E_"));
  EXPECT_EQ(ShownTree(), L"Alpha(Beta(Gamma),Delta),Epsilon");
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
}

TEST_F(Rearrange, TheNewShapeIsWhatIsSaved) {
  StartWithCategories();
  Drag(L"B_", On(L"E_"));
  store::SaveTree(Parts());
  EXPECT_EQ(Query(L"SELECT parent, key FROM TreeviewTable", 2),
            (std::vector<std::wstring>{L"0_|A_", L"A_|D_", L"0_|E_", L"E_|B_", L"B_|C_"}));
}

}  // namespace
}  // namespace kestrelon::test
