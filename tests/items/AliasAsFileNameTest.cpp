// Giving files the aliases of their items as names.

#include <functional>
#include <utility>

#include "items/AliasAsFileName.h"
#include "items/ItemCommands.h"
#include "tests/items/ItemDialogFixture.h"

namespace kestrelon::test {
namespace {

TEST(PathNamedAs, IsFolderAliasAndExtension) {
  EXPECT_EQ(items::PathNamedAs(L"report", L"C:\\docs\\a.b.txt"), L"C:\\docs\\report.txt");
  EXPECT_EQ(items::PathNamedAs(L"v1.2", L"\\\\server\\share\\x.pdf"), L"\\\\server\\share\\v1.2.pdf");
}

TEST(PathNamedAs, EndsInADotForAPathWithoutExtension) {
  EXPECT_EQ(items::PathNamedAs(L"read me", L"C:\\docs\\README"), L"C:\\docs\\read me.");
}

TEST(PathNamedAs, TakesTheExtensionFromTheWholePath) {
  EXPECT_EQ(items::PathNamedAs(L"new", L"C:\\a.b\\file"), L"C:\\a.b\\new.b\\file");
}

TEST(FileNameStatement, QuotesItsValues) {
  EXPECT_EQ(items::FileNameStatement(L"n.txt", L"C:\\n.txt", L"3#A_"),
            L"UPDATE FTable SET Filename=\"n.txt\", LocalFile=\"C:\\n.txt\" WHERE FileIndex=\"3#A_\"");
}

class AliasAsFileName : public ItemDialogFixture {
 protected:
  // The shell itself instead of the queue of answers; what it is asked is written down.
  void UseTheShell() {
    world.shellFileOperation = [this, shell = SystemWorld().shellFileOperation](
                                   HWND owner, UINT function, const std::wstring& from,
                                   const std::wstring& to, WORD flags) {
      world.shellOperations.push_back({function, from, to, flags});
      return shell(owner, function, from, to, flags);
    };
  }
  // A shell that succeeds in its own way.
  void UseAShellThat(std::function<void(const std::wstring& from, const std::wstring& to)> act) {
    world.shellFileOperation = [this, act = std::move(act)](HWND, UINT function, const std::wstring& from,
                                                            const std::wstring& to, WORD flags) {
      world.shellOperations.push_back({function, from, to, flags});
      act(from, to);
      return true;
    };
  }
  // Makes the file of each item, and the shell rename them.
  void StartWithFiles(const std::vector<std::pair<const wchar_t*, const wchar_t*>>& aliasesAndNames) {
    std::vector<Item> items;
    for (const auto& [alias, name] : aliasesAndNames) items.push_back({alias, name, dir.WriteFile(name)});
    StartWith(items);
    UseTheShell();
  }
  Texts Files() { return Query(L"SELECT Filename, LocalFile FROM FTable", 2); }
  void ExpectUnchanged(const std::wstring& name, const std::wstring& path) {
    EXPECT_EQ(Files(), Texts{name + L"|" + path});
    EXPECT_EQ(Cell(0, 2), name);
    EXPECT_EQ(Cell(0, 3), path);
    EXPECT_TRUE(program.databaseSaved);
    EXPECT_TRUE(world.boxes.empty());
  }
};

TEST_F(AliasAsFileName, RenamesTheFileAndChangesTableAndList) {
  UseTheShell();
  const std::wstring old = dir.WriteFile(L"docs\\old.txt", "content"),
                     renamed = dir.Path(L"docs\\报告's.txt");
  StartWith({{L"报告's", L"old.txt", old, L"now", L"remark"}});

  Command(L"meu_Definenameasfilename");

  EXPECT_FALSE(FileExists(old));
  EXPECT_EQ(ScopedTestDir::ReadBytes(renamed), "content");
  EXPECT_EQ(Query(L"SELECT DefineName, Filename, LocalFile, InsertTime, Comment FROM FTable", 5),
            Texts{L"报告's|报告's.txt|" + renamed + L"|now|remark"});
  EXPECT_EQ(Cell(0, 1), L"报告's");
  EXPECT_EQ(Cell(0, 2), L"报告's.txt");
  EXPECT_EQ(Cell(0, 3), renamed);
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_TRUE(world.boxes.empty());
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(AliasAsFileName, AsksTheShellInThisWay) {
  StartWithFiles({{L"new", L"f.txt"}});

  Command(L"meu_Definenameasfilename");

  ASSERT_EQ(world.shellOperations.size(), 1u);
  EXPECT_EQ(world.shellOperations[0].function, 4u);
  EXPECT_EQ(world.shellOperations[0].from, dir.Path(L"f.txt"));
  EXPECT_EQ(world.shellOperations[0].to, dir.Path(L"new.txt"));
  EXPECT_EQ(world.shellOperations[0].flags, 0x400);
  EXPECT_EQ(Files(), Texts{L"new.txt|" + dir.Path(L"new.txt")});
}

TEST_F(AliasAsFileName, TakesEverySelectedRowInListOrder) {
  StartWithFiles({{L"1", L"f.a"}, {L"2", L"f.b"}, {L"3", L"f.c"}});
  List().SelectOnly(2);
  List().Select(0, true);

  Command(L"meu_Definenameasfilename");

  ASSERT_EQ(world.shellOperations.size(), 2u);
  EXPECT_EQ(world.shellOperations[0].from, dir.Path(L"f.a"));
  EXPECT_EQ(world.shellOperations[1].from, dir.Path(L"f.c"));
  EXPECT_EQ(Column(2), (Texts{L"1.a", L"f.b", L"3.c"}));
  EXPECT_EQ(List().SelectedRows(), (std::vector<std::size_t>{0, 2}));
}

TEST_F(AliasAsFileName, SkipsRowsWithoutAliasOrPath) {
  StartWith({{L"", L"f.txt", L"C:\\f.txt"}, {L"alias", L"f.txt", L""}});
  List().SelectAll();
  Command(L"meu_Definenameasfilename");
  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(AliasAsFileName, LeavesRowAndTableForACharacterThatNoFileNameMayHold) {
  UseTheShell();
  const std::wstring path = dir.WriteFile(L"docs\\f.txt");
  dir.WriteFile(L"docs\\sub\\other.txt");
  for (const wchar_t* alias : {L"a?b", L"a*b", L"a\"b", L"a<b", L"a>b", L"a|b", L"sub\\b", L"sub/b", L"..\\b",
                               L"a:b", L"a\tb", L"NUL", L"com1", L"Lpt\u00B9"}) {
    End();
    StartWith({});
    // The engine's face takes no double quote inside a value: the row alone shows this alias.
    AddItem(L"A_", 1, {L"alias", L"f.txt", path});
    items::ShowData(Parts(), L"A_");
    List().SetText(0, 1, alias);
    List().SelectOnly(0);
    program.databaseSaved = true;

    Command(L"meu_Definenameasfilename");

    ExpectUnchanged(L"f.txt", path);
    EXPECT_TRUE(FileExists(path)) << Narrow(alias);
    EXPECT_TRUE(world.shellOperations.empty()) << Narrow(alias);
  }
  EXPECT_FALSE(FileExists(dir.Path(L"docs\\sub\\b.txt")));
  EXPECT_FALSE(FileExists(dir.Path(L"b.txt")));
}

TEST_F(AliasAsFileName, LeavesTheRowWhenTheFileIsMissing) {
  UseTheShell();
  const std::wstring path = dir.Path(L"gone.txt");
  StartWith({{L"new", L"gone.txt", path}});
  Command(L"meu_Definenameasfilename");
  ExpectUnchanged(L"gone.txt", path);
}

TEST_F(AliasAsFileName, LeavesTheRowWhenTheNameIsTaken) {
  UseTheShell();
  const std::wstring path = dir.WriteFile(L"docs\\f.txt", "mine"),
                     taken = dir.WriteFile(L"docs\\new.txt", "other");
  StartWith({{L"new", L"f.txt", path}});

  Command(L"meu_Definenameasfilename");

  ExpectUnchanged(L"f.txt", path);
  EXPECT_EQ(ScopedTestDir::ReadBytes(path), "mine");
  EXPECT_EQ(ScopedTestDir::ReadBytes(taken), "other");
}

TEST_F(AliasAsFileName, DoesNotAskTheShellForANameThatIsTakenByAFileOrAFolder) {
  dir.WriteFile(L"taken.txt", "other");
  dir.WriteFile(L"folder.txt\\inside");
  StartWith({{L"TAKEN", L"1.txt", dir.WriteFile(L"1.txt")}, {L"folder", L"2.txt", dir.WriteFile(L"2.txt")}});
  List().SelectAll();
  Command(L"meu_Definenameasfilename");
  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_EQ(Column(2), (Texts{L"1.txt", L"2.txt"}));
}

TEST_F(AliasAsFileName, ChangesNoMoreThanTheCaseOfTheName) {
  StartWithFiles({{L"Report", L"REPORT.TXT"}});
  UseAShellThat([](const std::wstring& from, const std::wstring& to) {
    // In two steps, which every file system takes for a change.
    MoveFileW(from.c_str(), (from + L".x").c_str());
    MoveFileW((from + L".x").c_str(), to.c_str());
  });

  Command(L"meu_Definenameasfilename");

  EXPECT_EQ(world.shellOperations.size(), 1u);
  EXPECT_EQ(Files(), Texts{L"Report.TXT|" + dir.Path(L"Report.TXT")});
  WIN32_FIND_DATAW entry;
  const HANDLE search = FindFirstFileW(dir.Path(L"report.txt").c_str(), &entry);
  ASSERT_NE(search, INVALID_HANDLE_VALUE);
  FindClose(search);
  EXPECT_STREQ(entry.cFileName, L"Report.TXT");
}

TEST_F(AliasAsFileName, LeavesTheRowWhenTheCaseOfTheNameOnDiskStaysAsItWas) {
  const std::wstring path = dir.WriteFile(L"REPORT.TXT");
  StartWith({{L"Report", L"REPORT.TXT", path}});
  UseAShellThat([](const std::wstring&, const std::wstring&) {});
  Command(L"meu_Definenameasfilename");
  EXPECT_EQ(world.shellOperations.size(), 1u);
  ExpectUnchanged(L"REPORT.TXT", path);
}

TEST_F(AliasAsFileName, LeavesTheRowWhenTheShellFindsANameOfItsOwn) {
  const std::wstring path = dir.WriteFile(L"f.txt");
  StartWith({{L"new", L"f.txt", path}});
  UseAShellThat([](const std::wstring& from, const std::wstring& to) {
    MoveFileW(from.c_str(), (FolderOfPath(to) + L"new (2).txt").c_str());
  });
  Command(L"meu_Definenameasfilename");
  ExpectUnchanged(L"f.txt", path);
}

TEST_F(AliasAsFileName, LeavesTheRowWhenTheShellCopiesInsteadOfRenaming) {
  const std::wstring path = dir.WriteFile(L"f.txt");
  StartWith({{L"new", L"f.txt", path}});
  UseAShellThat(
      [](const std::wstring& from, const std::wstring& to) { CopyFileW(from.c_str(), to.c_str(), TRUE); });
  Command(L"meu_Definenameasfilename");
  ExpectUnchanged(L"f.txt", path);
}

TEST_F(AliasAsFileName, AsksNothingForAFileThatHasTheNameAlready) {
  const std::wstring path = dir.WriteFile(L"f.txt");
  StartWith({{L"f", L"f.txt", path}});
  Command(L"meu_Definenameasfilename");
  EXPECT_TRUE(world.shellOperations.empty());
  ExpectUnchanged(L"f.txt", path);
}

TEST_F(AliasAsFileName, RefusesWildcardsAndPathsThatAreNotAbsolute) {
  dir.WriteFile(L"a.txt");
  for (const std::wstring& path : {dir.Path(L"*.txt"), dir.Path(L"?.txt"), std::wstring(L"a.txt"),
                                   std::wstring(L"C:a.txt"), std::wstring(L"\\a.txt")}) {
    End();
    StartWith({{L"new", L"a.txt", path}});
    Command(L"meu_Definenameasfilename");
    ExpectUnchanged(L"a.txt", path);
  }
  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_TRUE(FileExists(dir.Path(L"a.txt")));
}

TEST_F(AliasAsFileName, RefusesADotOrABlankAtTheEndOfTheNameOnDisk) {
  const std::wstring readme = dir.WriteFile(L"README"), text = dir.WriteFile(L"f.txt");
  StartWith({{L"a.", L"README", readme}, {L"b ", L"README", readme}, {L"c. ", L"f.txt", text}});
  List().SelectAll();
  UseTheShell();
  Command(L"meu_Definenameasfilename");
  EXPECT_EQ(Column(2), (Texts{L"README", L"README", L"c. .txt"})) << "before an extension they are no end";
}

TEST_F(AliasAsFileName, SaysOnceThatPathsAreTooLong) {
  const std::wstring a = dir.WriteFile(L"a.txt"), b = dir.WriteFile(L"b.txt");
  StartWith({{std::wstring(250, L'x'), L"a.txt", a}, {std::wstring(251, L'y'), L"b.txt", b}});
  List().SelectAll();
  world.answers = {IDOK};
  Command(L"meu_Definenameasfilename");
  EXPECT_TRUE(world.shellOperations.empty());
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"The path is longer than 259 characters; left out: 2");
  EXPECT_EQ(Column(3), (Texts{a, b}));
}

TEST_F(AliasAsFileName, CarriesOnWithTheOtherRowsAfterAFailure) {
  UseTheShell();
  const std::wstring a = dir.WriteFile(L"a.txt"), gone = dir.Path(L"gone.txt"), b = dir.WriteFile(L"b.txt");
  StartWith({{L"1", L"a.txt", a}, {L"2", L"gone.txt", gone}, {L"3", L"b.txt", b}});
  List().SelectAll();

  Command(L"meu_Definenameasfilename");

  EXPECT_EQ(Column(2), (Texts{L"1.txt", L"gone.txt", L"3.txt"}));
  EXPECT_EQ(Files(),
            (Texts{L"1.txt|" + dir.Path(L"1.txt"), L"gone.txt|" + gone, L"3.txt|" + dir.Path(L"3.txt")}));
}

TEST_F(AliasAsFileName, TheFileOfAPathWithoutExtensionIsFoundUnderItsNewPath) {
  UseTheShell();
  const std::wstring path = dir.WriteFile(L"README", "text");
  StartWith({{L"read me", L"README", path}});

  Command(L"meu_Definenameasfilename");

  EXPECT_EQ(Files(), Texts{L"read me|" + dir.Path(L"read me")});
  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.Path(L"read me")), "text");
}

TEST_F(AliasAsFileName, DoesNotMoveAFileWithoutExtensionInAFolderWithADot) {
  UseTheShell();
  const std::wstring path = dir.WriteFile(L"a.b\\file");
  dir.WriteFile(L"a.b\\new.b\\other.txt");
  StartWith({{L"new", L"file", path}});
  Command(L"meu_Definenameasfilename");
  ExpectUnchanged(L"file", path);
  EXPECT_TRUE(FileExists(path));
}

TEST_F(AliasAsFileName, GivesTheFileItsOldNameBackWhenTheTableRefusesTheNewOne) {
  const std::wstring path = dir.WriteFile(L"f.txt", "content"), hidden = program.dataFolder + L"hidden",
                     database = program.dataFolder + L"default.dat";
  StartWith({{L"new", L"f.txt", path}});
  UseAShellThat([&](const std::wstring& from, const std::wstring& to) {
    MoveFileW(from.c_str(), to.c_str());
    if (from != path) return;
    Parts().connection.Ado().Close();
    MoveFileW(database.c_str(), hidden.c_str());
  });

  Command(L"meu_Definenameasfilename");

  ASSERT_TRUE(MoveFileW(hidden.c_str(), database.c_str()));
  ASSERT_EQ(world.shellOperations.size(), 2u);
  EXPECT_EQ(world.shellOperations[1].function, 4u);
  EXPECT_EQ(world.shellOperations[1].from, dir.Path(L"new.txt"));
  EXPECT_EQ(world.shellOperations[1].to, path);
  EXPECT_EQ(world.shellOperations[1].flags, 0x400);
  EXPECT_EQ(ScopedTestDir::ReadBytes(path), "content");
  ExpectUnchanged(L"f.txt", path);
}

TEST_F(AliasAsFileName, RenamesNoFileWhoseItemNoStatementCanName) {
  StartWithFiles({{L"new", L"1.txt"}, {L"next", L"2.txt"}});
  std::vector<win::ListRow> rows = List().Rows();
  rows[0].SetTag(L"1\"#A_");
  List().SetRows(rows);
  List().SelectAll();
  Command(L"meu_Definenameasfilename");
  EXPECT_EQ(Column(2), (Texts{L"1.txt", L"next.txt"}));
  EXPECT_TRUE(FileExists(dir.Path(L"1.txt")));
}

TEST_F(AliasAsFileName, DoesNothingWithoutASelection) {
  StartWith({{L"alias"}});
  List().SelectNone();
  Command(L"meu_Definenameasfilename");
  EXPECT_TRUE(world.shellOperations.empty());
}

// While rows are worked on, messages are handled: the commands that would change the rows are off, and come
// on again.
TEST_F(AliasAsFileName, KeepsTheWindowAliveWithItsCommandsOff) {
  StartWithFiles({{L"1", L"f.a"}, {L"2", L"f.b"}});
  List().SelectAll();
  bool listEnabled = true, treeEnabled = true, commandsEnabled = true;
  int handled = 0;
  const MessageSpy messages(List().Handle(), WM_APP + 77);
  world.shellFileOperation = [&](HWND, UINT, const std::wstring&, const std::wstring&, WORD) {
    listEnabled = IsWindowEnabled(List().Handle());
    treeEnabled = IsWindowEnabled(Tree().Handle());
    commandsEnabled = Menus().IsEnabled(L"meu_List");
    handled = messages.Count();
    PostMessageW(List().Handle(), WM_APP + 77, 0, 0);
    return true;
  };

  Command(L"meu_Definenameasfilename");

  EXPECT_FALSE(listEnabled);
  EXPECT_FALSE(treeEnabled);
  EXPECT_FALSE(commandsEnabled);
  EXPECT_EQ(handled, 1) << "the message posted at the first row is handled before the second";
  EXPECT_TRUE(IsWindowEnabled(List().Handle()));
  EXPECT_TRUE(Menus().IsEnabled(L"meu_List"));
  EXPECT_TRUE(Menus().IsEnabled(L"meu_Definenameasfilename"));
  EXPECT_EQ(GetFocus(), List().Handle());
}

TEST_F(AliasAsFileName, StopsAfterTheRowAtWhichTheWindowIsClosed) {
  StartWithFiles({{L"1", L"f.a"}, {L"2", L"f.b"}});
  List().SelectAll();
  int renamed = 0;
  UseAShellThat([&](const std::wstring& from, const std::wstring& to) {
    ++renamed;
    MoveFileW(from.c_str(), to.c_str());
    PostMessageW(form->Handle(), WM_CLOSE, 0, 0);
  });
  world.answers = {IDCANCEL};  // to "Save Changes ? "

  Command(L"meu_Definenameasfilename");

  EXPECT_EQ(renamed, 1);
  EXPECT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(Column(2), (Texts{L"1.a", L"f.b"}));
}

TEST_F(AliasAsFileName, TakesAThousandRows) {
  std::vector<Item> items;
  for (int i = 0; i < 1000; ++i) {
    const std::wstring name = L"f" + std::to_wstring(i) + L".txt";
    items.push_back({L"n" + std::to_wstring(i), name, dir.WriteFile(name)});
  }
  StartWith({});
  {
    store::Opened connection(Parts().connection);
    int number = 0;
    for (const Item& item : items) AddItem(L"A_", ++number, item);
    connection.Close();
  }
  items::ShowData(Parts(), L"A_");
  List().SelectAll();
  items::EnableItemCommands(Parts());
  UseAShellThat(
      [](const std::wstring& from, const std::wstring& to) { MoveFileW(from.c_str(), to.c_str()); });

  Command(L"meu_Definenameasfilename");

  EXPECT_EQ(Cell(999, 3), dir.Path(L"n999.txt"));
  const Texts files = Files();
  ASSERT_EQ(files.size(), 1000u);
  EXPECT_EQ(files[0], L"n0.txt|" + dir.Path(L"n0.txt"));
  EXPECT_EQ(files[999], L"n999.txt|" + dir.Path(L"n999.txt"));
}

}  // namespace
}  // namespace kestrelon::test
