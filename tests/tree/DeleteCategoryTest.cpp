#include "tests/support/MainFormFixture.h"
#include "tree/DeleteCategory.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

// A(B(C(D)),E) and F beside A; one item in each, of a real file.
class DeleteCategory : public MainFormFixture {
 protected:
  void StartWithCategories() {
    Start();
    win::TreeNode& a = AddCategory(L"A_", L"A");
    win::TreeNode& b = AddCategory(L"B_", L"B", &a);
    win::TreeNode& c = AddCategory(L"C_", L"C", &b);
    AddCategory(L"D_", L"D", &c);
    AddCategory(L"E_", L"E", &a);
    AddCategory(L"F_", L"F");
    file_ = dir.WriteFile(L"papers\\f.txt");
    for (const wchar_t* key : {L"A_", L"B_", L"C_", L"D_", L"E_", L"F_"})
      AddItem(key, 1, {L"item", L"f.txt", file_});
    program.databaseSaved = true;
  }
  void SelectKey(const wchar_t* key) { SelectCategory(*Tree().Find(key)); }
  Texts ItemKeys() { return Query(L"SELECT TreeviewNode FROM FTable", 1); }
  std::wstring file_;
};

TEST_F(DeleteCategory, WithoutACurrentCategorySaysSoAndChangesNothing) {
  StartWithCategories();
  Tree().Select(Tree().Find(L"A_"));  // selected in the tree, yet not current
  world.answers = {IDOK};

  Command(L"meu_Remove");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"No nodes selected. You need to select files for this operation.");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
  EXPECT_EQ(ShownTree(), L"A(B(C(D)),E),F");
  EXPECT_EQ(ItemKeys().size(), 6u);
}

TEST_F(DeleteCategory, AsksFirst) {
  StartWithCategories();
  SelectKey(L"B_");
  world.answers = {IDNO};

  Command(L"meu_Remove");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text,
            L"Delete Category and all it's sub-categories ? (don't delete the original of the file)");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags & MB_TYPEMASK, static_cast<UINT>(MB_YESNO));
  EXPECT_EQ(world.boxes[0].flags & MB_DEFMASK, static_cast<UINT>(MB_DEFBUTTON2)) << "Enter deletes nothing";
}

TEST_F(DeleteCategory, AsksInTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n7=All of it?\r\n");
  StartWithCategories();
  SelectKey(L"B_");
  world.answers = {IDNO};
  Command(L"meu_Remove");
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"All of it?");
}

TEST_F(DeleteCategory, AnsweringNoChangesNothing) {
  StartWithCategories();
  SelectKey(L"B_");
  world.answers = {IDNO};

  Command(L"meu_Remove");

  EXPECT_EQ(ShownTree(), L"A(B(C(D)),E),F");
  EXPECT_EQ(ItemKeys().size(), 6u);
  EXPECT_EQ(Panel(2), L"B_");
  EXPECT_EQ(List().Count(), 1u);
}

TEST_F(DeleteCategory, DeletesTheItemsOfThreeLevelsBelowAndOfNoSibling) {
  StartWithCategories();
  SelectKey(L"B_");
  world.answers = {IDYES};

  Command(L"meu_Remove");

  EXPECT_EQ(ItemKeys(), (Texts{L"A_", L"E_", L"F_"}));
  EXPECT_EQ(ShownTree(), L"A(E),F");
  EXPECT_EQ(Tree().Find(L"D_"), nullptr);
}

TEST_F(DeleteCategory, LeavesTheFilesOnTheDisk) {
  StartWithCategories();
  SelectKey(L"A_");
  world.answers = {IDYES};
  Command(L"meu_Remove");
  EXPECT_EQ(ItemKeys(), Texts{L"F_"});
  EXPECT_EQ(ScopedTestDir::ReadBytes(file_), "x");
}

TEST_F(DeleteCategory, LeavesNoCategoryCurrentAndTheListEmpty) {
  StartWithCategories();
  SelectKey(L"A_");
  world.answers = {IDYES};

  Command(L"meu_Remove");

  EXPECT_EQ(Panel(1), L"Category : ");
  EXPECT_EQ(Panel(2), L"");
  EXPECT_EQ(Panel(3), L"0 Objects");
  EXPECT_EQ(List().Count(), 0u);
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_EQ(GetFocus(), Parts().Text1);
}

TEST_F(DeleteCategory, HighlightsNoNeighbourOfWhatIsGone) {
  StartWithCategories();
  for (const wchar_t* key :
       {L"E_", L"B_", L"A_"}) {  // one with a sibling before it, one alone, one with a next
    SelectKey(key);
    SetFocus(Tree().Handle());
    world.answers = {IDYES};
    Command(L"meu_Remove");
    EXPECT_EQ(Tree().Selected(), nullptr) << Narrow(key);
    SetFocus(Tree().Handle());
    EXPECT_EQ(Tree().Selected(), nullptr) << Narrow(key);
  }
  EXPECT_EQ(ShownTree(), L"F");
}

TEST_F(DeleteCategory, DeletesNothingWhenAnotherCategoryIsCurrentOnceTheQuestionIsAnswered) {
  StartWithCategories();
  SelectKey(L"B_");
  world.messageBox = [this](HWND, const std::wstring&, const std::wstring&, UINT) {
    SelectKey(L"F_");
    return IDYES;
  };
  Command(L"meu_Remove");
  EXPECT_EQ(ShownTree(), L"A(B(C(D)),E),F");
  EXPECT_EQ(ItemKeys().size(), 6u);
}

TEST_F(DeleteCategory, DeletesNothingWhileSelectionAndCurrentCategoryDiffer) {
  StartWithCategories();
  SelectKey(L"B_");
  Tree().Select(Tree().Find(L"F_"));
  world.answers = {IDYES};
  Command(L"meu_Remove");
  EXPECT_EQ(ShownTree(), L"A(B(C(D)),E),F");
  EXPECT_EQ(ItemKeys().size(), 6u);
}

TEST_F(DeleteCategory, AFailureInTheMiddleLeavesTheCategoryShownAsItNowIs) {
  StartWithCategories();
  SelectKey(L"B_");
  AddCategory(L"quote\"", L"breaks the statement", Tree().Find(L"C_"));
  ASSERT_EQ(Panel(3), L"1 Objects");
  std::wstring shownBehindTheBox;
  world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT flags) {
    if ((flags & MB_TYPEMASK) == MB_YESNO) return IDYES;
    shownBehindTheBox = Panel(1) + L", " + Panel(2) + L", " + Panel(3);
    return IDOK;
  };

  Command(L"meu_Remove");

  EXPECT_EQ(shownBehindTheBox, L"Category : A\\B, B_, 0 Objects");
  EXPECT_EQ(Panel(1), L"Category : A\\B");
  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(Tree().Selected(), Tree().Find(L"B_"));
}

TEST_F(DeleteCategory, AFailureBeforeAnythingIsDeletedLeavesTheListAlone) {
  StartWithCategories();
  win::TreeNode& node = AddCategory(L"quote\"", L"breaks every statement");
  SelectKey(L"B_");
  Tree().Select(&node);
  win::SetCurrentCategory(Parts(), L"breaks every statement", node.Key());
  world.answers = {IDYES, IDOK};
  Command(L"meu_Remove");
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[1].title, L"meu_Remove_Click Error:");
  EXPECT_EQ(List().Count(), 1u);
}

TEST_F(DeleteCategory, ClearsTheSavedFlagEvenWhenTheAnswerIsNo) {
  StartWithCategories();
  SelectKey(L"A_");
  world.answers = {IDNO};
  Command(L"meu_Remove");
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_EQ(GetFocus(), Parts().Text1);
}

TEST_F(DeleteCategory, LeavesTheBackupTableAlone) {
  StartWithCategories();
  Execute(L"INSERT INTO FBackup SELECT * FROM FTable");
  SelectKey(L"A_");
  world.answers = {IDYES};
  Command(L"meu_Remove");
  EXPECT_EQ(Query(L"SELECT TreeviewNode FROM FBackup", 1).size(), 6u);
}

TEST_F(DeleteCategory, RunsByTheDeleteKeyInTheTree) {
  StartWithCategories();
  SelectKey(L"E_");
  world.answers = {IDYES};
  SetFocus(Tree().Handle());
  PressKey(Tree().Handle(), VK_DELETE);
  EXPECT_EQ(ShownTree(), L"A(B(C(D))),F");
}

TEST_F(DeleteCategory, RunsByTheToolbarWhileTheTreePaneIsActive) {
  StartWithCategories();
  SelectKey(L"E_");
  world.answers = {IDYES};
  form->Toolbar1_ButtonClick(3);
  EXPECT_EQ(ShownTree(), L"A(B(C(D))),F");
}

TEST_F(DeleteCategory, AFailureShowsItsBoxKeepsTheCategoryAndEnablesEverythingAgain) {
  StartWithCategories();
  SelectKey(L"B_");
  Tree().Find(L"C_");
  AddCategory(L"quote\"", L"breaks the statement", Tree().Find(L"C_"));
  world.answers = {IDYES, IDOK};

  Command(L"meu_Remove");

  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[1].title, L"meu_Remove_Click Error:");
  EXPECT_EQ(world.boxes[1].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  // What came before the failure is gone: B, C and C's first child D.
  EXPECT_EQ(ItemKeys(), (Texts{L"A_", L"E_", L"F_"}));
  EXPECT_EQ(ShownTree(), L"A(B(C(D,breaks the statement)),E),F");
  for (const wchar_t* menu : {L"meu_file", L"meu_Category", L"meu_List"})
    EXPECT_TRUE(Menus().IsEnabled(menu));
  EXPECT_TRUE(IsWindowEnabled(Tree().Handle()));
  EXPECT_FALSE(Parts().connection.IsOpen());
}

// What the window is like while statements run: seen when the first step is shown in the status bar. Not
// every step is, since drawing one takes longer than deleting.
class DeletionInProgress : public DeleteCategory {
 protected:
  void Watch() { SetWindowSubclass(Parts().StatusBar1.Handle(), &Spy, 1, reinterpret_cast<DWORD_PTR>(this)); }
  std::wstring firstStep;
  bool allOff = true, connected = false;

 private:
  static LRESULT CALLBACK Spy(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                              DWORD_PTR self) {
    auto& test = *reinterpret_cast<DeletionInProgress*>(self);
    const wchar_t* text = reinterpret_cast<const wchar_t*>(lParam);
    if (message == SB_SETTEXTW && wParam == 0 && test.firstStep.empty() &&
        std::wstring_view(text).starts_with(L"Delete Node")) {
      test.firstStep = text;
      for (const HWND control :
           {test.Tree().Handle(), test.List().Handle(), test.Parts().Toolbar1.Handle()}) {
        test.allOff = test.allOff && !IsWindowEnabled(control);
      }
      for (const wchar_t* menu : {L"meu_file", L"meu_Category", L"meu_List"}) {
        test.allOff = test.allOff && !test.Menus().IsEnabled(menu);
      }
      test.connected = test.Parts().connection.IsOpen();
    }
    return DefSubclassProc(window, message, wParam, lParam);
  }
};

TEST_F(DeleteCategory, GoesDepthFirstANodeBeforeItsChildrenAndNamesEach) {
  StartWithCategories();
  Texts steps;
  store::Opened connection(Parts().connection);
  tree::Deletion deletion{*connection, [&](const std::wstring& step) { steps.push_back(step); }};
  tree::DeleteNode(deletion, Tree().Find(L"A_"), false, false, true);
  EXPECT_EQ(steps, (Texts{L"Delete Node -> A", L"Delete Node -> B", L"Delete Node -> C", L"Delete Node -> D",
                          L"Delete Node -> E"}));
}

TEST_F(DeletionInProgress, DisablesMenusAndControlsAndHoldsTheConnectionOpen) {
  StartWithCategories();
  SelectKey(L"A_");
  Watch();
  world.answers = {IDYES};

  Command(L"meu_Remove");

  EXPECT_EQ(firstStep, L"Delete Node -> A");
  EXPECT_TRUE(allOff);
  EXPECT_TRUE(connected);
  for (const wchar_t* menu : {L"meu_file", L"meu_Category", L"meu_List"})
    EXPECT_TRUE(Menus().IsEnabled(menu));
  for (const HWND control : {Tree().Handle(), List().Handle(), Parts().Toolbar1.Handle()}) {
    EXPECT_TRUE(IsWindowEnabled(control));
  }
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(DeleteCategory, DeleteNodePassesTheCheckStateOnAndStaysWithinWhatItIsTold) {
  StartWithCategories();
  win::TreeNode& a = *Tree().Find(L"A_");
  store::Opened connection(Parts().connection);
  tree::Deletion deletion{*connection, [](const std::wstring&) {}};

  tree::DeleteNode(deletion, nullptr, true, true, true);
  tree::DeleteNode(deletion, &a, true, false, false);
  connection.Close();
  EXPECT_EQ(ItemKeys(), (Texts{L"B_", L"C_", L"D_", L"E_", L"F_"}));
  EXPECT_TRUE(a.Checked());
  EXPECT_FALSE(Tree().Find(L"B_")->Checked());

  store::Opened again(Parts().connection);
  tree::DeleteNode(deletion, &a, true, true, true);
  again.Close();
  EXPECT_TRUE(ItemKeys().empty());
  EXPECT_TRUE(Tree().Find(L"D_")->Checked());
  EXPECT_TRUE(Tree().Find(L"F_")->Checked());
}

TEST_F(DeleteCategory, TakesABranchOfAThousandCategoriesAndManyItemsInItsStride) {
  Start();
  win::TreeNode& top = AddCategory(L"T_", L"top");
  {
    store::Opened connection(Parts().connection);
    for (int i = 0; i < 1000; ++i) {
      const std::wstring key = L"K" + std::to_wstring(i) + L"_";
      AddCategory(key, L"category", i % 10 == 0 ? &top : Tree().Find(L"K" + std::to_wstring(i - 1) + L"_"));
      for (int n = 1; n <= 5; ++n) {
        connection->Execute(L"INSERT INTO FTable VALUES(\"" + key + L"\",\"" + std::to_wstring(n) + L"#" +
                            key + L"\",\"a\",\"a\",\"a\",\"a\",'')");
      }
    }
    connection.Close();
  }
  SelectCategory(top);
  world.answers = {IDYES};

  Command(L"meu_Remove");

  EXPECT_EQ(Tree().Count(), 0u);
  EXPECT_TRUE(ItemKeys().empty());
}

}  // namespace
}  // namespace kestrelon::test
