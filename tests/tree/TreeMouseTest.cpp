// Selecting categories with the mouse, and the category menu.

#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class TreeMouse : public MainFormFixture {
 protected:
  // A with one item and the child "inner" with two, B with none. Nothing is selected.
  void StartWithTree() {
    Start();
    a_ = &AddCategory(L"A_", L"A");
    inner_ = &AddCategory(L"I_", L"inner", a_);
    b_ = &AddCategory(L"B_", L"B");
    Tree().Expand(*a_);
    AddItem(L"A_", 1, {L"of A"});
    AddItem(L"I_", 1, {L"first"});
    AddItem(L"I_", 2, {L"second"});
  }
  // The button left of A that opens and closes its branch.
  POINT ExpanderOfA() {
    const POINT middle = MiddleOf(*a_);
    TVHITTESTINFO hit{};
    for (LONG x = 0; x < middle.x; ++x) {
      hit.pt = {x, middle.y};
      SendMessageW(Tree().Handle(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
      if (hit.flags & TVHT_ONITEMBUTTON) return {x + 2, middle.y};
    }
    ADD_FAILURE() << "no expander";
    return {0, 0};
  }
  win::TreeNode *a_ = nullptr, *inner_ = nullptr, *b_ = nullptr;
};

TEST_F(TreeMouse, ClickShowsTheCategorysPathKeyAndItems) {
  StartWithTree();

  Click(Tree().Handle(), MiddleOf(*inner_));

  EXPECT_EQ(Tree().Selected(), inner_);
  EXPECT_EQ(Panel(1), L"Category : A\\inner");
  EXPECT_EQ(Panel(2), L"I_");
  EXPECT_EQ(Panel(3), L"2 Objects");
  EXPECT_EQ(Column(1), (std::vector<std::wstring>{L"first", L"second"}));
}

TEST_F(TreeMouse, ClickOnTheSelectedCategoryFillsTheListAgain) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*a_));
  AddItem(L"A_", 2, {L"new"});

  Click(Tree().Handle(), MiddleOf(*a_));

  EXPECT_EQ(Column(1), (std::vector<std::wstring>{L"of A", L"new"}));
}

TEST_F(TreeMouse, ClickDisablesTheItemButtons) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*a_));
  Click(List().Handle(), MiddleOfRow(0));
  ASSERT_TRUE(Parts().Toolbar1.IsEnabled(6));

  Click(Tree().Handle(), MiddleOf(*b_));

  for (int button = 6; button <= 9; ++button) EXPECT_FALSE(Parts().Toolbar1.IsEnabled(button)) << button;
}

TEST_F(TreeMouse, ClickNeverStartsEditing) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*a_));
  Tree().SetAutomaticLabelEdit(true);

  Click(Tree().Handle(), MiddleOf(*a_));

  EXPECT_FALSE(Tree().AutomaticLabelEdit());
  EXPECT_FALSE(PumpUntil([this] { return Tree().EditingLabel(); }, 2 * GetDoubleClickTime()));
}

TEST_F(TreeMouse, ClickOnEmptySpaceLeavesNoCategoryCurrentAndNoneSelected) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*inner_));

  Click(Tree().Handle(), EmptyTreeSpace());

  EXPECT_EQ(Tree().Selected(), nullptr);
  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(Panel(1), L"Category : ");
  EXPECT_EQ(Panel(2), L"");
  EXPECT_EQ(Panel(3), L"0 Objects");
}

TEST_F(TreeMouse, ClickOnEmptySpaceAfterOneSelectsAgainByAClick) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*inner_));
  Click(Tree().Handle(), EmptyTreeSpace());
  Click(Tree().Handle(), MiddleOf(*inner_));
  EXPECT_EQ(Panel(2), L"I_");
  EXPECT_EQ(Panel(3), L"2 Objects");
}

TEST_F(TreeMouse, ClickOnTheExpanderClosesTheBranchAndKeepsTheCurrentCategory) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*a_));

  Click(Tree().Handle(), ExpanderOfA());

  EXPECT_EQ(Panel(2), L"A_");
  EXPECT_EQ(List().Count(), 1u);
  EXPECT_EQ(Tree().Selected(), a_);
  EXPECT_EQ(Tree().TextRectangle(*inner_).bottom, 0) << "the branch is closed";
}

TEST_F(TreeMouse, RightClickShowsNameAndKeyWithoutFillingTheList) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*a_));
  const PopupMenuEntries menu;

  Click(Tree().Handle(), MiddleOf(*inner_), true);

  EXPECT_EQ(Tree().Selected(), inner_);
  EXPECT_EQ(Panel(1), L"Category : inner");
  EXPECT_EQ(Panel(2), L"I_");
  EXPECT_EQ(Column(1), std::vector<std::wstring>{L"of A"});
  EXPECT_EQ(Panel(3), L"1 Objects");
}

TEST_F(TreeMouse, RightClickPopsUpTheCategoryMenu) {
  StartWithTree();
  const PopupMenuEntries menu;

  Click(Tree().Handle(), MiddleOf(*b_), true);

  EXPECT_TRUE(menu.Shown());
  EXPECT_EQ(menu.Captions(),
            (std::vector<std::wstring>{L"Add &First Sibling", L"Add &Previous Sibling", L"Add &Next Sibling",
                                       L"Add &Last Sibling", L"Add &Directory", L"Add &Child", L"&Delete...",
                                       L"&Enabled drag and drop"}));
}

TEST_F(TreeMouse, RightClickOnEmptySpaceClearsTheCurrentCategoryAndStillPopsUpTheMenu) {
  StartWithTree();
  Click(Tree().Handle(), MiddleOf(*a_));
  const PopupMenuEntries menu;

  Click(Tree().Handle(), EmptyTreeSpace(), true);

  EXPECT_TRUE(menu.Shown());
  EXPECT_EQ(Panel(1), L"Category : ");
  EXPECT_EQ(Panel(2), L"");
  EXPECT_EQ(Tree().Selected(), nullptr);
}

TEST_F(TreeMouse, LeftClickShowsNoMenu) {
  StartWithTree();
  const PopupMenuEntries menu;
  Click(Tree().Handle(), MiddleOf(*a_));
  EXPECT_FALSE(PumpUntil([&] { return menu.Shown(); }, 100));
}

TEST_F(TreeMouse, PressLeavesNoDropHighlightBehindWithDragAndDropEnabled) {
  dir.settings.Write(L"Language", L"English");
  dir.settings.Write(L"Drag&Drop", L"True");
  StartWithTree();
  ASSERT_TRUE(Menus().IsChecked(L"meu_aa"));

  Click(Tree().Handle(), MiddleOf(*b_));

  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  EXPECT_EQ(Tree().Selected(), b_);
}

TEST_F(TreeMouse, PressMakesTheTreeTheActivePane) {
  StartWithTree();
  SetFocus(List().Handle());
  ASSERT_TRUE(Parts().listPaneActive);
  Click(Tree().Handle(), MiddleOf(*b_));
  EXPECT_FALSE(Parts().listPaneActive);
}

}  // namespace
}  // namespace kestrelon::test
