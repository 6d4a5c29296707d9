#include <algorithm>
#include <stdexcept>

#include "store/Store.h"
#include "tests/support/FolderLink.h"
#include "tests/support/MainFormFixture.h"
#include "tree/DirectoryImport.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

TEST(LastPathPart, IsWhatStandsBehindTheLastBackslash) {
  EXPECT_EQ(tree::LastPathPart(L"C:\\papers\\2026"), L"2026");
  EXPECT_EQ(tree::LastPathPart(L"papers"), L"papers");
  EXPECT_EQ(tree::LastPathPart(L"C:\\papers\\"), L"");
  EXPECT_EQ(tree::LastPathPart(L""), L"");
}

constexpr const wchar_t* kMenus[] = {L"meu_file", L"meu_Category", L"meu_List", L"meu_misc", L"meu_help"};

class AddDirectory : public MainFormFixture {
 protected:
  // The command, with this folder as the user's choice; OK to the box that follows.
  void Import(const std::wstring& folder) {
    world.folders.push_back(folder);
    world.answers.push_back(IDOK);
    Command(L"meu_AddDirectory");
  }
  // Calls `look` whenever the import asks for the time: for each key, and once for the files of the chosen
  // folder and for those of the sub-folders of each folder.
  void OnEveryStep(std::function<void()> look) {
    world.localTime = [this, look = std::move(look)] {
      look();
      return world.now;
    };
  }
  Texts Items(const std::wstring& column) { return Query(L"SELECT " + column + L" FROM FTable", 1); }
  Texts CategoryNames() {
    Texts names;
    for (std::size_t i = 1; i <= Tree().Count(); ++i) names.push_back(Tree().At(i).Text());
    return names;
  }
  std::wstring KeyOf(const std::wstring& name) {
    for (std::size_t i = 1; i <= Tree().Count(); ++i) {
      if (Tree().At(i).Text() == name) return Tree().At(i).Key();
    }
    return L"no category of this name";
  }
  bool AllEnabled() {
    bool all = true;
    for (const wchar_t* menu : kMenus) all = all && Menus().IsEnabled(menu);
    for (const HWND control : Panes()) all = all && IsWindowEnabled(control);
    return all;
  }
  bool AllDisabled() {
    bool any = false;
    for (const wchar_t* menu : kMenus) any = any || Menus().IsEnabled(menu);
    for (const HWND control : Panes()) any = any || IsWindowEnabled(control);
    return !any;
  }
  std::vector<HWND> Panes() { return {Tree().Handle(), List().Handle(), Parts().Toolbar1.Handle()}; }
  void ExpectNothingLeftOn() {
    EXPECT_TRUE(AllEnabled());
    EXPECT_FALSE(Parts().connection.IsOpen());
    EXPECT_FALSE(Parts().busy);
  }
  // In the folder, with a name that makes a path of `units` UTF-16 units; "\\?\" lets it be longer than
  // usual.
  std::wstring MakeFile(const std::wstring& folder, std::size_t units, wchar_t letter = L'n') {
    const std::wstring path = folder + std::wstring(units - folder.size(), letter);
    const HANDLE file =
        CreateFileW((L"\\\\?\\" + path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    EXPECT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    return path;
  }
};

TEST_F(AddDirectory, CancelledChangesNothing) {
  Start();
  SelectCategory(AddCategory(L"A_", L"A"));
  world.folders = {std::nullopt};

  Command(L"meu_AddDirectory");

  EXPECT_EQ(world.folderQuestions, 1);
  EXPECT_EQ(ShownTree(), L"A");
  EXPECT_EQ(Items(L"FileIndex"), Texts{});
  EXPECT_EQ(Panel(1), L"Category : A");
  EXPECT_EQ(Panel(2), L"A_");
  EXPECT_TRUE(world.boxes.empty());
  ExpectNothingLeftOn();
}

TEST_F(AddDirectory, TakesAnEmptyPathForCancel) {
  Start();
  world.folders = {L""};
  Command(L"meu_AddDirectory");
  EXPECT_EQ(ShownTree(), L"");
}

TEST_F(AddDirectory, ClearsTheSavedFlagAlsoAfterCancel) {
  Start();
  program.databaseSaved = true;
  world.folders = {std::nullopt};
  Command(L"meu_AddDirectory");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(AddDirectory, MakesATopLevelCategoryInAnEmptyTree) {
  Start();
  dir.WriteFile(L"papers\\a.txt");

  Import(dir.Path(L"papers"));

  EXPECT_EQ(ShownTree(), L"papers");
  EXPECT_EQ(Tree().At(1).Parent(), nullptr);
  EXPECT_EQ(Tree().At(1).Key(), L"S000111151320050002_");  // from the draws 1 and 2
  EXPECT_EQ(Tree().At(1).Image(), 1);
  EXPECT_EQ(Tree().At(1).SelectedImage(), 2);
}

TEST_F(AddDirectory, MakesATopLevelCategoryWhenNoneIsCurrent) {
  Start();
  AddCategory(L"A_", L"A");
  dir.WriteFile(L"papers\\a.txt");
  Import(dir.Path(L"papers"));
  EXPECT_EQ(ShownTree(), L"A,papers");
}

TEST_F(AddDirectory, MakesATopLevelCategoryWhenTheCurrentOneIsGone) {
  Start();
  AddCategory(L"A_", L"A");
  win::SetCurrentCategory(Parts(), L"B", L"B_");
  dir.WriteFile(L"papers\\a.txt");

  Import(dir.Path(L"papers"));

  EXPECT_EQ(ShownTree(), L"A,papers");
  EXPECT_EQ(Panel(1), L"Category : ");
}

TEST_F(AddDirectory, MakesTheLastChildOfTheCurrentCategory) {
  Start();
  win::TreeNode& a = AddCategory(L"A_", L"A");
  AddCategory(L"B_", L"B");
  AddCategory(L"c_", L"c", &a);
  SelectCategory(a);
  dir.WriteFile(L"papers\\a.txt");

  Import(dir.Path(L"papers"));

  EXPECT_EQ(ShownTree(), L"A(c,papers),B");
  const RECT text = Tree().TextRectangle(*a.LastChild());
  EXPECT_GT(text.right, text.left) << "in view, for which its parent was opened";
}

TEST_F(AddDirectory, LeavesTheCurrentCategoryCurrentAndShowsItsPath) {
  Start();
  win::TreeNode& a = AddCategory(L"A_", L"A");
  SelectCategory(AddCategory(L"b_", L"b", &a));
  dir.WriteFile(L"papers\\sub\\a.txt");

  Import(dir.Path(L"papers"));

  EXPECT_EQ(Panel(1), L"Category : A\\b");
  EXPECT_EQ(Panel(2), L"b_");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(AddDirectory, GivesARootACategoryWithAnEmptyName) {
  Start();
  // A drive that is not there: the name comes from the path.
  std::wstring root = L"A:\\";
  while ((GetLogicalDrives() >> (root[0] - L'A') & 1) != 0) ++root[0];

  Import(root);

  EXPECT_EQ(CategoryNames(), Texts{L""});
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Operation Finished!\n\nCould not be read and was left out: 1\n" + root);
}

TEST_F(AddDirectory, DoesNotDoubleTheBackslashAtTheEndOfARoot) {
  Start();
  dir.WriteFile(L"papers\\a.txt");
  dir.WriteFile(L"papers\\sub\\b.txt");

  Import(dir.Path(L"papers\\"));

  EXPECT_EQ(CategoryNames(), (Texts{L"", L"sub"}));
  EXPECT_EQ(Items(L"LocalFile"), (Texts{dir.Path(L"papers\\a.txt"), dir.Path(L"papers\\sub\\b.txt")}));
}

TEST_F(AddDirectory, CutsTheChosenPathAtTheFirstNul) {
  Start();
  dir.WriteFile(L"papers\\a.txt");
  Import(dir.Path(L"papers") + std::wstring(L"\0more", 5));
  EXPECT_EQ(ShownTree(), L"papers");
  EXPECT_EQ(Items(L"LocalFile"), Texts{dir.Path(L"papers\\a.txt")});
}

TEST_F(AddDirectory, MakesOneEmptyCategoryOfAnEmptyFolder) {
  Start();
  std::filesystem::create_directories(dir.Path(L"nothing"));

  Import(dir.Path(L"nothing"));

  EXPECT_EQ(ShownTree(), L"nothing");
  EXPECT_EQ(Items(L"FileIndex"), Texts{});
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Operation Finished!");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
  EXPECT_EQ(world.boxes[0].owner, form->Handle());
}

TEST_F(AddDirectory, MakesAllCategoriesOfAFolderBeforeThoseBelowThem) {
  Start();
  std::filesystem::create_directories(dir.Path(L"A\\B\\D"));
  std::filesystem::create_directories(dir.Path(L"A\\C"));

  Import(dir.Path(L"A"));

  EXPECT_EQ(CategoryNames(), (Texts{L"A", L"B", L"C", L"D"}));
  EXPECT_EQ(ShownTree(), L"A(B(D),C)");
}

TEST_F(AddDirectory, FinishesOneBranchBeforeTheNext) {
  Start();
  std::filesystem::create_directories(dir.Path(L"A\\B\\b1\\b11"));
  std::filesystem::create_directories(dir.Path(L"A\\C\\c1"));
  Import(dir.Path(L"A"));
  EXPECT_EQ(CategoryNames(), (Texts{L"A", L"B", L"C", L"b1", L"b11", L"c1"}));
}

TEST_F(AddDirectory, GivesFoldersOfTheSameNameCategoriesOfTheirOwn) {
  Start();
  dir.WriteFile(L"A\\A\\A\\a.txt");
  Import(dir.Path(L"A"));
  EXPECT_EQ(ShownTree(), L"A(A(A))");
  EXPECT_EQ(Items(L"TreeviewNode"), Texts{Tree().At(3).Key()});
}

TEST_F(AddDirectory, NumbersTheItemsOfEveryFolderFrom1) {
  Start();
  for (const wchar_t* file : {L"A\\1", L"A\\2", L"A\\B\\3", L"A\\B\\4", L"A\\C\\5"}) dir.WriteFile(file);

  Import(dir.Path(L"A"));

  EXPECT_EQ(Query(L"SELECT FileIndex, Filename FROM FTable", 2),
            (Texts{L"1#" + KeyOf(L"A") + L"|1", L"2#" + KeyOf(L"A") + L"|2", L"1#" + KeyOf(L"B") + L"|3",
                   L"2#" + KeyOf(L"B") + L"|4", L"1#" + KeyOf(L"C") + L"|5"}));
}

TEST_F(AddDirectory, FillsTheFieldsOfAnItem) {
  Start();
  const std::wstring path = dir.WriteFile(L"A\\archive.tar.gz");

  Import(dir.Path(L"A"));

  const std::wstring key = L"S000111151320050002_";
  EXPECT_EQ(Query(L"SELECT * FROM FTable", 7),
            Texts{key + L"|1#" + key + L"|archive.tar|archive.tar.gz|" + path + L"|11/15/2026 1:20:05 PM|"});
}

TEST_F(AddDirectory, FillsTheFieldsOfAnItemInASubFolder) {
  Start();
  const std::wstring path = dir.WriteFile(L"A\\B\\.profile");

  Import(dir.Path(L"A"));

  const std::wstring key = KeyOf(L"B");
  EXPECT_EQ(Query(L"SELECT * FROM FTable", 7),
            Texts{key + L"|1#" + key + L"||.profile|" + path + L"|11/15/2026 1:20:05 PM|"});
}

TEST_F(AddDirectory, TakesTheTimeOnceForTheSubFoldersOfAFolder) {
  Start();
  for (const wchar_t* file : {L"A\\1", L"A\\2", L"A\\B\\3", L"A\\C\\4", L"A\\C\\D\\5"}) dir.WriteFile(file);
  OnEveryStep([&] { world.now.wSecond = static_cast<WORD>(world.now.wSecond + 1); });

  Import(dir.Path(L"A"));

  // The clock stood at 5; the keys of A, B, C and D take a second each.
  EXPECT_EQ(Query(L"SELECT Filename, InsertTime FROM FTable", 2),
            (Texts{L"1|11/15/2026 1:20:07 PM", L"2|11/15/2026 1:20:07 PM", L"3|11/15/2026 1:20:08 PM",
                   L"4|11/15/2026 1:20:08 PM", L"5|11/15/2026 1:20:11 PM"}));
}

TEST_F(AddDirectory, TakesHiddenAndSystemFilesToo) {
  Start();
  const std::wstring path = dir.WriteFile(L"A\\.hidden");
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
  Import(dir.Path(L"A"));
  EXPECT_EQ(Items(L"Filename"), Texts{L".hidden"});
}

TEST_F(AddDirectory, TakesFilesAndFoldersInTheOrderOfTheFileManager) {
  Start();
  for (const wchar_t* file : {L"A\\file10", L"A\\file2", L"A\\File1"}) dir.WriteFile(file);
  for (const wchar_t* folder : {L"A\\part 10", L"A\\Part 9"})
    std::filesystem::create_directories(dir.Path(folder));

  Import(dir.Path(L"A"));

  EXPECT_EQ(Items(L"Filename"), (Texts{L"File1", L"file2", L"file10"}));
  EXPECT_EQ(ShownTree(), L"A(Part 9,part 10)");
}

TEST_F(AddDirectory, KeepsNamesOutsideTheLocalAlphabet) {
  Start();
  dir.WriteFile(L"\u6587\u4ef6\\\u00e9t\u00e9\\\u6587.txt");
  Import(dir.Path(L"\u6587\u4ef6"));
  EXPECT_EQ(ShownTree(), L"\u6587\u4ef6(\u00e9t\u00e9)");
  EXPECT_EQ(Items(L"DefineName"), Texts{L"\u6587"});
}

TEST_F(AddDirectory, DoesNotFollowALinkInACircle) {
  Start();
  dir.WriteFile(L"A\\B\\own.txt");
  const FolderLink link(dir.Path(L"A\\B\\back"), dir.Path(L"A"));
  if (!link.Made()) GTEST_SKIP() << "links cannot be made here";

  Import(dir.Path(L"A"));

  EXPECT_EQ(ShownTree(), L"A(B)");
  EXPECT_EQ(Items(L"Filename"), Texts{L"own.txt"});
  EXPECT_EQ(world.boxes.at(0).text, L"Operation Finished!");
}

TEST_F(AddDirectory, TellsOfAPathThatOtherProgramsCannotOpen) {
  Start();
  std::filesystem::create_directories(dir.Path(L"A\\B"));
  const std::wstring fits = MakeFile(dir.Path(L"A\\B\\"), 259), tooLong = MakeFile(dir.Path(L"A\\B\\"), 260);

  Import(dir.Path(L"A"));

  EXPECT_EQ(Items(L"LocalFile"), Texts{fits});
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Operation Finished!\n\nCould not be read and was left out: 1\n" + tooLong);
}

TEST_F(AddDirectory, TellsOfAFolderThatVanished) {
  Start();
  for (const wchar_t* file : {L"A\\B\\1", L"A\\C\\2", L"A\\D\\3"}) dir.WriteFile(file);
  OnEveryStep([&] {
    if (Tree().Count() == 2) std::filesystem::remove_all(dir.Path(L"A\\C"));  // about to make C's category
  });

  Import(dir.Path(L"A"));

  EXPECT_EQ(Items(L"Filename"), (Texts{L"1", L"3"}));
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text,
            L"Operation Finished!\n\nCould not be read and was left out: 1\n" + dir.Path(L"A\\C"));
}

TEST_F(AddDirectory, NamesNoMoreThanTenOfWhatWasLeftOut) {
  Start();
  std::filesystem::create_directories(dir.Path(L"A"));
  std::wstring lines;
  for (wchar_t letter = L'a'; letter <= L'j'; ++letter)
    lines += L'\n' + MakeFile(dir.Path(L"A\\"), 260, letter);
  MakeFile(dir.Path(L"A\\"), 260, L'k');
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n13=Done.\r\n21=\"Left out: \"\r\n");

  Import(dir.Path(L"A"));

  EXPECT_EQ(world.boxes.at(0).text, L"Done.\n\nLeft out: 11" + lines + L"\n...");
}

TEST_F(AddDirectory, TellsOfTheEndInTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini", L"[messagebox]\r\n13=Done.\r\n");
  Start();
  dir.WriteFile(L"A\\a.txt");
  Import(dir.Path(L"A"));
  EXPECT_EQ(world.boxes.at(0).text, L"Done.");
}

TEST_F(AddDirectory, DisablesMenusPanesAndToolbarAsLongAsItRuns) {
  Start();
  dir.WriteFile(L"A\\B\\a.txt");
  int steps = 0;
  OnEveryStep([&] {
    ++steps;
    EXPECT_TRUE(AllDisabled());
  });

  Import(dir.Path(L"A"));

  EXPECT_EQ(steps, 4);
  ExpectNothingLeftOn();
}

TEST_F(AddDirectory, AsksForTheFolderWithEverythingDisabled) {
  Start();
  world.browseForFolder = [&](HWND owner) {
    EXPECT_EQ(owner, form->Handle());
    EXPECT_TRUE(AllDisabled());
    return std::nullopt;
  };
  Command(L"meu_AddDirectory");
  ExpectNothingLeftOn();
}

TEST_F(AddDirectory, RedrawsTheTreeOnceAtTheEnd) {
  Start();
  for (const wchar_t* folder : {L"A\\B", L"A\\C"}) std::filesystem::create_directories(dir.Path(folder));
  const MessageSpy redraw(Tree().Handle(), WM_SETREDRAW);
  OnEveryStep([&] {
    if (Tree().Count() > 1) {
      EXPECT_EQ(redraw.Count(), 1) << "off, and not on yet";
    }
  });

  Import(dir.Path(L"A"));

  EXPECT_EQ(redraw.Count(), 2);
}

TEST_F(AddDirectory, ShowsEachSubFolderInTheStatusBar) {
  Start();
  for (const wchar_t* folder : {L"A\\B\\D", L"A\\C"}) std::filesystem::create_directories(dir.Path(folder));
  Texts shown;
  OnEveryStep([&] {
    if (shown.empty() || shown.back() != Panel(1)) shown.push_back(Panel(1));
  });

  Import(dir.Path(L"A"));

  EXPECT_EQ(shown, (Texts{L"Category : ", L"Add Node -> " + dir.Path(L"A\\B"),
                          L"Add Node -> " + dir.Path(L"A\\C")}));
  EXPECT_EQ(Panel(1), L"Category : ");
}

TEST_F(AddDirectory, HandlesMessagesAfterEverySubFolder) {
  Start();
  for (const wchar_t* folder : {L"A\\B", L"A\\C"}) std::filesystem::create_directories(dir.Path(folder));
  const MessageSpy spy(form->Handle(), WM_APP + 77);
  std::vector<int> handled;
  OnEveryStep([&] {
    if (Tree().Count() == 0) PostMessageW(form->Handle(), WM_APP + 77, 0, 0);
    handled.push_back(spy.Count());
  });

  Import(dir.Path(L"A"));

  EXPECT_EQ(handled, (std::vector<int>{0, 0, 0, 0, 1})) << "at the key of C, the last step";
}

TEST_F(AddDirectory, StopsAfterTheFolderInWhichTheWindowWasClosed) {
  Start();
  for (const wchar_t* file : {L"A\\B\\1", L"A\\B\\2", L"A\\C\\3"}) dir.WriteFile(file);
  OnEveryStep([&] {
    if (Tree().Count() == 1) PostMessageW(form->Handle(), WM_CLOSE, 0, 0);
  });
  world.folders = {dir.Path(L"A")};
  world.answers = {IDCANCEL};  // to the question whether to save before leaving

  Command(L"meu_AddDirectory");

  EXPECT_EQ(ShownTree(), L"A(B)");
  EXPECT_EQ(Items(L"Filename"), (Texts{L"1", L"2"}));
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Program will be exit, Save Changes ? ");
  ExpectNothingLeftOn();
}

TEST_F(AddDirectory, DrawsAnotherKeyWhenTwoCoincide) {
  Start();
  for (const wchar_t* folder : {L"A\\B", L"A\\C"}) std::filesystem::create_directories(dir.Path(folder));
  draws = {1, 1, 1, 1, 2, 2, 1, 1, 2, 2, 3, 3};

  Import(dir.Path(L"A"));

  EXPECT_EQ(ShownTree(), L"A(B,C)");
  EXPECT_EQ(KeyOf(L"B"), L"S000211151320050002_");
  EXPECT_EQ(KeyOf(L"C"), L"S000311151320050003_");
  EXPECT_EQ(world.boxes.at(0).text, L"Operation Finished!");
}

// The items of a category that is gone may live on in another one.
TEST_F(AddDirectory, DrawsAnotherKeyWhenItemsElsewhereHaveItInTheirIndexes) {
  Start();
  for (const wchar_t* file : {L"A\\1", L"A\\B\\2"}) dir.WriteFile(file);
  for (const wchar_t* index : {L"2#S000111151320050001_", L"1#S000211151320050002_", L"no mark"})
    Execute(L"INSERT INTO FTable VALUES(\"old_\"," + store::Quoted(index) + L",\"\",\"\",\"\",\"\",'')");
  draws = {1, 1, 3, 3, 2, 2, 4, 4};

  Import(dir.Path(L"A"));

  EXPECT_EQ(ShownTree(), L"A(B)");
  EXPECT_EQ(KeyOf(L"A"), L"S000311151320050003_");
  EXPECT_EQ(KeyOf(L"B"), L"S000411151320050004_");
  Texts indexes = Items(L"FileIndex");
  std::sort(indexes.begin(), indexes.end());
  EXPECT_EQ(std::adjacent_find(indexes.begin(), indexes.end()), indexes.end()) << "each index once";
}

TEST_F(AddDirectory, GivesUpWhenNoOtherKeyIsEverDrawn) {
  Start();
  std::filesystem::create_directories(dir.Path(L"A\\B"));
  world.randomFraction = [] { return 0.5; };

  Import(dir.Path(L"A"));

  EXPECT_EQ(ShownTree(), L"A");
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"SSplitNode_Error");
  EXPECT_EQ(world.boxes[0].text, L"Unkonw Error:No key could be made for a category.");
}

TEST_F(AddDirectory, AddsNoCategoryWithHalfAKey) {
  Start();
  std::filesystem::create_directories(dir.Path(L"A"));
  world.randomFraction = []() -> double { throw std::runtime_error("no more chance"); };
  world.answers = {IDOK};

  Import(dir.Path(L"A"));

  EXPECT_EQ(ShownTree(), L"");
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[0].title, L"GetNextKey_Error");
  EXPECT_EQ(world.boxes[1].title, L"AddDirectory_Error");
  ExpectNothingLeftOn();
}

TEST_F(AddDirectory, ShowsAFailureInTheChosenFolderInItsOwnBox) {
  Start();
  for (const wchar_t* file : {L"A\\1", L"A\\B\\2"}) dir.WriteFile(file);
  OnEveryStep([&] {
    if (Tree().Count() == 1) Parts().connection.Ado().Close();
  });

  Import(dir.Path(L"A"));

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"AddDirectory_Error");
  EXPECT_EQ(world.boxes[0].text.substr(0, 13), L"Unkonw Error:");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  EXPECT_EQ(ShownTree(), L"A") << "what was added stays";
  EXPECT_EQ(Items(L"Filename"), Texts{});
  ExpectNothingLeftOn();
}

TEST_F(AddDirectory, EndsAtAFailureInASubFolderWithOneBoxAndKeepsWhatWasAdded) {
  Start();
  for (const wchar_t* file : {L"A\\1", L"A\\B\\2", L"A\\B\\D\\3", L"A\\B\\E\\4", L"A\\C\\5"})
    dir.WriteFile(file);
  const MessageSpy redraw(Tree().Handle(), WM_SETREDRAW);
  OnEveryStep([&] {
    if (Tree().Count() == 3) Parts().connection.Ado().Close();  // B and C are in, their sub-folders follow
  });

  Import(dir.Path(L"A"));

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"SSplitNode_Error");
  EXPECT_EQ(world.boxes[0].text.substr(0, 13), L"Unkonw Error:");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  EXPECT_EQ(ShownTree(), L"A(B(D),C)");
  EXPECT_EQ(Items(L"Filename"), (Texts{L"1", L"2", L"5"}));
  EXPECT_EQ(redraw.Count(), 2) << "off, and on again";
  EXPECT_EQ(Panel(1), L"Category : ");
  ExpectNothingLeftOn();
}

TEST_F(AddDirectory, MakesASecondBranchOfAFolderThatWasImportedBefore) {
  Start();
  for (const wchar_t* file : {L"A\\1", L"A\\B\\2"}) dir.WriteFile(file);

  Import(dir.Path(L"A"));
  Import(dir.Path(L"A"));

  EXPECT_EQ(ShownTree(), L"A(B),A(B)");
  EXPECT_EQ(Items(L"Filename"), (Texts{L"1", L"2", L"1", L"2"}));
  EXPECT_NE(Tree().At(1).Key(), Tree().At(3).Key());
}

TEST_F(AddDirectory, MakesCategoriesAndItemsThatAreThereAfterTheTreeIsSavedAndLoaded) {
  Start();
  for (const wchar_t* file : {L"A\\1", L"A\\B\\2", L"A\\B\\3"}) dir.WriteFile(file);
  Import(dir.Path(L"A"));
  const std::wstring key = KeyOf(L"B");

  store::SaveTree(Parts());
  store::LoadTree(Parts());

  EXPECT_EQ(ShownTree(), L"A(B)");
  ASSERT_NE(Tree().Find(key), nullptr);
  SelectCategory(*Tree().Find(key));
  EXPECT_EQ(Column(2), (Texts{L"2", L"3"}));
  EXPECT_EQ(Panel(3), L"2 Objects");
}

TEST_F(AddDirectory, OpensNoFile) {
  Start();
  const std::wstring path = dir.WriteFile(L"A\\locked.txt");
  const HANDLE locked = CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(locked, INVALID_HANDLE_VALUE);

  Import(dir.Path(L"A"));

  CloseHandle(locked);
  EXPECT_EQ(Items(L"Filename"), Texts{L"locked.txt"});
}

}  // namespace
}  // namespace kestrelon::test
