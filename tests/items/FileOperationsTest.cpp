// Showing in the file manager, copying and moving the files behind items.

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

// Moving.
class MoveTo : public FileCommand {
 protected:
  // Moving must leave row, table and saved-flag as they were.
  void ExpectUnchanged(const Texts& paths) {
    EXPECT_EQ(Column(3), paths);
    EXPECT_EQ(TablePaths(), paths);
    EXPECT_TRUE(program.databaseSaved);
    EXPECT_TRUE(world.boxes.empty());
  }
};

TEST_F(MoveTo, MovesTheFilesAndTheirRowsAndSaysNothing) {
  const std::wstring a = dir.WriteFile(L"a.txt", "a"), b = dir.WriteFile(L"b.txt", "b"),
                     c = dir.WriteFile(L"c.txt", "c");
  StartWith({a, b, c});
  SelectRows({0, 2});
  UseTheRealShell();
  world.folders = {Folder(L"target")};

  Command(L"meu_Moveto");

  const Texts paths = {dir.Path(L"target\\a.txt"), b, dir.Path(L"target\\c.txt")};
  EXPECT_EQ(Column(3), paths);
  EXPECT_EQ(TablePaths(), paths);
  EXPECT_EQ(Column(2), (Texts{L"a.txt", L"b.txt", L"c.txt"}));
  EXPECT_EQ(Bytes(L"target\\a.txt"), "a");
  EXPECT_EQ(Bytes(L"target\\c.txt"), "c");
  EXPECT_FALSE(Exists(L"a.txt"));
  EXPECT_TRUE(Exists(L"b.txt"));
  for (const FakeWorld::ShellOperation& operation : world.shellOperations) {
    EXPECT_EQ(operation.function, 1u);
    EXPECT_EQ(operation.to, dir.Path(L"target\\"));
    EXPECT_EQ(operation.flags, 0x450);
  }
  EXPECT_EQ(SourcesGivenToTheShell(), (Texts{a, c}));
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_EQ(Panel(1), L"Category : Alpha");
}

TEST_F(MoveTo, MovesFilesWithNamesOfEveryScript) {
  StartWith(
      {dir.WriteFile(L"it's.txt"), dir.WriteFile(L"\x6587\x4EF6.txt"), dir.WriteFile(L"\U0001F426.txt")});
  UseTheRealShell();
  world.folders = {Folder(L"ta'rget \x76EE\x6807")};
  Command(L"meu_Moveto");
  const std::wstring target = dir.Path(L"ta'rget \x76EE\x6807\\");
  const Texts paths = {target + L"it's.txt", target + L"\x6587\x4EF6.txt", target + L"\U0001F426.txt"};
  EXPECT_EQ(TablePaths(), paths);
  EXPECT_EQ(Column(3), paths);
  for (const std::wstring& path : paths) EXPECT_TRUE(std::filesystem::exists(path)) << Narrow(path);
}

TEST_F(MoveTo, SaysWhatItMoves) {
  const std::wstring a = dir.WriteFile(L"a.txt");
  StartWith({a});
  std::wstring step;
  world.shellFileOperation = [&](HWND, UINT, const std::wstring&, const std::wstring&, WORD) {
    step = Panel(1);
    return false;
  };
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  EXPECT_EQ(step, L"Moving : " + a);
}

TEST_F(MoveTo, LeavesAnItemAloneWhoseFileIsGone) {
  const Texts paths = {dir.Path(L"gone.txt"), dir.Path(L"no folder\\gone.txt")};
  StartWith(paths);
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  ExpectUnchanged(paths);
}

TEST_F(MoveTo, LeavesAnItemAloneWhoseFileIsInUse) {
  const std::wstring a = dir.WriteFile(L"a.txt", "a");
  StartWith({a});
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  const HANDLE inUse = CreateFileW(a.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(inUse, INVALID_HANDLE_VALUE);

  Command(L"meu_Moveto");
  CloseHandle(inUse);

  ExpectUnchanged({a});
  EXPECT_EQ(Bytes(L"a.txt"), "a");
}

TEST_F(MoveTo, LeavesAnItemAloneWhenTheShellGivesUp) {
  const std::wstring a = dir.WriteFile(L"a.txt");
  StartWith({a});
  world.shellResults = {false};
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  ExpectUnchanged({a});
}

TEST_F(MoveTo, LeavesAnItemAloneWhoseFileIsStillInItsPlace) {
  const std::wstring a = dir.WriteFile(L"a.txt");
  StartWith({a});
  world.shellResults = {true};  // but nothing was moved
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  ExpectUnchanged({a});
}

TEST_F(MoveTo, ReplacesAFileOfTheSameName) {
  StartWith({dir.WriteFile(L"a.txt", "new")});
  dir.WriteFile(L"target\\a.txt", "old");
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  EXPECT_EQ(Bytes(L"target\\a.txt"), "new");
  EXPECT_EQ(TablePaths(), Texts{dir.Path(L"target\\a.txt")});
}

TEST_F(MoveTo, SkipsAFileWhoseServerDoesNotAnswerAndCarriesOn) {
  StartWith({L"\\\\server\\share\\a.txt", dir.WriteFile(L"b.txt")});
  UseTheRealShell();
  world.hostResults = {false};
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  EXPECT_EQ(TablePaths(), (Texts{L"\\\\server\\share\\a.txt", dir.Path(L"target\\b.txt")}));
  EXPECT_TRUE(Exists(L"target\\b.txt"));
}

TEST_F(MoveTo, LeavesAFileAloneThatIsInTheFolderAlready) {
  const std::wstring a = dir.WriteFile(L"target\\a.txt", "a");
  StartWith({a});
  world.folders = {dir.Path(L"TARGET")};
  Command(L"meu_Moveto");
  EXPECT_TRUE(world.shellOperations.empty());
  ExpectUnchanged({a});
}

TEST_F(MoveTo, SaysSoWhenTheFolderCannotBeWrittenTo) {
  const std::wstring a = dir.WriteFile(L"a.txt");
  StartWith({a});
  world.folders = {dir.Path(L"no such folder")};
  world.answers = {IDOK};
  Command(L"meu_Moveto");
  ExpectOneBox(L"Can not write to this folder!");
  EXPECT_EQ(TablePaths(), Texts{a});
}

TEST_F(MoveTo, MovesAFileBackWhoseNewPathTheTableDoesNotTake) {
  const std::wstring a = dir.WriteFile(L"a.txt", "a");
  StartWith({a});
  win::ListRow row;
  row.Set({L"n1", L"a.txt", a, L"", L""}, L"1\"#A_");  // the quote breaks the statement
  List().SetRows({row});
  List().SelectAll();
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};

  Command(L"meu_Moveto");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"meu_Moveto_Click Error:");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  EXPECT_EQ(Bytes(L"a.txt"), "a");
  EXPECT_FALSE(Exists(L"target\\a.txt"));
  EXPECT_EQ(Column(3), Texts{a});
  EXPECT_EQ(TablePaths(), Texts{a});
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_EQ(Panel(1), L"Category : Alpha");
  EXPECT_TRUE(IsWindowEnabled(List().Handle()));
}

TEST_F(MoveTo, WritesTheNewPathIntoTheItemsRowWhereverItThenStands) {
  StartWith({dir.WriteFile(L"a.txt"), dir.WriteFile(L"b.txt"), dir.WriteFile(L"c.txt")});
  SelectRows({0});
  UseTheRealShell();
  const auto shell = world.shellFileOperation;
  world.shellFileOperation = [&](HWND owner, UINT function, const std::wstring& from, const std::wstring& to,
                                 WORD flags) {
    List().SortBy(1, true);
    return shell(owner, function, from, to, flags);
  };
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  EXPECT_EQ(Column(3), (Texts{dir.Path(L"c.txt"), dir.Path(L"b.txt"), dir.Path(L"target\\a.txt")}));
}

TEST_F(MoveTo, OfManyRowsTakesThemAll) {
  Texts paths;
  for (int i = 0; i < 300; ++i) paths.push_back(dir.WriteFile(L"f" + std::to_wstring(i), ""));
  StartWith(paths);
  world.shellFileOperation = [](HWND, UINT, const std::wstring& from, const std::wstring& to, WORD) {
    return MoveFileW(from.c_str(), (to + FileNameOfPath(from)).c_str()) != FALSE;
  };
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  for (std::wstring& path : paths) path = dir.Path(L"target\\") + FileNameOfPath(path);
  EXPECT_EQ(TablePaths(), paths);
  EXPECT_EQ(List().Rows()[299].Text(3), paths[299]);
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
