// Deleting items, with their files or without.

#include "items/FileOperations.h"
#include "tests/items/FileCommandFixture.h"

namespace kestrelon::test {
namespace {

class DeleteItems : public FileCommand {
 protected:
  static constexpr const wchar_t* kFirst = L"Delete selected item(s) in list? ";
  static constexpr const wchar_t* kSecond = L"delete the original of the file at the same time? ";
};

TEST_F(DeleteItems, AsksTwoQuestions) {
  StartWith({L"C:\\a.txt"});
  world.answers = {IDYES, IDNO};
  Command(L"meu_Delete");
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[0].text, kFirst);
  EXPECT_EQ(world.boxes[1].text, kSecond);
  for (const FakeWorld::Box& box : world.boxes) {
    EXPECT_EQ(box.title, L"Kestrelon");
    EXPECT_EQ(box.owner, form->Handle());
  }
  EXPECT_EQ(world.boxes[0].flags, 36u);
  EXPECT_EQ(world.boxes[1].flags, 36u | MB_DEFBUTTON2) << "Enter pressed twice leaves the files alone";
}

TEST_F(DeleteItems, AsksInTheLanguageInUse) {
  dir.WriteIniFile(L"Program\\Lang\\English.ini",
                   L"[messagebox]\r\n17=Rows?\r\n18=Files?\r\n20=Nothing!\r\n");
  StartWith({L"C:\\a.txt"});
  world.answers = {IDYES, IDNO, IDOK};
  Command(L"meu_Delete");
  items::meu_Delete_Click(Parts());
  ASSERT_EQ(world.boxes.size(), 3u);
  EXPECT_EQ(world.boxes[0].text, L"Rows?");
  EXPECT_EQ(world.boxes[1].text, L"Files?");
  EXPECT_EQ(world.boxes[2].text, L"Nothing!");
}

TEST_F(DeleteItems, SaysThatNoRowIsSelected) {
  StartWith({L"C:\\a.txt"});
  SelectRows({});
  world.answers = {IDOK};
  items::meu_Delete_Click(Parts());
  ExpectOneBox(L"No files selected. You need to select files for this operation.");
  EXPECT_EQ(TableIndexes().size(), 1u);
}

TEST_F(DeleteItems, DoesNothingWhenTheFirstAnswerIsNo) {
  StartWith({L"C:\\a.txt"});
  world.answers = {IDNO};
  Command(L"meu_Delete");
  EXPECT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(List().Count(), 1u);
  EXPECT_EQ(TableIndexes().size(), 1u);
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(DeleteItems, KeepsEveryFileWhenTheSecondAnswerIsNo) {
  StartWith({dir.WriteFile(L"a.txt"), dir.WriteFile(L"b.txt")});
  world.answers = {IDYES, IDNO};

  Command(L"meu_Delete");

  EXPECT_TRUE(world.shellOperations.empty());
  EXPECT_TRUE(Exists(L"a.txt"));
  EXPECT_TRUE(Exists(L"b.txt"));
  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(TableIndexes(), Texts{});
  EXPECT_EQ(Panel(3), L"0 Objects");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(DeleteItems, LeavesTheTwoRowsOfFiveThatAreNotSelectedInTheirOrder) {
  StartWith({L"C:\\1", L"C:\\2", L"C:\\3", L"C:\\4", L"C:\\5"});
  SelectRows({0, 2, 4});
  world.answers = {IDYES, IDNO};

  Command(L"meu_Delete");

  EXPECT_EQ(Column(1), (Texts{L"n2", L"n4"}));
  EXPECT_EQ(TableIndexes(), (Texts{L"2#A_", L"4#A_"}));
  EXPECT_EQ(Panel(3), L"2 Objects");
  EXPECT_FALSE(Menus().IsEnabled(L"meu_Delete"));
  EXPECT_FALSE(Parts().Toolbar1.IsEnabled(6));
}

TEST_F(DeleteItems, SendsTheFilesToTheRecycleBinFromTheLastRowToTheFirst) {
  StartWith({L"C:\\1", L"C:\\2", L"C:\\3"});
  SelectRows({0, 2});
  world.answers = {IDYES, IDYES};
  world.shellResults = {true, true};

  Command(L"meu_Delete");

  EXPECT_EQ(SourcesGivenToTheShell(), (Texts{L"C:\\3", L"C:\\1"}));
  for (const FakeWorld::ShellOperation& operation : world.shellOperations) {
    EXPECT_EQ(operation.function, 3u);
    EXPECT_EQ(operation.to, L"");
    EXPECT_EQ(operation.flags, 0x454);
  }
  EXPECT_EQ(Column(1), Texts{L"n2"});
}

TEST_F(DeleteItems, SaysThatAPathIsTooLongAndRemovesItsRow) {
  StartWith({L"C:\\" + std::wstring(130, L'a') + L"\\" + std::wstring(126, L'a'), L"C:\\b"});
  world.answers = {IDYES, IDYES, IDOK};
  world.shellResults = {true};
  Command(L"meu_Delete");
  EXPECT_EQ(SourcesGivenToTheShell(), Texts{L"C:\\b"});
  EXPECT_EQ(TableIndexes(), Texts{});
  ASSERT_EQ(world.boxes.size(), 3u);
  EXPECT_EQ(world.boxes[2].text, L"The path is longer than 259 characters; left out: 1");
}

TEST_F(DeleteItems, TakesTheFileOutOfItsFolder) {
  StartWith({dir.WriteFile(L"\x6587\x4EF6 it's.txt")});
  UseTheRealShell();
  world.answers = {IDYES, IDYES};
  Command(L"meu_Delete");
  EXPECT_FALSE(Exists(L"\x6587\x4EF6 it's.txt"));
  EXPECT_EQ(TableIndexes(), Texts{});
}

TEST_F(DeleteItems, RemovesTheRowOfAFileThatStays) {
  const std::wstring used = dir.WriteFile(L"used.txt", "used");
  StartWith({used, dir.Path(L"gone.txt")});
  UseTheRealShell();
  const HANDLE inUse = CreateFileW(used.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(inUse, INVALID_HANDLE_VALUE);
  world.answers = {IDYES, IDYES};

  Command(L"meu_Delete");
  CloseHandle(inUse);

  EXPECT_EQ(Bytes(L"used.txt"), "used");
  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(TableIndexes(), Texts{});
  EXPECT_EQ(world.boxes.size(), 2u);
}

TEST_F(DeleteItems, StopsAtAFailureWithTheRowsLeftThatTheTableStillHas) {
  StartWith({L"C:\\1", L"C:\\2", L"C:\\3"});
  std::vector<win::ListRow> rows = List().Rows();
  rows[1].SetTag(L"2\"#A_");  // the quote breaks the statement
  List().SetRows(rows);
  List().SelectAll();
  world.answers = {IDYES, IDNO, IDOK};

  items::meu_Delete_Click(Parts());

  ASSERT_EQ(world.boxes.size(), 3u);
  EXPECT_EQ(world.boxes[2].title, L"meu_Delete_Click Error:");
  EXPECT_EQ(world.boxes[2].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  EXPECT_EQ(Column(1), (Texts{L"n1", L"n2"}));
  EXPECT_EQ(TableIndexes(), (Texts{L"1#A_", L"2#A_"}));
  EXPECT_EQ(Panel(3), L"2 Objects");
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_TRUE(IsWindowEnabled(List().Handle()));
}

TEST_F(DeleteItems, SaysSoWhenTheDatabaseCannotBeOpened) {
  StartWith({L"C:\\1"});
  DeleteIfThere(program.dataFolder + L"default.dat");
  world.answers = {IDYES, IDOK};
  Command(L"meu_Delete");
  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[1].title, L"meu_Delete_Click Error:");
  EXPECT_EQ(List().Count(), 1u);
}

TEST_F(DeleteItems, DeletesNothingElseWhenTheListChangesBehindTheQuestions) {
  StartWith({L"C:\\1", L"C:\\2"});
  SelectRows({0});
  world.messageBox = [&](HWND, const std::wstring&, const std::wstring&, UINT) {
    List().SelectOnly(1);
    return IDYES;
  };
  Command(L"meu_Delete");
  EXPECT_EQ(TableIndexes(), (Texts{L"1#A_", L"2#A_"}));
  EXPECT_EQ(List().Count(), 2u);
}

TEST_F(DeleteItems, IsStartedByTheDeleteKey) {
  StartWith({L"C:\\1"});
  world.answers = {IDYES, IDNO};
  SendKey(List().Handle(), VK_DELETE);
  EXPECT_EQ(List().Count(), 0u);
}

TEST_F(DeleteItems, IsNotStartedByTheDeleteKeyWhileItsEntryIsDisabled) {
  StartWith({L"C:\\1"});
  Menus().Enable(L"meu_Delete", false);
  SendKey(List().Handle(), VK_DELETE);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(DeleteItems, CanFollowSelectingAllByKey) {
  StartWith({L"C:\\1", L"C:\\2"});
  SelectRows({});
  SendKey(List().Handle(), 'A', {VK_CONTROL});
  world.answers = {IDYES, IDNO};
  SendKey(List().Handle(), VK_DELETE);
  EXPECT_EQ(List().Count(), 0u);
}

TEST_F(DeleteItems, OfAThousandRowsTakesThemAll) {
  Texts paths;
  for (int i = 0; i < 1001; ++i) paths.push_back(L"C:\\f" + std::to_wstring(i));
  StartWith(paths);
  List().Select(500, false);
  int asked = 0;
  world.shellFileOperation = [&](HWND, UINT, const std::wstring&, const std::wstring&, WORD) {
    ++asked;
    return true;
  };
  world.answers = {IDYES, IDYES};
  Command(L"meu_Delete");
  EXPECT_EQ(asked, 1000);
  EXPECT_EQ(TablePaths(), Texts{L"C:\\f500"});
  EXPECT_EQ(Column(1), Texts{L"n501"});
  EXPECT_EQ(Panel(3), L"1 Objects");
}

}  // namespace
}  // namespace kestrelon::test
