// Renaming a category in place, and the keys of the tree.

#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class LabelEdit : public MainFormFixture {
 protected:
  void StartWithNode() {
    Start();
    node_ = &AddCategory(L"A_", L"old");
    SelectCategory(*node_);
    program.databaseSaved = true;
  }
  // Types a name over the old one and presses Enter.
  void Rename(const std::wstring& text) {
    tree::EditSelectedCaption(Parts());
    const HWND edit = TreeView_GetEditControl(Tree().Handle());
    ASSERT_NE(edit, nullptr);
    SetWindowTextW(edit, text.c_str());
    PressKey(edit, VK_RETURN);
    ASSERT_TRUE(PumpUntil([this] { return !Tree().EditingLabel(); }));
  }
  win::TreeNode* node_ = nullptr;
};

TEST_F(LabelEdit, GivesTheCategoryTheNameAsTyped) {
  StartWithNode();

  Rename(L" new name ");

  EXPECT_EQ(node_->Text(), L" new name ");
  EXPECT_EQ(ShownTree(), L" new name ");
  EXPECT_EQ(Panel(1), L"Category :  new name ");
  EXPECT_EQ(Panel(2), L"A_");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(LabelEdit, KeepsTheOldNameWhenEscapeIsPressed) {
  StartWithNode();
  tree::EditSelectedCaption(Parts());
  const HWND edit = TreeView_GetEditControl(Tree().Handle());
  SetWindowTextW(edit, L"other");

  PressKey(edit, VK_ESCAPE);

  EXPECT_TRUE(PumpUntil([this] { return !Tree().EditingLabel(); }));
  EXPECT_EQ(ShownTree(), L"old");
  EXPECT_EQ(Panel(1), L"Category : old");
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(LabelEdit, KeepsTheOldNameForBlanksOnlyAndStillShowsThemInTheStatusBar) {
  StartWithNode();

  Rename(L"   ");

  EXPECT_EQ(node_->Text(), L"old");
  EXPECT_EQ(ShownTree(), L"old");
  EXPECT_EQ(Panel(1), L"Category :    ");
  EXPECT_EQ(Panel(2), L"A_");
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(LabelEdit, KeepsTheOldNameForAnEmptyText) {
  StartWithNode();
  Rename(L"");
  EXPECT_EQ(ShownTree(), L"old");
  EXPECT_EQ(Panel(1), L"Category : ");
}

TEST_F(LabelEdit, Takes254Characters) {
  StartWithNode();
  const std::wstring longest(254, L'x');
  Rename(longest);
  EXPECT_EQ(node_->Text(), longest);
  EXPECT_EQ(ShownTree(), longest);
}

TEST_F(LabelEdit, KeepsTheOldNameFor255CharactersAndStillShowsThemInTheStatusBar) {
  StartWithNode();
  const std::wstring tooLong(255, L'x');
  Rename(tooLong);
  EXPECT_EQ(node_->Text(), L"old");
  EXPECT_EQ(ShownTree(), L"old");
  EXPECT_EQ(Panel(1), L"Category : " + tooLong);
}

TEST_F(LabelEdit, CountsTheCharactersWithoutTheOuterBlanks) {
  StartWithNode();
  EXPECT_TRUE(tree::TreeView1_AfterLabelEdit(Parts(), L"  " + std::wstring(254, L'x') + L"  "));
  EXPECT_FALSE(tree::TreeView1_AfterLabelEdit(Parts(), std::wstring(255, L'x')));
  EXPECT_FALSE(tree::TreeView1_AfterLabelEdit(Parts(), std::wstring(400, L'x')));
}

TEST_F(LabelEdit, AllowsANameThatAnotherCategoryHas) {
  StartWithNode();
  AddCategory(L"B_", L"same");
  Rename(L"same");
  EXPECT_EQ(ShownTree(), L"same,same");
}

TEST_F(LabelEdit, ShowsTheNewNameInTheStatusBarAndNotThePath) {
  StartWithNode();
  win::TreeNode& child = AddCategory(L"B_", L"child", node_);
  SelectCategory(child);
  ASSERT_EQ(Panel(1), L"Category : old\\child");

  Rename(L"renamed");

  EXPECT_EQ(Panel(1), L"Category : renamed");
  EXPECT_EQ(Panel(2), L"B_");
}

TEST_F(LabelEdit, FollowsAnInsertionByRealKeys) {
  Start();
  SetForegroundWindow(form->Handle());
  Command(L"meu_AddChild");
  ASSERT_TRUE(Tree().EditingLabel());

  TypeKeys({'A', 'B', VK_RETURN});

  EXPECT_TRUE(PumpUntil([this] { return !Tree().EditingLabel(); }));
  EXPECT_EQ(ShownTree(), L"ab");
  EXPECT_EQ(Panel(1), L"Category : ab");
}

TEST_F(LabelEdit, LeavesTheItemListAlone) {
  StartWithNode();
  AddItem(L"A_", 1, {L"one"});
  SelectCategory(*node_);
  Rename(L"new");
  EXPECT_EQ(List().Count(), 1u);
  EXPECT_EQ(Panel(3), L"1 Objects");
}

// A, with an item, is being edited, "typed" stands in its label; B with the child C, also with an item, is
// beside it. Whatever ends the edit keeps what was typed, and afterwards the status bar speaks of the current
// category.
class LabelEditEnd : public LabelEdit {
 protected:
  void StartEdit(const std::wstring& typed = L"typed") {
    StartWithNode();
    win::TreeNode& b = AddCategory(L"B_", L"other");
    AddCategory(L"C_", L"child", &b);
    Tree().Expand(b);
    AddItem(L"A_", 1, {L"of A"});
    AddItem(L"C_", 1, {L"of C"});
    SelectCategory(*node_);
    program.databaseSaved = true;
    tree::EditSelectedCaption(Parts());
    ASSERT_TRUE(Tree().EditingLabel());
    SetWindowTextW(TreeView_GetEditControl(Tree().Handle()), typed.c_str());
  }
  void ExpectKept() {
    EXPECT_FALSE(Tree().EditingLabel());
    ExpectNamed();
  }
  void ExpectNamed() {
    EXPECT_EQ(node_->Text(), L"typed");
    EXPECT_FALSE(program.databaseSaved);
  }
};

TEST_F(LabelEditEnd, ByAClickOnAnotherCategory) {
  StartEdit();
  Click(Tree().Handle(), MiddleOf(*Tree().Find(L"C_")));
  ExpectKept();
  EXPECT_EQ(Panel(1), L"Category : other\\child");
  EXPECT_EQ(Panel(2), L"C_");
  EXPECT_EQ(Column(1), std::vector<std::wstring>{L"of C"});
}

TEST_F(LabelEditEnd, ByARightClickOnAnotherCategory) {
  StartEdit();
  const PopupMenuEntries menu;
  Click(Tree().Handle(), MiddleOf(*Tree().Find(L"C_")), true);
  EXPECT_TRUE(menu.Shown());
  ExpectKept();
  EXPECT_EQ(Panel(1), L"Category : child");
  EXPECT_EQ(Panel(2), L"C_");
  EXPECT_EQ(Tree().Selected(), Tree().Find(L"C_"));
  EXPECT_EQ(Column(1), std::vector<std::wstring>{L"of A"}) << "a right click does not fill the list";
}

TEST_F(LabelEditEnd, ByAClickOnEmptySpace) {
  StartEdit();
  Click(Tree().Handle(), EmptyTreeSpace());
  ExpectKept();
  EXPECT_EQ(Panel(1), L"Category : ");
  EXPECT_EQ(Panel(2), L"");
  EXPECT_EQ(Tree().Selected(), nullptr);
}

TEST_F(LabelEditEnd, ByAClickOnTheList) {
  StartEdit();
  Click(List().Handle(), MiddleOfRow(0));
  ExpectKept();
  EXPECT_EQ(Panel(1), L"Category : typed");
  EXPECT_EQ(Panel(2), L"A_");
}

TEST_F(LabelEditEnd, ByAMenuCommandThatSelectsAnother) {
  StartEdit();
  Command(L"meu_AddNextSibling");
  ExpectNamed();  // the new category is being named now
  EXPECT_EQ(ShownTree(), L"typed,New Category ,other(child)");
  EXPECT_EQ(Panel(1), L"Category : New Category ");
  EXPECT_EQ(Panel(2), Tree().Selected()->Key());
  EXPECT_EQ(Tree().Selected()->Text(), L"New Category ");
}

TEST_F(LabelEditEnd, ByAMenuCommandThatSelectsNothing) {
  StartEdit();
  Command(L"meu_aa");
  ExpectKept();
  EXPECT_EQ(Panel(1), L"Category : typed");
}

TEST_F(LabelEditEnd, ByTheToolbar) {
  StartEdit();
  SendMessageW(form->Handle(), WM_COMMAND, MAKEWPARAM(200 + 1, 0), 0);  // a new category below it
  ExpectNamed();                                                        // the new category is being named now
  EXPECT_EQ(ShownTree(), L"typed(New Category ),other(child)");
}

TEST_F(LabelEditEnd, BeforeTheQuestionOfADeletion) {
  StartEdit();
  std::wstring then;
  world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT) {
    then = ShownTree();
    return IDNO;
  };
  Command(L"meu_Remove");
  EXPECT_EQ(then, L"typed,other(child)");
  ExpectKept();
  EXPECT_EQ(Panel(1), L"Category : typed");
  EXPECT_EQ(Panel(2), L"A_");
}

TEST_F(LabelEditEnd, BeforeADatabaseIsLoaded) {
  StartEdit();
  std::wstring then;
  const OnWindow dialog([](HWND window) { return TextOf(window) == L"Load Database"; },
                        [&](HWND window) {
                          then = ShownTree();
                          SendMessageW(window, WM_CLOSE, 0, 0);
                        });
  Command(L"meu_LoadDatabase");
  EXPECT_TRUE(dialog.Done());
  EXPECT_EQ(then, L"typed,other(child)");
  ExpectKept();
}

TEST_F(LabelEditEnd, BeforeTheProgramAsksWhetherToSave) {
  StartEdit();
  world.answers = {IDCANCEL};  // without the new name there would be nothing to ask
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  ASSERT_EQ(world.boxes.size(), 1u);
  ExpectKept();
}

TEST_F(LabelEditEnd, ByAClickWithANameThatIsRefusedKeepsTheOldOne) {
  StartEdit(L"   ");
  Click(Tree().Handle(), MiddleOf(*Tree().Find(L"C_")));
  EXPECT_EQ(node_->Text(), L"old");
  EXPECT_EQ(Panel(1), L"Category : other\\child");
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(LabelEditEnd, ByARefusedCommandNotAtAll) {
  StartEdit();
  Menus().Enable(L"meu_aa", false);
  Command(L"meu_aa");
  EXPECT_TRUE(Tree().EditingLabel());
}

class TreeKeys : public LabelEdit {};

TEST_F(TreeKeys, EnterSwitchesLabelEditingBackToManual) {
  StartWithNode();
  Tree().SetAutomaticLabelEdit(true);
  SendKey(Tree().Handle(), VK_RETURN);
  EXPECT_FALSE(Tree().AutomaticLabelEdit());
  EXPECT_FALSE(Tree().EditingLabel());
}

TEST_F(TreeKeys, F2EditsTheSelectedCategoryWithAutomaticEditing) {
  StartWithNode();
  SendKey(Tree().Handle(), VK_F2);
  EXPECT_TRUE(Tree().EditingLabel());
  EXPECT_TRUE(Tree().AutomaticLabelEdit());
}

TEST_F(TreeKeys, F2WithoutASelectionEditsNothing) {
  StartWithNode();
  Tree().Select(nullptr);
  SendKey(Tree().Handle(), VK_F2);
  EXPECT_FALSE(Tree().EditingLabel());
}

TEST_F(TreeKeys, OtherKeysLeaveLabelEditingAsItIs) {
  StartWithNode();
  Tree().SetAutomaticLabelEdit(true);
  for (const WORD key : {WORD{VK_HOME}, WORD{VK_SPACE}, WORD{VK_TAB}}) SendKey(Tree().Handle(), key);
  EXPECT_TRUE(Tree().AutomaticLabelEdit());
  EXPECT_FALSE(Tree().EditingLabel());
}

TEST_F(TreeKeys, ArrowsSelectAndShowTheNextCategory) {
  StartWithNode();
  AddCategory(L"B_", L"second");
  AddItem(L"B_", 1, {L"one"});

  SendKey(Tree().Handle(), VK_DOWN);
  win::DoEvents();

  EXPECT_EQ(Panel(1), L"Category : second");
  EXPECT_EQ(Panel(2), L"B_");
  EXPECT_EQ(Panel(3), L"1 Objects");
}

}  // namespace
}  // namespace kestrelon::test
