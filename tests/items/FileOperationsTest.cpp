// Showing in the file manager and copying the files behind items.

#include "items/FileOperations.h"
#include "tests/items/FileCommandFixture.h"

namespace kestrelon::test {
namespace {

// Showing.
class OpenInExplore : public FileCommand {};

TEST_F(OpenInExplore, StartsTheFileManagerWithTheSelectedRowsPath) {
  StartWith({L"C:\\docs\\a.txt", L"C:\\docs\\b c.txt"});
  SelectRows({1});
  world.startResults = {true};

  Command(L"meu_destinationdirectory");

  ASSERT_EQ(world.starts.size(), 1u);
  EXPECT_EQ(world.starts[0].commandLine, L"explorer.exe /n,/select ,C:\\docs\\b c.txt");
  EXPECT_EQ(world.starts[0].show, 4);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(OpenInExplore, SaysThatAPathWhichNamesNoFileCannotBeOpened) {
  for (const wchar_t* path : {L"a.txt", L"C:a.txt", L"\\a.txt", L"", L"C:\\*"}) {
    End();
    world.boxes.clear();
    StartWith({path});
    world.answers = {IDOK};
    Command(L"meu_destinationdirectory");
    ExpectOneBox(L"Can not open File!");
  }
  EXPECT_TRUE(world.starts.empty());
}

TEST_F(OpenInExplore, GivesTheFileManagerBackslashes) {
  StartWith({L"C:/docs/a.txt"});
  world.startResults = {true};
  Command(L"meu_destinationdirectory");
  EXPECT_EQ(world.starts.at(0).commandLine, L"explorer.exe /n,/select ,C:\\docs\\a.txt");
}

TEST_F(OpenInExplore, SaysThatAPathIsTooLong) {
  StartWith({L"C:\\" + std::wstring(130, L'a') + L"\\" + std::wstring(126, L'a')});
  world.answers = {IDOK};
  Command(L"meu_destinationdirectory");
  ExpectOneBox(L"The path is longer than 259 characters; left out: 1");
}

TEST_F(OpenInExplore, DoesNothingWithoutASelectedRow) {
  StartWith({L"C:\\docs\\a.txt"});
  SelectRows({});
  items::meu_destinationdirectory_Click(Parts());
  EXPECT_TRUE(world.starts.empty());
}

// Copying.
class SendTo : public FileCommand {};

TEST_F(SendTo, HandsTheSelectedFilesToTheShellInListOrder) {
  const std::wstring target = Folder(L"target");
  StartWith({L"C:\\one.txt", L"C:\\two.txt", L"C:\\three.txt"});
  SelectRows({0, 2});
  world.folders = {target};
  world.shellResults = {true, true};
  world.answers = {IDOK};

  Command(L"meu_Copyto");

  EXPECT_EQ(SourcesGivenToTheShell(), (Texts{L"C:\\one.txt", L"C:\\three.txt"}));
  for (const FakeWorld::ShellOperation& operation : world.shellOperations) {
    EXPECT_EQ(operation.function, 2u);
    EXPECT_EQ(operation.to, target + L"\\");
    EXPECT_EQ(operation.flags, 0x610);
  }
  ExpectOneBox(L"Operation Finished!");
}

TEST_F(SendTo, CopiesTheFilesAndChangesNoItem) {
  const Texts paths = {dir.WriteFile(L"a.txt", "a"), dir.WriteFile(L"it's.txt", "apostrophe"),
                       dir.WriteFile(L"\x6587\x4EF6.txt", "file"),
                       dir.WriteFile(L"\U0001F426 b.txt", "bird")};
  StartWith(paths);
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};

  Command(L"meu_Copyto");

  EXPECT_EQ(Bytes(L"target\\a.txt"), "a");
  EXPECT_EQ(Bytes(L"target\\it's.txt"), "apostrophe");
  EXPECT_EQ(Bytes(L"target\\\x6587\x4EF6.txt"), "file");
  EXPECT_EQ(Bytes(L"target\\\U0001F426 b.txt"), "bird");
  EXPECT_EQ(Bytes(L"a.txt"), "a");
  EXPECT_EQ(TablePaths(), paths);
  EXPECT_EQ(Column(3), paths);
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(SendTo, ReplacesAFileOfTheSameNameWithoutAQuestion) {
  StartWith({dir.WriteFile(L"a.txt", "new")});
  dir.WriteFile(L"target\\a.txt", "old");
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};

  Command(L"meu_Copyto");

  EXPECT_EQ(Bytes(L"target\\a.txt"), "new");
  ExpectOneBox(L"Operation Finished!");
}

TEST_F(SendTo, CarriesOnAfterAFileThatCannotBeCopied) {
  StartWith({dir.Path(L"gone.txt"), dir.WriteFile(L"b.txt", "b")});
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};

  Command(L"meu_Copyto");

  EXPECT_FALSE(Exists(L"target\\gone.txt"));
  EXPECT_EQ(Bytes(L"target\\b.txt"), "b");
  ExpectOneBox(L"Operation Finished!");
}

TEST_F(SendTo, SkipsAFileWhoseServerDoesNotAnswerAndCarriesOn) {
  const std::wstring b = dir.WriteFile(L"b.txt", "b");
  StartWith({L"\\\\server\\share\\a.txt", b});
  UseTheRealShell();
  world.hostResults = {false};
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};

  Command(L"meu_Copyto");

  EXPECT_EQ(world.hostQuestions, Texts{L"server"});
  EXPECT_EQ(SourcesGivenToTheShell(), Texts{b});
  EXPECT_EQ(Bytes(L"target\\b.txt"), "b");
  ExpectOneBox(L"Operation Finished!");
}

TEST_F(SendTo, EndsWithoutAFolder) {
  StartWith({dir.WriteFile(L"a.txt")});
  world.folders = {std::nullopt};
  Command(L"meu_Copyto");
  EXPECT_EQ(world.folderQuestions, 1);
  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(SendTo, SaysSoWhenTheFolderCannotBeWrittenTo) {
  StartWith({dir.WriteFile(L"a.txt")});
  world.folders = {dir.Path(L"no such folder")};
  world.answers = {IDOK};
  Command(L"meu_Copyto");
  EXPECT_TRUE(world.shellOperations.empty());
  ExpectOneBox(L"Can not write to this folder!");
}

TEST_F(SendTo, LeavesNoProbeInTheFolder) {
  StartWith({dir.WriteFile(L"a.txt")});
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};
  Command(L"meu_Copyto");
  Texts names;
  for (const auto& entry : std::filesystem::directory_iterator(dir.Path(L"target"))) {
    names.push_back(entry.path().filename().wstring());
  }
  EXPECT_EQ(names, Texts{L"a.txt"});
}

TEST_F(SendTo, AsksForNoFolderWithoutASelectedRow) {
  StartWith({dir.WriteFile(L"a.txt")});
  SelectRows({});
  items::meu_Copyto_Click(Parts());
  items::meu_Moveto_Click(Parts());
  EXPECT_EQ(world.folderQuestions, 0);
}

TEST_F(SendTo, SaysWhatItCopiesAndThenTheCategorysNameAgain) {
  StartWith({L"C:\\one.txt", L"C:\\two.txt"});
  SelectCategory(AddCategory(L"B_", L"Beta", Tree().Find(L"A_")));
  ASSERT_EQ(Panel(1), L"Category : Alpha\\Beta");
  items::ShowData(Parts(), L"A_");
  List().SelectAll();
  Texts steps;
  world.shellFileOperation = [&](HWND, UINT, const std::wstring&, const std::wstring&, WORD) {
    steps.push_back(Panel(1));
    return true;
  };
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};

  items::meu_Copyto_Click(Parts());

  EXPECT_EQ(steps, (Texts{L"Copying : C:\\one.txt", L"Copying : C:\\two.txt"}));
  EXPECT_EQ(Panel(1), L"Category : Beta");
  EXPECT_EQ(Panel(2), L"B_");
}

TEST_F(SendTo, HasTheCommandsOffWhileItWorks) {
  StartWith({L"C:\\one.txt"});
  bool listEnabled = true, treeEnabled = true, menuEnabled = true;
  world.shellFileOperation = [&](HWND, UINT, const std::wstring&, const std::wstring&, WORD) {
    listEnabled = IsWindowEnabled(List().Handle());
    treeEnabled = IsWindowEnabled(Tree().Handle());
    menuEnabled = Menus().IsEnabled(L"meu_List");
    return true;
  };
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};

  Command(L"meu_Copyto");

  EXPECT_FALSE(listEnabled);
  EXPECT_FALSE(treeEnabled);
  EXPECT_FALSE(menuEnabled);
  EXPECT_TRUE(IsWindowEnabled(List().Handle()));
  EXPECT_TRUE(Menus().IsEnabled(L"meu_List"));
  EXPECT_EQ(GetFocus(), List().Handle());
}

TEST_F(SendTo, YieldsToTheMessageLoopAfterEachRow) {
  StartWith({L"C:\\one.txt", L"\\\\server\\two.txt", L"C:\\three.txt"});
  world.hostResults = {false};
  Texts waiting;
  world.shellFileOperation = [&](HWND, UINT, const std::wstring& from, const std::wstring&, WORD) {
    MSG message;
    waiting.push_back(from + (PeekMessageW(&message, form->Handle(), WM_APP + 50, WM_APP + 50, PM_NOREMOVE)
                                  ? L" waits"
                                  : L""));
    PostMessageW(form->Handle(), WM_APP + 50, 0, 0);
    return true;
  };
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};
  Command(L"meu_Copyto");
  EXPECT_EQ(waiting, (Texts{L"C:\\one.txt", L"C:\\three.txt"}));
}

TEST_F(SendTo, StopsAfterThePresentFileWhenTheWindowIsClosed) {
  StartWith({L"C:\\one.txt", L"C:\\two.txt"});
  program.databaseSaved = false;
  int copied = 0;
  world.shellFileOperation = [&](HWND, UINT, const std::wstring&, const std::wstring&, WORD) {
    ++copied;
    PostMessageW(form->Handle(), WM_CLOSE, 0, 0);
    return true;
  };
  world.folders = {Folder(L"target")};
  world.answers = {IDCANCEL};

  Command(L"meu_Copyto");

  EXPECT_EQ(copied, 1);
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Program will be exit, Save Changes ? ");
  EXPECT_EQ(Panel(1), L"Category : Alpha");
}

// What they mean depends on where the program stands.
TEST_F(SendTo, HandsNoPathToTheShellThatIsNotAbsolute) {
  StartWith({L"foo", L"C:foo", L"\\foo", L"/foo", L"dir\\foo", L"..\\foo", L"\\\\.\\C:\\foo", L"C:\\"});
  world.folders = {Folder(L"target"), Folder(L"target")};
  world.answers = {IDOK, IDYES, IDYES};
  Command(L"meu_Copyto");
  Command(L"meu_Moveto");
  Command(L"meu_Delete");
  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_EQ(TablePaths(), Texts{}) << "the items go as they are asked to";
}

TEST_F(SendTo, HandsPathsToTheShellInTheFormThatItTakes) {
  StartWith({L"C:/docs/one.txt", L"\\\\?\\C:\\docs\\two.txt", L"//server/share/three.txt",
             L"\\\\?\\UNC\\server\\share\\four.txt"});
  world.folders = {Folder(L"target")};
  world.hostResults = {true, true};
  world.shellResults = {true, true, true, true};
  world.answers = {IDOK};
  Command(L"meu_Copyto");
  EXPECT_EQ(SourcesGivenToTheShell(),
            (Texts{L"C:\\docs\\one.txt", L"C:\\docs\\two.txt", L"\\\\server\\share\\three.txt",
                   L"\\\\server\\share\\four.txt"}));
  EXPECT_EQ(world.hostQuestions, (Texts{L"server", L"server"}));
}

TEST_F(SendTo, SaysOnceThatPathsAreTooLongForTheShell) {
  const std::wstring longest = L"C:\\" + std::wstring(200, L'd') + L"\\" + std::wstring(55, L'f');
  ASSERT_EQ(longest.size(), 259u);
  const std::wstring target = Folder(L"t");
  StartWith({longest, longest + L"x", L"C:\\" + std::wstring(250, L'n'), longest + L"y"});
  world.folders = {target};
  world.shellResults = {true};
  world.answers = {IDOK, IDOK};

  Command(L"meu_Copyto");

  EXPECT_EQ(SourcesGivenToTheShell(), Texts{longest}) << "nor one whose copy would have too long a path";
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[0].text, L"The path is longer than 259 characters; left out: 3");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
  EXPECT_EQ(world.boxes[1].text, L"Operation Finished!");
}

TEST_F(SendTo, HandsNoPathWithWildcardsToTheShell) {
  StartWith({L"C:\\*.txt", L"C:\\?.txt", L""});
  world.folders = {Folder(L"target"), Folder(L"target")};
  world.answers = {IDOK, IDYES, IDYES};
  Command(L"meu_Copyto");
  Command(L"meu_Moveto");
  Command(L"meu_Delete");
  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_EQ(TablePaths(), Texts{});
}

// The toolbar's buttons for these commands, from either pane.
TEST_F(FileCommand, IsStartedByItsToolbarButton) {
  StartWith({L"C:\\1"});
  for (const HWND pane : {Tree().Handle(), List().Handle()}) {
    SetFocus(pane);
    world.startResults = {true};
    form->Toolbar1_ButtonClick(7);
    world.folders = {std::nullopt};
    form->Toolbar1_ButtonClick(9);
  }
  EXPECT_EQ(world.starts.size(), 2u);
  EXPECT_EQ(world.folderQuestions, 2);
  world.answers = {IDNO};
  form->Toolbar1_ButtonClick(3);  // the list is the active pane
  EXPECT_EQ(world.boxes.size(), 1u);
}

}  // namespace
}  // namespace kestrelon::test
