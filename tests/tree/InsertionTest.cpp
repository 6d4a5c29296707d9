// The five commands that add a category.

#include <vector>

#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class Insertion : public MainFormFixture {
 protected:
  // A, B, C with B selected and shown; B has the children b1 and b2. The database counts as saved.
  void StartWithTree() {
    Start();
    AddCategory(L"A_", L"A");
    win::TreeNode& b = AddCategory(L"B_", L"B");
    AddCategory(L"C_", L"C");
    AddCategory(L"b1_", L"b1", &b);
    AddCategory(L"b2_", L"b2", &b);
    SelectCategory(b);
    program.databaseSaved = true;
  }
  win::TreeNode& NewNode() {
    win::TreeNode* node = Tree().Selected();
    EXPECT_NE(node, nullptr);
    return *node;
  }
};

constexpr const wchar_t* kFirstKey = L"S000111151320050002_";  // with the draws 1 and 2

TEST_F(Insertion, FirstSiblingStandsBeforeAllSiblings) {
  StartWithTree();
  Command(L"meu_AddFirstSibling");
  EXPECT_EQ(ShownTree(), L"New Category ,A,B(b1,b2),C");
}

TEST_F(Insertion, PreviousSiblingStandsRightBeforeTheSelectedCategory) {
  StartWithTree();
  Command(L"meu_AddPreviousSibling");
  EXPECT_EQ(ShownTree(), L"A,New Category ,B(b1,b2),C");
}

TEST_F(Insertion, PreviousSiblingOfTheFirstStandsFirst) {
  StartWithTree();
  SelectCategory(*Tree().Find(L"A_"));
  Command(L"meu_AddPreviousSibling");
  EXPECT_EQ(ShownTree(), L"New Category ,A,B(b1,b2),C");
}

TEST_F(Insertion, NextSiblingStandsRightAfterTheSelectedCategory) {
  StartWithTree();
  Command(L"meu_AddNextSibling");
  EXPECT_EQ(ShownTree(), L"A,B(b1,b2),New Category ,C");
}

TEST_F(Insertion, LastSiblingStandsAfterAllSiblings) {
  StartWithTree();
  Command(L"meu_AddLastSibling");
  EXPECT_EQ(ShownTree(), L"A,B(b1,b2),C,New Category ");
}

TEST_F(Insertion, ChildStandsAfterTheOtherChildren) {
  StartWithTree();
  Command(L"meu_AddChild");
  EXPECT_EQ(ShownTree(), L"A,B(b1,b2,New Category ),C");
}

TEST_F(Insertion, SiblingsOfAChildStayWithItsParent) {
  StartWithTree();
  for (const wchar_t* command :
       {L"meu_AddFirstSibling", L"meu_AddPreviousSibling", L"meu_AddNextSibling", L"meu_AddLastSibling"}) {
    SelectCategory(*Tree().Find(L"b2_"));
    Command(command);
    TreeView_EndEditLabelNow(Tree().Handle(), TRUE);
    Tree().SetText(NewNode(), command + 7);
  }
  EXPECT_EQ(ShownTree(), L"A,B(FirstSibling,b1,PreviousSibling,b2,NextSibling,LastSibling),C");
}

// What every one of the five does after the insertion.
class EveryInsertion : public Insertion, public testing::WithParamInterface<const wchar_t*> {};

TEST_P(EveryInsertion, NamesTheCategoryAndGivesItAKeyAndItsPictures) {
  StartWithTree();

  Command(GetParam());

  EXPECT_EQ(NewNode().Text(), L"New Category ");
  EXPECT_EQ(NewNode().Key(), kFirstKey);
  EXPECT_EQ(NewNode().Image(), 1);
  EXPECT_EQ(NewNode().SelectedImage(), 2);
}

TEST_P(EveryInsertion, ShowsTheNewCategoryAsTheCurrentOne) {
  StartWithTree();

  Command(GetParam());

  EXPECT_EQ(Panel(1), L"Category : New Category ");
  EXPECT_EQ(Panel(2), kFirstKey);
}

TEST_P(EveryInsertion, StartsEditingItsNameWithAutomaticEditing) {
  StartWithTree();

  Command(GetParam());

  EXPECT_TRUE(Tree().AutomaticLabelEdit());
  EXPECT_TRUE(Tree().EditingLabel());
  EXPECT_EQ(TextOf(TreeView_GetEditControl(Tree().Handle())), L"New Category ");
}

TEST_P(EveryInsertion, EmptiesTheItemList) {
  Start();
  win::TreeNode& node = AddCategory(L"A_", L"A");
  AddItem(L"A_", 1, {L"one"});
  SelectCategory(node);
  ASSERT_EQ(List().Count(), 1u);

  Command(GetParam());

  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(ListView_GetItemCount(List().Handle()), 0);
  EXPECT_EQ(Panel(3), L"0 Objects");
}

TEST_P(EveryInsertion, LeavesTheDatabaseUnsaved) {
  StartWithTree();
  Command(GetParam());
  EXPECT_FALSE(program.databaseSaved);
}

TEST_P(EveryInsertion, AddsNothingAndSaysNothingWhenTheKeyIsTaken) {
  StartWithTree();
  AddCategory(kFirstKey, L"taken");
  const std::wstring before = ShownTree();

  Command(GetParam());

  EXPECT_EQ(ShownTree(), before);
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_EQ(Panel(2), L"B_");
}

INSTANTIATE_TEST_SUITE_P(Commands, EveryInsertion,
                         testing::Values(L"meu_AddFirstSibling", L"meu_AddPreviousSibling",
                                         L"meu_AddNextSibling", L"meu_AddLastSibling", L"meu_AddChild"),
                         [](const auto& command) { return Narrow(command.param + 4); });

// Scrolling into view. That the next sibling leaves it out cannot be seen: the control itself scrolls to what
// is edited.
class Scrolling : public Insertion {
 protected:
  // Far more categories than fit. The one in the middle is selected, the first ones are in view.
  void StartWithManyCategories() {
    Start();
    for (int i = 0; i < 400; ++i) AddCategory(L"k" + std::to_wstring(i) + L"_", L"category");
    SelectMiddle();
  }
  void SelectMiddle() {
    SelectCategory(*Tree().Find(L"k200_"));
    SendMessageW(Tree().Handle(), WM_VSCROLL, SB_TOP, 0);
  }
  bool NewNodeIsInView() {
    RECT inner;
    GetClientRect(Tree().Handle(), &inner);
    const RECT text = Tree().TextRectangle(NewNode());
    return text.bottom > text.top && text.top >= 0 && text.bottom <= inner.bottom;
  }
};

TEST_F(Scrolling, BringsWhatTheCommandsAddIntoView) {
  StartWithManyCategories();
  for (const wchar_t* command :
       {L"meu_AddPreviousSibling", L"meu_AddLastSibling", L"meu_AddChild", L"meu_AddFirstSibling"}) {
    SelectMiddle();
    Command(command);
    EXPECT_TRUE(NewNodeIsInView()) << Narrow(command);
  }
}

TEST_F(Insertion, KeepsTheNameThatIsBeingTypedForTheCategoryBefore) {
  StartWithTree();
  Command(L"meu_AddLastSibling");
  SetWindowTextW(TreeView_GetEditControl(Tree().Handle()), L"typed");

  Command(L"meu_AddLastSibling");

  EXPECT_EQ(ShownTree(), L"A,B(b1,b2),C,typed,New Category ");
  EXPECT_EQ(Panel(1), L"Category : New Category ");
  EXPECT_EQ(Panel(2), NewNode().Key());
}

// Without a selected category.
TEST_F(Insertion, ChildOfAnEmptyTreeIsATopLevelCategoryInLabelEditing) {
  Start();

  Command(L"meu_AddChild");

  EXPECT_EQ(ShownTree(), L"New Category ");
  EXPECT_EQ(NewNode().Parent(), nullptr);
  EXPECT_TRUE(Tree().EditingLabel());
  EXPECT_EQ(Panel(1), L"Category : New Category ");
  EXPECT_EQ(Panel(2), kFirstKey);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(Insertion, LastSiblingOfAnEmptyTreeIsATopLevelCategory) {
  Start();
  Command(L"meu_AddLastSibling");
  EXPECT_EQ(ShownTree(), L"New Category ");
  EXPECT_TRUE(Tree().EditingLabel());
}

TEST_F(Insertion, LastSiblingWithoutASelectionIsTheLastTopLevelCategory) {
  StartWithTree();
  Tree().Select(nullptr);
  Command(L"meu_AddLastSibling");
  EXPECT_EQ(ShownTree(), L"A,B(b1,b2),C,New Category ");
  EXPECT_EQ(Panel(2), kFirstKey);
}

TEST_F(Insertion, TheOtherSiblingsAreNotAddedWithoutASelection) {
  StartWithTree();
  Tree().Select(nullptr);
  for (const wchar_t* command : {L"meu_AddFirstSibling", L"meu_AddPreviousSibling", L"meu_AddNextSibling"}) {
    program.databaseSaved = true;
    Command(command);
    EXPECT_FALSE(program.databaseSaved) << Narrow(command);
  }
  EXPECT_EQ(ShownTree(), L"A,B(b1,b2),C");
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_FALSE(Tree().EditingLabel());
}

TEST_F(Insertion, TheOtherSiblingsAreNotAddedToAnEmptyTree) {
  Start();
  for (const wchar_t* command : {L"meu_AddFirstSibling", L"meu_AddPreviousSibling", L"meu_AddNextSibling"}) {
    Command(command);
  }
  EXPECT_EQ(ShownTree(), L"");
}

TEST_F(Insertion, ChildWithoutACurrentCategoryAsksForOneAndAddsNothing) {
  StartWithTree();
  Click(Tree().Handle(), EmptyTreeSpace());
  ASSERT_EQ(Panel(2), L"");
  world.answers = {IDOK};

  Command(L"meu_AddChild");

  EXPECT_EQ(ShownTree(), L"A,B(b1,b2),C");
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Please select a category at first!");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon (AddChild)");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
  EXPECT_EQ(world.boxes[0].owner, form->Handle());
}

TEST_F(Insertion, ChildAsksInTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n3=Pick one.\r\n");
  Start();
  AddCategory(L"A_", L"A");
  world.answers = {IDOK};

  Command(L"meu_AddChild");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Pick one.");
}

TEST_F(Insertion, ChildWithACurrentButNoSelectedCategoryAddsNothing) {
  StartWithTree();
  Tree().Select(nullptr);
  ASSERT_EQ(Panel(2), L"B_");
  Command(L"meu_AddChild");
  EXPECT_EQ(ShownTree(), L"A,B(b1,b2),C");
  EXPECT_TRUE(world.boxes.empty());
}

}  // namespace
}  // namespace kestrelon::test
