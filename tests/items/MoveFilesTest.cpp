// Moving the files behind items.

#include "items/FileOperations.h"
#include "tests/items/FileCommandFixture.h"

namespace kestrelon::test {
namespace {

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

TEST_F(MoveTo, ReplacesAFileOfTheSameNameAfterYes) {
  StartWith({dir.WriteFile(L"a.txt", "new"), dir.WriteFile(L"b.txt")});
  dir.WriteFile(L"target\\a.txt", "old");
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  world.answers = {IDYES};

  Command(L"meu_Moveto");

  EXPECT_EQ(Bytes(L"target\\a.txt"), "new");
  EXPECT_EQ(TablePaths(), (Texts{dir.Path(L"target\\a.txt"), dir.Path(L"target\\b.txt")}));
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"a.txt\n\nA file of this name is in the folder already. Replace it?");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON2));
  EXPECT_EQ(world.boxes[0].owner, form->Handle());
}

TEST_F(MoveTo, LeavesOneFileAfterNoAndAllThatFollowAfterCancel) {
  const Texts paths = {dir.WriteFile(L"1.txt", "new"), dir.WriteFile(L"2.txt", "new"),
                       dir.WriteFile(L"3.txt", "new"), dir.WriteFile(L"4.txt", "new")};
  for (const wchar_t* name : {L"1.txt", L"3.txt"}) dir.WriteFile(std::wstring(L"target\\") + name, "old");
  StartWith(paths);
  UseTheRealShell();
  world.folders = {Folder(L"target")};
  world.answers = {IDNO, IDCANCEL};

  Command(L"meu_Moveto");

  EXPECT_EQ(TablePaths(), (Texts{paths[0], dir.Path(L"target\\2.txt"), paths[2], paths[3]}));
  EXPECT_EQ(Bytes(L"1.txt"), "new");
  EXPECT_EQ(Bytes(L"target\\1.txt"), "old");
  EXPECT_EQ(Bytes(L"target\\2.txt"), "new");
  EXPECT_EQ(Bytes(L"target\\3.txt"), "old");
  EXPECT_TRUE(Exists(L"4.txt"));
  EXPECT_EQ(world.boxes.size(), 2u);
  EXPECT_TRUE(IsWindowEnabled(List().Handle()));
  EXPECT_EQ(Panel(1), L"Category : Alpha");
}

TEST_F(MoveTo, AsksNothingForAnItemWhoseFileIsGone) {
  dir.WriteFile(L"target\\a.txt", "old");
  StartWith({dir.Path(L"a.txt")});
  world.folders = {Folder(L"target")};
  Command(L"meu_Moveto");
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_EQ(Bytes(L"target\\a.txt"), "old");
}

TEST_F(MoveTo, AsksInTheLanguageInUse) {
  dir.settings.Write(L"Language", L"Chinese_T");
  StartWith({dir.WriteFile(L"a.txt")});
  dir.WriteFile(L"target\\a.txt");
  world.folders = {Folder(L"target")};
  world.answers = {IDNO};
  Command(L"meu_Moveto");
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"a.txt\n\n該資料夾中已有同名檔案。要取代它嗎？");
}

TEST_F(MoveTo, SaysThatAPathIsTooLong) {
  const std::wstring path = L"C:\\" + std::wstring(130, L'a') + L"\\" + std::wstring(126, L'a');
  StartWith({path});
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};
  Command(L"meu_Moveto");
  ExpectOneBox(L"The path is longer than 259 characters; left out: 1");
  EXPECT_EQ(TablePaths(), Texts{path});
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
  for (const wchar_t* folder : {L"TARGET", L"target\\.", L"target\\..\\Target"}) {
    world.folders = {dir.Path(folder)};
    Command(L"meu_Moveto");
    EXPECT_TRUE(world.shellOperations.empty()) << Narrow(folder);
    EXPECT_TRUE(world.boxes.empty()) << Narrow(folder);
    ExpectUnchanged({a});
  }
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

TEST_F(MoveTo, MovesNoFileWhoseItemNoStatementCanName) {
  const std::wstring a = dir.WriteFile(L"a.txt", "a");
  StartWith({a});
  win::ListRow row;
  row.Set({L"n1", L"a.txt", a, L"", L""}, L"1\"#A_");  // the quote would break it
  List().SetRows({row});
  List().SelectAll();
  world.folders = {Folder(L"target")};
  world.answers = {IDOK};
  Command(L"meu_Moveto");
  EXPECT_EQ(world.boxes.at(0).title, L"meu_Moveto_Click Error:");
  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_EQ(Bytes(L"a.txt"), "a");
}

TEST_F(MoveTo, MovesAFileBackWhoseNewPathTheTableDoesNotTake) {
  const std::wstring a = dir.WriteFile(L"a.txt", "a");
  StartWith({a});
  UseTheRealShell();
  world.shellFileOperation = [this, shell = world.shellFileOperation](HWND owner, UINT function,
                                                                      const std::wstring& from,
                                                                      const std::wstring& to, WORD flags) {
    const bool moved = shell(owner, function, from, to, flags);
    if (to.ends_with(L"target\\")) Parts().connection.Ado().Close();
    return moved;
  };
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

}  // namespace
}  // namespace kestrelon::test
