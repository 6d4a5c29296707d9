#include "app/base/Win32.h"

#include <commctrl.h>
#include <gmock/gmock.h>

#include "tests/jet/index/AddIndex.h"
#include "tests/store/StoreFixture.h"

namespace kestrelon::store {
namespace {

using test::ScopedTestDir;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class SaveDataTest : public StoreTest {
 protected:
  bool Save(int answer = IDOK) {
    world.answers.push_front(answer);
    return SaveData(parts, L"Data2.dat", form.Handle());
  }
  // After the question came the box of the failure.
  void ExpectFailed() {
    ASSERT_EQ(world.boxes.size(), 2u);
    EXPECT_EQ(world.boxes[1].title, L"SaveData Error:");
    EXPECT_EQ(world.boxes[1].flags, UINT{MB_OK | MB_ICONEXCLAMATION});
    EXPECT_TRUE(world.boxes[1].text.starts_with(L"Unkonw Error:"));
    EXPECT_FALSE(dir.program.databaseSaved);
    ExpectOnlyWholeFiles();
  }
  std::wstring Slot() const { return Data(L"Data2.dat"); }
};

TEST_F(SaveDataTest, AsksBeforeTheRecordsOfTheSlotAreReplaced) {
  EXPECT_FALSE(Save(IDCANCEL));

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"All records in your Database will be Replaced, Are you sure?");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, UINT{MB_OKCANCEL | MB_ICONQUESTION});
  EXPECT_EQ(world.boxes[0].owner, form.Handle());
}

TEST_F(SaveDataTest, AsksInTheCurrentLanguage) {
  dir.WriteIniFile(L"Program\\Lang\\Chinese_S.ini", L"[messagebox]\r\n2=确定吗？\r\n");
  dir.program.languageName = L"Chinese_S";

  EXPECT_FALSE(Save(IDCANCEL));

  EXPECT_EQ(world.boxes[0].text, L"确定吗？");
}

TEST_F(SaveDataTest, WritesTheViewSettingsEvenWhenTheQuestionIsCancelled) {
  list.SetColumnWidth(1, 48);
  menus.Check(L"meu_ShowItemInfo", true);
  const std::wstring slot = dir.WriteFile(L"KestrelonData\\Data2.dat", "old slot");
  AddCategory(nullptr, L"A", L"top");

  EXPECT_FALSE(Save(IDCANCEL));

  EXPECT_EQ(dir.settings.Read(L"DefineName_Length"), L"720");
  EXPECT_EQ(dir.settings.Read(L"ShowItemInfo"), L"True");
  EXPECT_EQ(dir.settings.Read(L"Drag&Drop"), L"False");
  EXPECT_EQ(ScopedTestDir::ReadBytes(slot), "old slot");
  EXPECT_TRUE(ScopedTestDir::ReadBytes(Working()) == TemplateBytes());
  EXPECT_FALSE(dir.program.databaseSaved);
}

TEST_F(SaveDataTest, PutsTreeAndItemsIntoTheSlot) {
  AddCategory(&AddCategory(nullptr, L"A", L"top"), L"B", L"child");
  Execute(InsertItem(L"B", L"1#B", L"item"));

  EXPECT_TRUE(Save());

  EXPECT_TRUE(dir.program.databaseSaved);
  EXPECT_THAT(RowsOf(Slot(), L"SELECT * FROM TreeviewTable order by i", {u"parent", u"key", u"text"}),
              ElementsAre(L"0_|A|top", L"A|B|child"));
  EXPECT_THAT(
      RowsOf(Slot(), L"SELECT * FROM FTable", {u"TreeviewNode", u"FileIndex", u"LocalFile", u"Comment"}),
      ElementsAre(L"B|1#B|C:\\files\\item.txt|"));
  EXPECT_TRUE(ScopedTestDir::ReadBytes(Slot()) == ScopedTestDir::ReadBytes(Working()));
  ExpectOnlyWholeFiles();
}

TEST_F(SaveDataTest, ReplacesAnOlderSlot) {
  dir.WriteFile(L"KestrelonData\\Data2.dat", std::string(1 << 20, 'x'));
  AddCategory(nullptr, L"A", L"top");

  EXPECT_TRUE(Save());

  EXPECT_TRUE(ScopedTestDir::ReadBytes(Slot()) == ScopedTestDir::ReadBytes(Working()));
}

TEST_F(SaveDataTest, ComesBackThroughLoadData) {
  AddCategory(&AddCategory(nullptr, L"A", L"top"), L"B", L"child");
  AddCategory(nullptr, L"C", L"second");
  Execute(InsertItem(L"B", L"1#B", L"item"));
  EXPECT_TRUE(Save());
  const std::wstring shape = Shape();
  tree.Clear();
  Execute(L"DELETE * FROM FTable");

  LoadData(parts, L"Data2.dat");

  EXPECT_EQ(Shape(), shape);
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"FileIndex"}), ElementsAre(L"1#B"));
}

TEST_F(SaveDataTest, EmptiesAllThreeTablesForAnEmptyTreeAndCopiesThemToTheSlot) {
  Execute(InsertItem(L"A", L"1#A", L"item"));
  Execute(InsertCategory(L"0_", L"A", L"top"));
  ASSERT_TRUE(BackUpDatas(parts));

  EXPECT_TRUE(Save());

  EXPECT_TRUE(dir.program.databaseSaved);
  for (const std::wstring& file : {Working(), Slot()}) {
    EXPECT_THAT(RowsOf(file, L"SELECT * FROM FTable", {u"FileIndex"}), IsEmpty());
    EXPECT_THAT(RowsOf(file, L"SELECT * FROM FBackup", {u"FileIndex"}), IsEmpty());
    EXPECT_THAT(RowsOf(file, L"SELECT * FROM TreeviewTable", {u"key"}), IsEmpty());
  }
}

TEST_F(SaveDataTest, PacksTheWorkingDatabase) {
  AddCategory(nullptr, L"A", L"top");
  {
    Opened database(connection);
    for (int item = 0; item < 500; ++item) {
      database->Execute(InsertItem(L"A", std::to_wstring(item) + L"#A", std::wstring(200, L'x')));
    }
    database.Close();
  }
  Execute(L"DELETE * FROM FTable");
  const auto before = std::filesystem::file_size(Working());

  EXPECT_TRUE(Save());

  EXPECT_LT(std::filesystem::file_size(Working()), before);
  EXPECT_FALSE(FileExists(temporary + L"temp.dat"));
  EXPECT_FALSE(FileExists(temporary + L"backup.dat")) << "no backup is kept of the file before";
}

TEST_F(SaveDataTest, LeavesTheSharedConnectionReadyForTheNextStatement) {
  AddCategory(nullptr, L"A", L"top");
  EXPECT_TRUE(Save());

  Execute(InsertItem(L"A", L"1#A", L"later"));

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"DefineName"}), ElementsAre(L"later"));
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM TreeviewTable", {u"key"}), ElementsAre(L"A"));
}

LRESULT CALLBACK NotePanelText(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR,
                               DWORD_PTR texts) {
  if (message == SB_SETTEXTW && (wParam & 0xFF) == 0) {
    reinterpret_cast<std::vector<std::wstring>*>(texts)->push_back(reinterpret_cast<const wchar_t*>(lParam));
  }
  return DefSubclassProc(window, message, wParam, lParam);
}

TEST_F(SaveDataTest, SaysThatItIsSavingWhileItWritesTheTree) {
  AddCategory(nullptr, L"A", L"top");
  win::SetCurrentCategory(parts, L"top", L"A");
  std::vector<std::wstring> texts;
  SetWindowSubclass(status.Handle(), NotePanelText, 1, reinterpret_cast<DWORD_PTR>(&texts));

  EXPECT_TRUE(Save());

  RemoveWindowSubclass(status.Handle(), NotePanelText, 1);
  EXPECT_THAT(texts, Contains(L"Saving ....  "));
  EXPECT_EQ(status.PanelText(1), L"Category : top");
}

TEST_F(SaveDataTest, KeepsTheOldSlotAndTheFlagClearWhenTheSlotIsHeldOpen) {
  dir.WriteFile(L"KestrelonData\\Data2.dat", "old slot");
  AddCategory(nullptr, L"A", L"top");
  dir.program.databaseSaved = true;
  world.answers = {IDOK};
  {
    const Locked locked(Slot());
    EXPECT_FALSE(Save());
  }
  ExpectFailed();
  EXPECT_EQ(ScopedTestDir::ReadBytes(Slot()), "old slot");
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM TreeviewTable", {u"key"}), ElementsAre(L"A"));
}

TEST_F(SaveDataTest, KeepsASlotThatIsReadOnly) {
  dir.WriteFile(L"KestrelonData\\Data2.dat", "old slot");
  SetFileAttributesW(Slot().c_str(), FILE_ATTRIBUTE_READONLY);
  AddCategory(nullptr, L"A", L"top");
  world.answers = {IDOK};

  const bool saved = Save();

  SetFileAttributesW(Slot().c_str(), FILE_ATTRIBUTE_NORMAL);
  if (saved) {
    world.answers.clear();
    GTEST_SKIP() << "this system renames over read-only files";
  }
  ExpectFailed();
  EXPECT_EQ(ScopedTestDir::ReadBytes(Slot()), "old slot");
}

TEST_F(SaveDataTest, SaysInTheBoxWhichFileCouldNotBeReplaced) {
  dir.WriteFile(L"KestrelonData\\Data2.dat", "old slot");
  world.answers = {IDOK};
  {
    const Locked locked(Slot());
    EXPECT_FALSE(Save());
  }
  EXPECT_NE(world.boxes.at(1).text.find(L"Data2.dat"), std::wstring::npos) << Narrow(world.boxes[1].text);
}

TEST_F(SaveDataTest, FailsWhenAFolderStandsInThePlaceOfTheSlot) {
  std::filesystem::create_directory(Slot());
  AddCategory(nullptr, L"A", L"top");
  world.answers = {IDOK};

  EXPECT_FALSE(Save());

  ExpectFailed();
  EXPECT_TRUE(FolderExists(Slot()));
}

TEST_F(SaveDataTest, FailsWithoutAWorkingDatabase) {
  DeleteIfThere(Working());
  AddCategory(nullptr, L"A", L"top");
  world.answers = {IDOK};

  EXPECT_FALSE(Save());

  ExpectFailed();
  EXPECT_FALSE(FileExists(Slot()));
}

TEST_F(SaveDataTest, SavesTheDatabaseAsItIsWhenItCannotBePacked) {
  std::filesystem::create_directory(temporary + L"temp.dat");
  AddCategory(nullptr, L"A", L"top");
  Execute(InsertItem(L"A", L"1#A", L"item"));
  dir.WriteFile(L"KestrelonData\\Data2.dat", "old slot");
  world.answers = {IDOK};

  EXPECT_TRUE(Save());

  ASSERT_EQ(world.boxes.size(), 2u) << "the question and one box";
  EXPECT_EQ(world.boxes[1].title, L"CompactJetDatabase Error");
  EXPECT_TRUE(dir.program.databaseSaved);
  EXPECT_EQ(ContentOf(Slot()), (Content{L"A|1#A|item", L"0_|A|top"}));
  EXPECT_THAT(FaultsOf(Slot()), IsEmpty());
}

TEST_F(SaveDataTest, DoesNotReplaceASoundSlotByADamagedDatabase) {
  AddCategory(nullptr, L"A", L"top");
  Execute(InsertItem(L"A", L"1#A", L"item"));
  SaveTree(parts);
  dir.WriteFile(L"KestrelonData\\Data2.dat", "old slot");
  std::string bytes = ScopedTestDir::ReadBytes(Working());
  bytes.resize(bytes.size() - 3 * 4096);  // the pages of the items are gone
  connection.Forget();
  dir.WriteFile(L"KestrelonData\\default.dat", bytes);
  tree.Clear();
  AddCategory(nullptr, L"A", L"top");
  world.answers = {IDOK, IDOK, IDOK};

  EXPECT_FALSE(Save());

  EXPECT_EQ(world.boxes.back().title, L"SaveData Error:");
  EXPECT_EQ(ScopedTestDir::ReadBytes(Slot()), "old slot");
  EXPECT_FALSE(dir.program.databaseSaved);
  world.answers.clear();
}

TEST_F(SaveDataTest, FailsWhenACaptionIsTooLongAndKeepsTheSlot) {
  dir.WriteFile(L"KestrelonData\\Data2.dat", "old slot");
  AddCategory(nullptr, L"A", std::wstring(256, L'x'));
  win::SetCurrentCategory(parts, L"x", L"A");
  world.answers = {IDOK};

  EXPECT_FALSE(Save());

  ExpectFailed();
  EXPECT_EQ(ScopedTestDir::ReadBytes(Slot()), "old slot");
  EXPECT_EQ(status.PanelText(1), L"Category : x");
}

TEST_F(SaveDataTest, SaysThatTheSettingsCannotBeWrittenAndSavesAllTheSame) {
  DeleteIfThere(dir.program.settingsFile);
  std::filesystem::create_directory(dir.program.settingsFile);
  AddCategory(nullptr, L"A", L"top");
  world.answers = {IDOK, IDOK};

  EXPECT_TRUE(SaveData(parts, L"Data2.dat", form.Handle()));

  ASSERT_EQ(world.boxes.size(), 2u);
  EXPECT_EQ(world.boxes[0].title, L"SaveData Error:");
  EXPECT_THAT(RowsOf(Slot(), L"SELECT * FROM TreeviewTable", {u"key"}), ElementsAre(L"A"));
}

class ItemBackupTest : public StoreTest {
 protected:
  std::vector<std::wstring> Items(const wchar_t* table) {
    return RowsOf(Working(), std::wstring(L"SELECT * FROM ") + table, {u"FileIndex"});
  }
};

TEST_F(ItemBackupTest, CopiesAllItemsAndBringsThemBack) {
  Execute(InsertItem(L"A", L"1#A", L"one"));
  Execute(InsertItem(L"B", L"1#B", L"two"));

  EXPECT_TRUE(BackUpDatas(parts));
  Execute(L"DELETE FROM FTable WHERE TreeviewNode=\"A\"");
  Execute(InsertItem(L"C", L"1#C", L"three"));
  EXPECT_TRUE(RestoreDatas(parts));

  EXPECT_THAT(Items(L"FTable"), ElementsAre(L"1#A", L"1#B"));
  EXPECT_THAT(Items(L"FBackup"), ElementsAre(L"1#A", L"1#B"));
  EXPECT_FALSE(connection.IsOpen());
}

TEST_F(ItemBackupTest, KeepsOneLevelOnly) {
  Execute(InsertItem(L"A", L"1#A", L"one"));
  EXPECT_TRUE(BackUpDatas(parts));
  Execute(L"DELETE FROM FTable");
  EXPECT_TRUE(BackUpDatas(parts));

  EXPECT_TRUE(RestoreDatas(parts));

  EXPECT_THAT(Items(L"FTable"), IsEmpty());
}

// A row that the table of the items refuses: here by an index that takes each alias once.
TEST_F(ItemBackupTest, BringsBackWhatWasThereWhenTheBackupCannotBeRead) {
  Execute(InsertItem(L"A", L"1#A", L"same"));
  Execute(InsertItem(L"A", L"2#A", L"same"));
  ASSERT_TRUE(BackUpDatas(parts));
  Execute(L"DELETE FROM FTable WHERE FileIndex=\"2#A\"");
  connection.Forget();
  {
    const auto database =
        jet::Database::Open(jet::OpenFile(Working(), jet::OpenMode::kReadWrite), ToEngine(Working()));
    jet::AddIndex(*database, u"FTable", {{u"DefineName"}}, jet::RealIndex::kUnique);
    database->Flush();
  }
  Execute(L"UPDATE FTable SET Comment=\"now\" WHERE FileIndex=\"1#A\"");
  world.answers = {IDOK};

  EXPECT_FALSE(RestoreDatas(parts));

  ExpectBox(L"RestoreDatas Error:");
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"FileIndex", u"Comment"}),
              ElementsAre(L"1#A|now"));
  EXPECT_FALSE(connection.IsOpen());
  Execute(InsertItem(L"A", L"3#A", L"other"));
  EXPECT_THAT(Items(L"FTable"), ElementsAre(L"1#A", L"3#A"));
}

TEST_F(ItemBackupTest, DoesNotTouchTheCategories) {
  Execute(InsertCategory(L"0_", L"A", L"top"));

  EXPECT_TRUE(BackUpDatas(parts));
  EXPECT_TRUE(RestoreDatas(parts));

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM TreeviewTable", {u"key"}), ElementsAre(L"A"));
}

TEST_F(ItemBackupTest, CopiesEveryField) {
  Execute(InsertItem(L"A", L"1#A", L"it's"));
  Execute(L"UPDATE FTable SET Comment=\"" + std::wstring(5000, L'评') + L"\" WHERE FileIndex=\"1#A\"");

  EXPECT_TRUE(BackUpDatas(parts));

  const auto columns = {u"TreeviewNode", u"FileIndex",  u"DefineName", u"Filename",
                        u"LocalFile",    u"InsertTime", u"Comment"};
  EXPECT_EQ(RowsOf(Working(), L"SELECT * FROM FBackup", columns),
            RowsOf(Working(), L"SELECT * FROM FTable", columns));
}

TEST_F(ItemBackupTest, ReportsEachFailureInItsOwnBox) {
  DeleteIfThere(Working());
  world.answers = {IDOK, IDOK};

  EXPECT_FALSE(BackUpDatas(parts));
  ExpectBox(L"BackUpDatas Error:");
  world.boxes.clear();
  EXPECT_FALSE(RestoreDatas(parts));
  ExpectBox(L"RestoreDatas Error:");
}

}  // namespace
}  // namespace kestrelon::store
