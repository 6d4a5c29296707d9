// Giving files the aliases of their items as names.

#include "items/AliasAsFileName.h"
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
  // The shell itself instead of the queue of answers.
  void UseTheShell() { world.shellFileOperation = SystemWorld().shellFileOperation; }
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
  StartWith({{L"new", L"f.txt", L"C:\\docs\\f.txt"}});
  world.shellResults = {true};

  Command(L"meu_Definenameasfilename");

  ASSERT_EQ(world.shellOperations.size(), 1u);
  EXPECT_EQ(world.shellOperations[0].function, 4u);
  EXPECT_EQ(world.shellOperations[0].from, L"C:\\docs\\f.txt");
  EXPECT_EQ(world.shellOperations[0].to, L"C:\\docs\\new.txt");
  EXPECT_EQ(world.shellOperations[0].flags, 0x400);
  EXPECT_EQ(Files(), Texts{L"new.txt|C:\\docs\\new.txt"});
}

TEST_F(AliasAsFileName, TakesEverySelectedRowInListOrder) {
  StartWith({{L"1", L"f.a", L"C:\\f.a"}, {L"2", L"f.b", L"C:\\f.b"}, {L"3", L"f.c", L"C:\\f.c"}});
  List().SelectOnly(2);
  List().Select(0, true);
  world.shellResults = {true, true};

  Command(L"meu_Definenameasfilename");

  ASSERT_EQ(world.shellOperations.size(), 2u);
  EXPECT_EQ(world.shellOperations[0].from, L"C:\\f.a");
  EXPECT_EQ(world.shellOperations[1].from, L"C:\\f.c");
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
  for (const wchar_t* alias :
       {L"a?b", L"a*b", L"a\"b", L"a<b", L"a>b", L"a|b", L"sub\\b", L"sub/b", L"..\\b"}) {
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

  EXPECT_EQ(Files(), Texts{L"read me.|" + dir.Path(L"read me.")});
  EXPECT_EQ(ScopedTestDir::ReadBytes(dir.Path(L"read me.")), "text");
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
  StartWith({{L"alias", L"f.txt", L"C:\\f.txt"}});
  List().SetText(0, 1, L"a\"b");
  world.shellResults = {true, true};

  Command(L"meu_Definenameasfilename");

  ASSERT_EQ(world.shellOperations.size(), 2u);
  EXPECT_EQ(world.shellOperations[1].function, 4u);
  EXPECT_EQ(world.shellOperations[1].from, L"C:\\a\"b.txt");
  EXPECT_EQ(world.shellOperations[1].to, L"C:\\f.txt");
  EXPECT_EQ(world.shellOperations[1].flags, 0x400);
  ExpectUnchanged(L"f.txt", L"C:\\f.txt");
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
  StartWith({{L"1", L"f.a", L"C:\\f.a"}, {L"2", L"f.b", L"C:\\f.b"}});
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
  StartWith({{L"1", L"f.a", L"C:\\f.a"}, {L"2", L"f.b", L"C:\\f.b"}});
  List().SelectAll();
  int renamed = 0;
  world.shellFileOperation = [&](HWND, UINT, const std::wstring&, const std::wstring&, WORD) {
    ++renamed;
    PostMessageW(form->Handle(), WM_CLOSE, 0, 0);
    return true;
  };
  world.answers = {IDCANCEL};  // to "Save Changes ? "

  Command(L"meu_Definenameasfilename");

  EXPECT_EQ(renamed, 1);
  EXPECT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(Column(2), (Texts{L"1.a", L"f.b"}));
}

TEST_F(AliasAsFileName, TakesAThousandRows) {
  std::vector<Item> items;
  for (int i = 0; i < 1000; ++i) items.push_back({L"n" + std::to_wstring(i), L"f.txt", L"C:\\f.txt"});
  StartWith({});
  {
    store::Opened connection(Parts().connection);
    int number = 0;
    for (const Item& item : items) AddItem(L"A_", ++number, item);
    connection.Close();
  }
  items::ShowData(Parts(), L"A_");
  List().SelectAll();
  world.shellFileOperation = [](HWND, UINT, const std::wstring&, const std::wstring&, WORD) { return true; };

  Command(L"meu_Definenameasfilename");

  EXPECT_EQ(Cell(999, 3), L"C:\\n999.txt");
  const Texts files = Files();
  ASSERT_EQ(files.size(), 1000u);
  EXPECT_EQ(files[0], L"n0.txt|C:\\n0.txt");
  EXPECT_EQ(files[999], L"n999.txt|C:\\n999.txt");
}

}  // namespace
}  // namespace kestrelon::test
