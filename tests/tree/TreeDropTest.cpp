#include "items/FileListDataObject.h"
#include "tests/support/MainFormFixture.h"
#include "tests/support/TestDataObject.h"
#include "tree/TreeDrop.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

// What a source drags: the drop target of the tree is driven as the system would.
class TreeDrop : public MainFormFixture {
 protected:
  void StartWithCategories() {
    Start();
    AddCategory(L"A_", L"Alpha");
    win::TreeNode& b = AddCategory(L"B_", L"Beta");
    AddCategory(L"C_", L"Gamma", &b);
    win::DoEvents();
    program.databaseSaved = true;
  }
  void Offer(const Texts& paths) { data_ = items::MakeFileListDataObject(paths); }
  POINTL Screen(POINT client) {
    ClientToScreen(Tree().Handle(), &client);
    return {client.x, client.y};
  }
  DWORD Enter(POINT client, DWORD allowed = DROPEFFECT_COPY) {
    DWORD effect = allowed;
    EXPECT_EQ(form->TreeDrops().Object()->DragEnter(data_.get(), MK_LBUTTON, Screen(client), &effect), S_OK);
    return effect;
  }
  DWORD Over(POINT client) {
    DWORD effect = DROPEFFECT_COPY;
    EXPECT_EQ(form->TreeDrops().Object()->DragOver(MK_LBUTTON, Screen(client), &effect), S_OK);
    return effect;
  }
  DWORD Drop(POINT client) {
    DWORD effect = DROPEFFECT_COPY;
    EXPECT_EQ(form->TreeDrops().Object()->Drop(data_.get(), 0, Screen(client), &effect), S_OK);
    return effect;
  }
  POINT On(const wchar_t* key) { return MiddleOf(*Tree().Find(key)); }
  void DropOn(const wchar_t* key) {
    Enter(On(key));
    Drop(On(key));
  }
  bool IsOpen(const wchar_t* key) {
    // The child of an open category has a place on the screen.
    const RECT child = Tree().TextRectangle(*Tree().Find(key)->Child());
    return child.right > child.left;
  }
  Texts Items() { return Query(L"SELECT TreeviewNode, FileIndex, Filename FROM FTable", 3); }

 private:
  win::ComPtr<IDataObject> data_{};
};

TEST_F(TreeDrop, DraggingOverACategoryHighlightsAndOpensIt) {
  StartWithCategories();
  Offer({L"C:\\a.txt"});
  EXPECT_EQ(Enter(On(L"A_")), static_cast<DWORD>(DROPEFFECT_COPY));
  EXPECT_EQ(Tree().DropHighlight(), Tree().Find(L"A_"));
  EXPECT_FALSE(IsOpen(L"B_"));
  EXPECT_EQ(Over(On(L"B_")), static_cast<DWORD>(DROPEFFECT_COPY));
  EXPECT_EQ(Tree().DropHighlight(), Tree().Find(L"B_"));
  EXPECT_TRUE(IsOpen(L"B_"));
  Over(EmptyTreeSpace());
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
}

TEST_F(TreeDrop, NothingCanBeDroppedWhileADialogIsOpen) {
  StartWithCategories();
  Offer({dir.WriteFile(L"f\\one.txt")});
  EnableWindow(form->Handle(), FALSE);  // what a dialog does; the tree itself stays enabled
  EXPECT_EQ(Enter(On(L"A_")), static_cast<DWORD>(DROPEFFECT_NONE));
  EXPECT_EQ(Drop(On(L"A_")), static_cast<DWORD>(DROPEFFECT_NONE));
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  EnableWindow(form->Handle(), TRUE);
  EXPECT_TRUE(Items().empty());
  EXPECT_TRUE(program.databaseSaved);
}

// Fetching what is dropped calls the program that it comes from, and messages are handled meanwhile.
TEST_F(TreeDrop, ACategoryThatGoesWhileItsFilesAreFetchedGetsNone) {
  StartWithCategories();
  TestDataObject files = TestDataObject::Files({dir.WriteFile(L"f\\one.txt")});
  files.meanwhile = [this] { Tree().Remove(*Tree().Find(L"B_")); };
  DWORD effect = DROPEFFECT_COPY;
  EXPECT_EQ(form->TreeDrops().Object()->Drop(&files, 0, Screen(On(L"B_")), &effect), S_OK);
  EXPECT_TRUE(Items().empty()) << "no item of a category that is not there";
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
}

TEST_F(TreeDrop, ACategoryMayGoWhileABoxIsOpen) {
  StartWithCategories();
  // The list cannot be filled: a key with a double quote breaks its statement.
  win::SetCurrentCategory(Parts(), L"", L"x\"y");
  Parts().internalDrag = true;
  world.messageBox = [this](HWND, const std::wstring&, const std::wstring& title, UINT) {
    EXPECT_EQ(title, L"ShowData Error:");
    Tree().Remove(*Tree().Find(L"B_"));
    return IDOK;
  };
  Offer({});
  Drop(On(L"B_"));
  EXPECT_EQ(ShownTree(), L"Alpha");
}

TEST_F(TreeDrop, LeavingTheTreeTakesTheHighlightAway) {
  StartWithCategories();
  Offer({L"C:\\a.txt"});
  Enter(On(L"A_"));
  EXPECT_EQ(form->TreeDrops().Object()->DragLeave(), S_OK);
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
}

TEST_F(TreeDrop, OffersNothingForDataWithoutFilesUnlessItemsOfTheListAreDragged) {
  StartWithCategories();
  Offer({});
  EXPECT_EQ(Enter(On(L"A_")), static_cast<DWORD>(DROPEFFECT_NONE));
  Parts().internalDrag = true;
  EXPECT_EQ(Over(On(L"A_")), static_cast<DWORD>(DROPEFFECT_COPY));
}

TEST_F(TreeDrop, OffersNothingThatTheSourceDoesNotAllow) {
  StartWithCategories();
  Offer({L"C:\\a.txt"});
  EXPECT_EQ(Enter(On(L"A_"), DROPEFFECT_MOVE), static_cast<DWORD>(DROPEFFECT_NONE));
}

TEST_F(TreeDrop, ThreeFilesOntoACategoryWithoutItemsGetTheNumbers1To3AndOneTime) {
  StartWithCategories();
  world.localTime = [this] {
    ++world.now.wSecond;  // the clock goes on from file to file
    return world.now;
  };
  Offer({dir.WriteFile(L"f\\one.txt"), dir.WriteFile(L"f\\two.tar.gz"), dir.WriteFile(L"f\\图.txt")});

  DropOn(L"B_");

  EXPECT_EQ(Items(), (Texts{L"B_|1#B_|one.txt", L"B_|2#B_|two.tar.gz", L"B_|3#B_|图.txt"}));
  EXPECT_EQ(Query(L"SELECT DefineName, LocalFile, Comment FROM FTable WHERE FileIndex=\"2#B_\"", 3),
            Texts{L"two.tar|" + dir.Path(L"f\\two.tar.gz") + L"|"});
  const Texts times = Query(L"SELECT InsertTime FROM FTable", 1);
  EXPECT_EQ(std::vector(times.size(), times.at(0)), times);
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  EXPECT_TRUE(IsOpen(L"B_"));
}

TEST_F(TreeDrop, FilesContinueTheNumbersOfTheCategory) {
  StartWithCategories();
  AddItem(L"A_", 40000, {L"old"});
  Offer({dir.WriteFile(L"f\\new.txt")});
  DropOn(L"A_");
  EXPECT_EQ(Items().back(), L"A_|40001#A_|new.txt");
}

TEST_F(TreeDrop, TheSameFileTwiceBecomesTwoItems) {
  StartWithCategories();
  const std::wstring path = dir.WriteFile(L"f\\a.txt");
  Offer({path, path});
  DropOn(L"A_");
  EXPECT_EQ(Items(), (Texts{L"A_|1#A_|a.txt", L"A_|2#A_|a.txt"}));
}

TEST_F(TreeDrop, AFolderAddsNothingButAReadOnlyOneIsTakenLikeAFile) {
  StartWithCategories();
  dir.WriteFile(L"f\\plain\\x.txt");
  dir.WriteFile(L"f\\locked\\x.txt");
  const std::wstring plain = dir.Path(L"f\\plain"), locked = dir.Path(L"f\\locked");
  // Read-only alone does not stay on a folder for every user of a test machine.
  SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  const win::Finally unlock([&] { SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_NORMAL); });
  Offer({plain, locked});
  DropOn(L"A_");
  EXPECT_EQ(Items(), Texts{L"A_|1#A_|locked"});
}

TEST_F(TreeDrop, DoesNotFillTheListAnew) {
  StartWithCategories();
  SelectCategory(*Tree().Find(L"A_"));
  Offer({dir.WriteFile(L"f\\a.txt")});
  DropOn(L"A_");
  EXPECT_EQ(List().Count(), 0u);
  SelectCategory(*Tree().Find(L"A_"));
  EXPECT_EQ(List().Count(), 1u);
}

TEST_F(TreeDrop, FilesOntoEmptySpaceDoNothing) {
  StartWithCategories();
  Offer({dir.WriteFile(L"f\\a.txt")});
  Enter(EmptyTreeSpace());
  EXPECT_EQ(Drop(EmptyTreeSpace()), static_cast<DWORD>(DROPEFFECT_NONE));
  EXPECT_TRUE(Items().empty());
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
}

TEST_F(TreeDrop, WorksWhileTheDraggingOfCategoriesIsNotEnabled) {
  StartWithCategories();
  ASSERT_FALSE(Menus().IsChecked(L"meu_aa"));
  Offer({dir.WriteFile(L"f\\a.txt")});
  DropOn(L"A_");
  EXPECT_EQ(Items().size(), 1u);
}

TEST_F(TreeDrop, AFailureShowsItsBoxAndKeepsWhatWasAdded) {
  StartWithCategories();
  Offer({dir.WriteFile(L"f\\a.txt"), L"C:\\quo\"te.txt", dir.WriteFile(L"f\\b.txt")});
  world.answers = {IDOK};
  Enter(On(L"A_"));
  EXPECT_EQ(Drop(On(L"A_")), static_cast<DWORD>(DROPEFFECT_NONE));
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"TreeView1_OLEDragDrop Error:");
  EXPECT_EQ(Items(), Texts{L"A_|1#A_|a.txt"});
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  EXPECT_FALSE(Parts().connection.IsOpen());
}

class ItemsOntoTree : public TreeDrop {
 protected:
  // Three items of Alpha in the list, the first and the last selected.
  void StartWithItems() {
    StartWithCategories();
    for (int i = 1; i <= 3; ++i) AddItem(L"A_", i, {L"item", L"f" + std::to_wstring(i)});
    SelectCategory(*Tree().Find(L"A_"));
    List().Select(0, true);
    List().Select(2, true);
    Offer({});  // the files themselves may be gone
    Parts().internalDrag = Parts().listDrag = true;
  }
};

TEST_F(ItemsOntoTree, MoveToTheCategoryAndKeepTheirFileIndex) {
  StartWithItems();

  DropOn(L"B_");

  EXPECT_EQ(Items(), (Texts{L"B_|1#A_|f1", L"A_|2#A_|f2", L"B_|3#A_|f3"}));
  EXPECT_EQ(Column(2), Texts{L"f2"});
  EXPECT_EQ(Panel(3), L"1 Objects");
  SelectCategory(*Tree().Find(L"B_"));
  EXPECT_EQ(Column(2), (Texts{L"f1", L"f3"}));
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(ItemsOntoTree, OpenTheCategoryAndEndTheInternalDrag) {
  StartWithItems();
  DropOn(L"B_");
  EXPECT_TRUE(IsOpen(L"B_"));
  EXPECT_EQ(Tree().DropHighlight(), nullptr);
  EXPECT_FALSE(Parts().internalDrag);
}

TEST_F(ItemsOntoTree, OntoTheirOwnCategoryStayAsTheyAre) {
  StartWithItems();
  DropOn(L"A_");
  EXPECT_EQ(Items(), (Texts{L"A_|1#A_|f1", L"A_|2#A_|f2", L"A_|3#A_|f3"}));
  EXPECT_EQ(List().Count(), 3u);
}

TEST_F(ItemsOntoTree, OntoEmptySpaceStay) {
  StartWithItems();
  Enter(EmptyTreeSpace());
  Drop(EmptyTreeSpace());
  EXPECT_EQ(List().Count(), 3u);
  EXPECT_EQ(Items().at(0), L"A_|1#A_|f1");
}

TEST_F(ItemsOntoTree, AreMovedEvenWhenTheirFilesAreOffered) {
  StartWithItems();
  Offer({dir.WriteFile(L"f\\f1")});
  DropOn(L"B_");
  EXPECT_EQ(Items(), (Texts{L"B_|1#A_|f1", L"A_|2#A_|f2", L"B_|3#A_|f3"}));
}

}  // namespace
}  // namespace kestrelon::test
