// The dialog that moves items to another category.

#include "items/ItemCommands.h"
#include "tests/items/ItemDialogFixture.h"
#include "tree/Changecategory.h"

namespace kestrelon::test {
namespace {

class ChangeCategory : public ItemDialogFixture {
 protected:
  // Items "one", "two", … of category A; beside it B with the sub-category C. All rows are selected.
  void StartWithItems(const std::vector<std::wstring>& aliases = {L"one", L"two", L"three"}) {
    std::vector<Item> items;
    for (const std::wstring& alias : aliases) items.push_back({.alias = alias});
    StartWith(items);
    win::TreeNode& b = AddCategory(L"B_", L"Beta");
    AddCategory(L"C_", L"Gamma", &b);
    List().SelectAll();
    items::EnableItemCommands(Parts());
  }
  void InChangecategory(const std::function<void(tree::Changecategory&)>& act) {
    InDialogOf(L"meu_Changecategory", L"Changecategory",
               [&](win::Form& dialog) { act(dynamic_cast<tree::Changecategory&>(dialog)); });
  }
  // A click on the name of that category in the dialog's tree.
  static void ClickNode(tree::Changecategory& dialog, const wchar_t* key) {
    win::TreeNode& node = *dialog.TreeView1().Find(key);
    dialog.TreeView1().EnsureVisible(node);
    const RECT text = dialog.TreeView1().TextRectangle(node);
    Click(dialog.TreeView1().Handle(), {(text.left + text.right) / 2, (text.top + text.bottom) / 2});
  }
  void MoveTo(const wchar_t* key) {
    InChangecategory([&](tree::Changecategory& dialog) {
      const HWND window = dialog.Handle();
      ClickNode(dialog, key);
      Press(dialog, L"Command1", 0);
      EXPECT_FALSE(IsWindow(window));
    });
  }
  static bool OkEnabled(tree::Changecategory& dialog) {
    return IsWindowEnabled(ControlOf(dialog, L"Command1", 0));
  }
  std::vector<std::wstring> Table() { return Query(L"SELECT TreeviewNode, FileIndex FROM FTable", 2); }
};

TEST_F(ChangeCategory, ShowsWhatItIsAndTheCategoriesWithNoneChosen) {
  StartWithItems();
  InChangecategory([&](tree::Changecategory& dialog) {
    EXPECT_EQ(dialog.Caption(), L"Select category");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label1")), L"Move the selected item(s) to new category");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label2")), L"Category name");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"");
    EXPECT_NE(GetWindowLongPtrW(ControlOf(dialog, L"Text1"), GWL_STYLE) & ES_READONLY, 0);
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1", 0)), L"&OK");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1", 1)), L"&Cancel");
    EXPECT_FALSE(OkEnabled(dialog));
    EXPECT_FALSE(IsWindowEnabled(form->Handle()));
    EXPECT_EQ(dialog.TreeView1().Count(), 3u);
    EXPECT_EQ(GetFocus(), dialog.TreeView1().Handle());
  });
}

TEST_F(ChangeCategory, MirrorsKeysTextsParentsAndIndexes) {
  StartWithItems();
  AddCategory(L"D_", L"Delta", Tree().Find(L"C_"));
  Tree().Add(Tree().Find(L"B_"), win::Relationship::kFirst, L"E_", L"Epsilon");
  InChangecategory([&](tree::Changecategory& dialog) {
    ASSERT_EQ(dialog.TreeView1().Count(), Tree().Count());
    for (std::size_t index = 1; index <= Tree().Count(); ++index) {
      const win::TreeNode &node = Tree().At(index), &copy = dialog.TreeView1().At(index);
      EXPECT_EQ(copy.Key(), node.Key());
      EXPECT_EQ(copy.FullPath(), node.FullPath());
      EXPECT_EQ(copy.Image(), 1);
    }
  });
}

TEST_F(ChangeCategory, HasThePicturesOfTheMainTree) {
  StartWithItems();
  const auto pictures = [](HWND tree) {
    return reinterpret_cast<HIMAGELIST>(SendMessageW(tree, TVM_GETIMAGELIST, TVSIL_NORMAL, 0));
  };
  InChangecategory([&](tree::Changecategory& dialog) {
    EXPECT_EQ(ImageList_GetImageCount(pictures(dialog.TreeView1().Handle())), 2);
  });
  EXPECT_EQ(ImageList_GetImageCount(pictures(Tree().Handle())), 2) << "the main tree keeps its own";
}

TEST_F(ChangeCategory, CopiesParentsBeforeTheirChildrenAfterARearrangement) {
  StartWithItems();
  AddCategory(L"Z_", L"Omega");
  Tree().SetParent(*Tree().Find(L"A_"), *Tree().Find(L"C_"));
  Tree().SetParent(*Tree().Find(L"B_"), *Tree().Find(L"Z_"));
  InChangecategory([&](tree::Changecategory& dialog) {
    EXPECT_EQ(dialog.TreeView1().Count(), 4u);
    EXPECT_EQ(dialog.TreeView1().Find(L"A_")->FullPath(), L"Omega\\Beta\\Gamma\\A");
  });
}

TEST_F(ChangeCategory, ShowsThePathOfTheClickedCategoryAndEnablesOk) {
  StartWithItems();
  InChangecategory([&](tree::Changecategory& dialog) {
    ClickNode(dialog, L"C_");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"Beta\\Gamma");
    EXPECT_TRUE(OkEnabled(dialog));
    ClickNode(dialog, L"A_");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"A");
  });
}

TEST_F(ChangeCategory, TakesACategoryThatIsReachedByTheKeyboard) {
  StartWithItems();
  InChangecategory([&](tree::Changecategory& dialog) {
    PressKey(dialog.TreeView1().Handle(), VK_END);
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"Beta");
    PressKey(dialog.TreeView1().Handle(), VK_RETURN);
  });
  EXPECT_EQ(Table(), (Texts{L"B_|1#A_", L"B_|2#A_", L"B_|3#A_"}));
}

TEST_F(ChangeCategory, MovesTheSelectedItemsAndTakesTheirRowsAway) {
  StartWithItems();
  List().Select(1, false);

  MoveTo(L"C_");

  EXPECT_EQ(Table(), (Texts{L"C_|1#A_", L"A_|2#A_", L"C_|3#A_"})) << "they keep their FileIndex";
  EXPECT_EQ(Column(1), Texts{L"two"});
  EXPECT_EQ(Panel(3), L"1 Objects");
  EXPECT_EQ(Panel(2), L"A_");
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_TRUE(world.boxes.empty());
  SelectCategory(*Tree().Find(L"C_"));
  EXPECT_EQ(Column(1), (Texts{L"one", L"three"}));
}

TEST_F(ChangeCategory, DisablesTheItemCommandsOnceTheRowsAreGone) {
  StartWithItems();
  MoveTo(L"B_");
  EXPECT_EQ(Panel(3), L"0 Objects");
  EXPECT_FALSE(Menus().IsEnabled(L"meu_Changecategory"));
  EXPECT_FALSE(Menus().IsEnabled(L"meu_Delete"));
}

TEST_F(ChangeCategory, ToTheCurrentCategoryTakesTheRowsAwayUntilItIsSelectedAgain) {
  StartWithItems();

  MoveTo(L"A_");

  EXPECT_EQ(Table(), (Texts{L"A_|1#A_", L"A_|2#A_", L"A_|3#A_"}));
  EXPECT_EQ(List().Count(), 0u);
  SelectCategory(*Tree().Find(L"A_"));
  EXPECT_EQ(List().Count(), 3u);
}

TEST_F(ChangeCategory, OkWithoutAChosenCategoryMovesNothingAndTheDialogStays) {
  StartWithItems();
  InChangecategory([&](tree::Changecategory& dialog) {
    // Neither by Enter nor by a press that gets past the disabled button.
    PressKey(dialog.TreeView1().Handle(), VK_RETURN);
    const HWND ok = ControlOf(dialog, L"Command1", 0);
    SendMessageW(dialog.Handle(), WM_COMMAND, MAKEWPARAM(GetDlgCtrlID(ok), BN_CLICKED),
                 reinterpret_cast<LPARAM>(ok));
    EXPECT_TRUE(IsWindowVisible(dialog.Handle()));
  });
  EXPECT_EQ(List().Count(), 3u);
  EXPECT_EQ(Table(), (Texts{L"A_|1#A_", L"A_|2#A_", L"A_|3#A_"}));
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(ChangeCategory, TheFocusChoosesNoCategory) {
  StartWithItems();
  InChangecategory([&](tree::Changecategory& dialog) {
    const HWND tree = dialog.TreeView1().Handle();
    EXPECT_EQ(dialog.TreeView1().Selected(), nullptr);
    // How the control asks whether it may select the first one when it gets the focus.
    NMTREEVIEWW change{};
    change.hdr = {tree, static_cast<UINT_PTR>(GetDlgCtrlID(tree)), TVN_SELCHANGINGW};
    change.action = TVC_UNKNOWN;
    change.itemNew.hItem = TreeView_GetRoot(tree);
    EXPECT_NE(SendMessageW(dialog.Handle(), WM_NOTIFY, change.hdr.idFrom, reinterpret_cast<LPARAM>(&change)),
              0);
    SetFocus(ControlOf(dialog, L"Command1", 1));
    SetFocus(tree);
    EXPECT_EQ(dialog.TreeView1().Selected(), nullptr);
    EXPECT_FALSE(OkEnabled(dialog));
  });
}

TEST_F(ChangeCategory, OkMovesToTheCategoryThatAClosedBranchLeftSelected) {
  StartWithItems();
  InChangecategory([&](tree::Changecategory& dialog) {
    ClickNode(dialog, L"C_");
    PressKey(dialog.TreeView1().Handle(), VK_LEFT);  // to Beta
    PressKey(dialog.TreeView1().Handle(), VK_RIGHT);
    ClickNode(dialog, L"C_");
    win::TreeNode& beta = *dialog.TreeView1().Find(L"B_");
    const RECT text = dialog.TreeView1().TextRectangle(beta);
    TVHITTESTINFO hit{};
    hit.pt.y = (text.top + text.bottom) / 2;
    do {
      ++hit.pt.x;
      SendMessageW(dialog.TreeView1().Handle(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    } while ((hit.flags & TVHT_ONITEMBUTTON) == 0 && hit.pt.x < text.left);
    Click(dialog.TreeView1().Handle(), {hit.pt.x + 2, hit.pt.y});
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Text1")), L"Beta");
    Press(dialog, L"Command1", 0);
  });
  EXPECT_EQ(Table(), (Texts{L"B_|1#A_", L"B_|2#A_", L"B_|3#A_"}));
}

TEST_F(ChangeCategory, CancelAndEscapeChangeNothing) {
  StartWithItems();
  const std::function<void(tree::Changecategory&)> ways[] = {
      [](tree::Changecategory& dialog) { Press(dialog, L"Command1", 1); },
      [](tree::Changecategory& dialog) { PressKey(dialog.TreeView1().Handle(), VK_ESCAPE); },
  };
  for (const auto& close : ways) {
    InChangecategory([&](tree::Changecategory& dialog) {
      const HWND window = dialog.Handle();
      ClickNode(dialog, L"B_");
      close(dialog);
      EXPECT_FALSE(IsWindow(window));
    });
  }
  EXPECT_EQ(List().Count(), 3u);
  EXPECT_EQ(Table(), (Texts{L"A_|1#A_", L"A_|2#A_", L"A_|3#A_"}));
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(ChangeCategory, StopsAtAFailureWithTableAndListInStep) {
  StartWithItems();
  // An item whose index holds a double quote, which breaks its statement.
  win::ListRow broken;
  broken.Set({L"broken", L"", L"", L"", L""}, L"x\"y");
  std::vector<win::ListRow> rows = List().Rows();
  rows.insert(rows.begin() + 1, broken);
  List().SetRows(rows);
  List().SelectAll();
  world.answers = {IDOK};

  InChangecategory([&](tree::Changecategory& dialog) {
    ClickNode(dialog, L"B_");
    Press(dialog, L"Command1", 0);
    EXPECT_TRUE(IsWindowVisible(dialog.Handle()));
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].title, L"Changecategory Error:");
    EXPECT_EQ(world.boxes[0].owner, dialog.Handle());
  });

  // From the last to the first: two were moved before it.
  EXPECT_EQ(Table(), (Texts{L"A_|1#A_", L"B_|2#A_", L"B_|3#A_"}));
  EXPECT_EQ(Column(1), (Texts{L"one", L"broken"}));
  EXPECT_EQ(Panel(3), L"2 Objects");
  EXPECT_EQ(List().SelectedRows(), (std::vector<std::size_t>{0, 1}));
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(ChangeCategory, DoesNotOpenWhileNoRowIsSelected) {
  StartWithItems();
  List().SelectNone();
  tree::meu_Changecategory_Click(Parts());  // returns at once: there is nobody to close a dialog
  EXPECT_TRUE(IsWindowEnabled(form->Handle()));
  EXPECT_EQ(List().Count(), 3u);
}

TEST_F(ChangeCategory, DoesNotRenameCategories) {
  StartWithItems();
  InChangecategory([&](tree::Changecategory& dialog) {
    ClickNode(dialog, L"B_");
    ClickNode(dialog, L"B_");
    PressKey(dialog.TreeView1().Handle(), VK_F2);
    EXPECT_FALSE(dialog.TreeView1().EditingLabel());
  });
}

TEST_F(ChangeCategory, IsInTheLanguageInUse) {
  StartWithItems();
  Command(L"meu_Chinese_Traditional");
  InChangecategory([&](tree::Changecategory& dialog) {
    EXPECT_EQ(dialog.Caption(), L"\x9078\x64C7\x985E\x5225");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Label2")), L"\x985E\x5225\x540D\x7A31");
    EXPECT_EQ(TextOf(ControlOf(dialog, L"Command1", 0)), L"\x78BA\x5B9A(&O)");
  });
}

}  // namespace
}  // namespace kestrelon::test
