#include <gmock/gmock.h>

#include <functional>
#include <utility>

#include "tests/jet/index/AddIndex.h"
#include "tests/store/StoreFixture.h"

namespace kestrelon::store {
namespace {

using test::ScopedTestDir;
using testing::ElementsAre;

class LoadDataTest : public StoreTest {
 protected:
  LoadDataTest() {
    Execute(InsertItem(L"OLD", L"1#OLD", L"old item"));
    AddCategory(nullptr, L"OLD", L"old category");
    win::SetCurrentCategory(parts, L"old category", L"OLD");
    list.Append(win::ListRow());
    before = ScopedTestDir::ReadBytes(Working());
  }

  // A failed load gave nothing up.
  void ExpectNothingChanged() {
    EXPECT_TRUE(ScopedTestDir::ReadBytes(Working()) == before);
    EXPECT_EQ(Shape(), L"OLD=old category");
    EXPECT_EQ(status.PanelText(2), L"OLD");
    EXPECT_EQ(list.Count(), 1u);
    ExpectOnlyWholeFiles();
  }
  void ExpectRefused() {
    world.answers = {IDOK};
    LoadData(parts, L"Data1.dat");
    ExpectBox(L"LoadData Error:");
    ExpectNothingChanged();
  }

  std::string before;
};

TEST_F(LoadDataTest, BringsTheSlotIntoTheWorkingDatabaseAndRebuildsTheTree) {
  MakeDatabase(Data(L"Data2.dat"), {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"A", L"B", L"child"),
                                    InsertItem(L"A", L"1#A", L"item")});

  LoadData(parts, L"Data2.dat");

  EXPECT_EQ(Shape(), L"A=top(B=child)");
  EXPECT_EQ(status.PanelText(1), L"Category : ");
  EXPECT_EQ(status.PanelText(2), L"");
  EXPECT_EQ(status.PanelText(3), L"0 Objects");
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"FileIndex", u"DefineName"}),
              ElementsAre(L"1#A|item"));
  ExpectOnlyWholeFiles();
}

TEST_F(LoadDataTest, LeavesTheSlotFileAsItIs) {
  MakeDatabase(Data(L"Data2.dat"), {InsertCategory(L"0_", L"A", L"top")});
  const std::string slot = ScopedTestDir::ReadBytes(Data(L"Data2.dat"));

  LoadData(parts, L"Data2.dat");
  Execute(InsertItem(L"A", L"1#A", L"only in the working database"));

  EXPECT_TRUE(ScopedTestDir::ReadBytes(Data(L"Data2.dat")) == slot);
}

TEST_F(LoadDataTest, IsSeenByTheSharedConnection) {
  MakeDatabase(Data(L"Data2.dat"), {InsertItem(L"A", L"1#A", L"item")});

  LoadData(parts, L"Data2.dat");

  Opened database(connection);
  EXPECT_EQ(database->Execute(L"DELETE FROM FTable WHERE FileIndex=\"1#A\""), 1u);
  EXPECT_EQ(database->Execute(L"DELETE FROM FTable WHERE FileIndex=\"1#OLD\""), 0u);
}

TEST_F(LoadDataTest, MakesASlotThatWasNeverSavedFromTheTemplateAndShowsAnEmptyTree) {
  LoadData(parts, L"Data1.dat");

  EXPECT_TRUE(ScopedTestDir::ReadBytes(Data(L"Data1.dat")) == TemplateBytes());
  EXPECT_EQ(tree.Count(), 0u);
  EXPECT_EQ(status.PanelText(1), L"Category : ");
  EXPECT_EQ(status.PanelText(2), L"");
  EXPECT_EQ(status.PanelText(3), L"0 Objects");
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_TRUE(ScopedTestDir::ReadBytes(Working()) == before) << "the working database stays as it was";
  EXPECT_EQ(dir.settings.Read(L"Data1"), L"2. Null") << "loading changes no label";
}

TEST_F(LoadDataTest, DoesNotTouchTheDatabaseSavedFlag) {
  dir.program.databaseSaved = true;

  LoadData(parts, L"Data1.dat");

  EXPECT_TRUE(dir.program.databaseSaved);
}

TEST_F(LoadDataTest, RefusesAFileThatIsNoDatabase) {
  dir.WriteFile(L"KestrelonData\\Data1.dat", "this is no database");
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesAnEmptyFile) {
  dir.WriteFile(L"KestrelonData\\Data1.dat", "");
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesAFileThatWasCutShort) {
  MakeDatabase(Data(L"whole.dat"), {InsertCategory(L"0_", L"A", L"top")});
  const std::string whole = ScopedTestDir::ReadBytes(Data(L"whole.dat"));
  dir.WriteFile(L"KestrelonData\\Data1.dat", whole.substr(0, whole.size() / 2));
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesADatabaseWithoutTheTables) {
  std::vector<jet::NewTable> tables = Schema();
  tables.pop_back();
  MakeDatabase(Data(L"Data1.dat"), {}, tables);
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesADatabaseWithoutOneOfTheColumns) {
  std::vector<jet::NewTable> tables = Schema();
  tables.front().columns.pop_back();
  MakeDatabase(Data(L"Data1.dat"), {}, tables);
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesASlotThatSomebodyElseHolds) {
  MakeDatabase(Data(L"Data1.dat"), {InsertCategory(L"0_", L"A", L"top")});
  const Locked locked(Data(L"Data1.dat"));
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesASlotThatSomebodyElseIsWriting) {
  MakeDatabase(Data(L"Data1.dat"), {InsertCategory(L"0_", L"A", L"top")});
  const win::Unique<HANDLE, ::CloseHandle> writer(CreateFileW(
      Data(L"Data1.dat").c_str(), GENERIC_READ | GENERIC_WRITE,
      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr));
  ASSERT_NE(writer.get(), INVALID_HANDLE_VALUE);
  ExpectRefused();
}

// Other programs have left files whose categories are not in the order of their numbers, by the index.
TEST_F(LoadDataTest, TakesASlotWhosePrimaryKeyIsOutOfOrderAndItCanBeSaved) {
  MakeDatabase(Data(L"Data1.dat"), {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"A", L"B", L"child"),
                                    InsertItem(L"B", L"1#B", L"item")});
  std::string bytes = ScopedTestDir::ReadBytes(Data(L"Data1.dat"));
  std::size_t page = 0;
  while (page < bytes.size() && bytes[page] != 4) page += 4096;  // a leaf of an index
  ASSERT_LT(page, bytes.size());
  bytes[page + 480 + 4] = static_cast<char>(bytes[page + 480 + 4] ^ 3);  // the number in its first entry
  dir.WriteFile(L"KestrelonData\\Data1.dat", bytes);
  ASSERT_THAT(FaultsOf(Data(L"Data1.dat")), testing::Not(testing::IsEmpty()));

  EXPECT_TRUE(LoadData(parts, L"Data1.dat"));
  EXPECT_EQ(Shape(), L"A=top(B=child)");
  world.answers = {IDOK};
  EXPECT_TRUE(SaveData(parts, L"Data2.dat", form.Handle()));
  EXPECT_EQ(world.boxes.size(), 1u) << "the question";
  EXPECT_EQ(ContentOf(Data(L"Data2.dat")), ContentOf(Data(L"Data1.dat")));
  EXPECT_THAT(FaultsOf(Data(L"Data2.dat")), testing::IsEmpty());
}

TEST_F(LoadDataTest, KeepsTheTreeWhenTheWorkingDatabaseCannotBeReplaced) {
  MakeDatabase(Data(L"Data1.dat"), {InsertCategory(L"0_", L"A", L"top")});
  world.answers = {IDOK};
  {
    const Locked locked(Working());
    LoadData(parts, L"Data1.dat");
  }
  ExpectBox(L"LoadData Error:");
  ExpectNothingChanged();
}

TEST_F(LoadDataTest, ReportsAMissingTemplateAndMakesNoSlot) {
  DeleteIfThere(Data(L"Temp.dat"));
  ExpectRefused();
  EXPECT_FALSE(FileExists(Data(L"Data1.dat")));
}

TEST_F(LoadDataTest, RefusesASlotWithACategoryWhoseParentIsMissing) {
  MakeDatabase(Data(L"Data1.dat"),
               {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"nobody", L"B", L"lost"),
                InsertItem(L"A", L"1#A", L"x")});
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesASlotWithAKeyTwice) {
  MakeDatabase(Data(L"Data1.dat"),
               {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"0_", L"A", L"again")});
  ExpectRefused();
}

TEST_F(LoadDataTest, RefusesASlotWhoseCategoriesAreEachOthersParents) {
  MakeDatabase(Data(L"Data1.dat"), {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"C", L"B", L"one"),
                                    InsertCategory(L"B", L"C", L"two")});
  ExpectRefused();
}

// A file that was copied while another program wrote to it.
TEST_F(LoadDataTest, RefusesASlotThatIsNotWhole) {
  MakeDatabase(Data(L"Data1.dat"), {InsertCategory(L"0_", L"A", L"top"), InsertItem(L"A", L"1#A", L"x")});
  std::string bytes = ScopedTestDir::ReadBytes(Data(L"Data1.dat"));
  // A page of rows that says it belongs to nobody's table.
  for (std::size_t page = bytes.size() - 4096; page > 0; page -= 4096) {
    if (bytes[page] != 1) continue;
    bytes[page + 4] = 0x7F;
    break;
  }
  dir.WriteFile(L"KestrelonData\\Data1.dat", bytes);
  ExpectRefused();
}

// Slots that were made or changed with Access.
class LoadForeignDataTest : public LoadDataTest {
 protected:
  // Statements of the kind that the program issues, on the working database, and what they must leave there.
  void ExpectWorkingDatabaseTakesChanges() {
    Execute(InsertItem(L"NEW", L"1#NEW", L"new item"));
    Execute(L"UPDATE FTable SET Comment=\"changed\" WHERE FileIndex=\"1#NEW\"");
    AddCategory(nullptr, L"NEW", L"new category");
    SaveTree(parts);
    EXPECT_THAT(
        RowsOf(Working(), L"SELECT * FROM FTable WHERE FileIndex=\"1#NEW\"",
               {u"TreeviewNode", u"DefineName", u"Filename", u"LocalFile", u"InsertTime", u"Comment"}),
        ElementsAre(L"NEW|new item|new item.txt|C:\\files\\new item.txt|1/1/2026 1:00:00 AM|changed"));
    EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM TreeviewTable WHERE key=\"NEW\"", {u"parent", u"text"}),
                ElementsAre(L"0_|new category"));
    EXPECT_TRUE(BackUpDatas(parts));
    ExpectWorkingDatabaseSound();
  }
  void ExpectWorkingDatabaseSound() {
    const auto database = jet::Database::Open(jet::OpenFile(Working(), jet::OpenMode::kRead), u"working");
    EXPECT_THAT(database->Check(), testing::IsEmpty());
  }
  // Opens a slot for changes that no statement makes.
  void Change(const std::function<void(jet::Database&)>& change) {
    const auto database =
        jet::Database::Open(jet::OpenFile(Data(L"Data1.dat"), jet::OpenMode::kReadWrite), u"slot");
    change(*database);
    database->Flush();
  }
  void ExpectRefusedWith(const wchar_t* text) {
    ExpectRefused();
    ASSERT_FALSE(world.boxes.empty());
    EXPECT_NE(world.boxes[0].text.find(text), std::wstring::npos) << Narrow(world.boxes[0].text);
  }
  static jet::NewColumn ColumnOf(const char16_t* name, jet::ColumnType type) {
    return {name, type, static_cast<std::uint16_t>(type == jet::ColumnType::kText ? 20 : 0), false};
  }
};

TEST_F(LoadForeignDataTest, RefusesEveryDatabaseOfAccessWithoutTheTables) {
  std::error_code failure;
  int count = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(KESTRELON_SAMPLES, failure)) {
    if (entry.path().extension() != L".mdb") continue;
    ++count;
    dir.WriteFile(L"KestrelonData\\Data1.dat", ScopedTestDir::ReadBytes(entry.path().wstring()));
    world.boxes.clear();
    ExpectRefusedWith(L"cannot find the input table or query 'FTable'");
  }
  if (count == 0) GTEST_SKIP() << "the samples are not there";
}

TEST_F(LoadForeignDataTest, AsksForNoPasswordAndRefuses) {
  std::string bytes = TemplateBytes();
  bytes[0x42] =
      static_cast<char>(bytes[0x42] ^ 's');  // a XOR with the stored password is one with its meaning
  dir.WriteFile(L"KestrelonData\\Data1.dat", bytes);
  ExpectRefusedWith(L"Not a valid password.");
}

TEST_F(LoadForeignDataTest, TakesMoreTablesMoreColumnsOfCategoriesAndOtherWidths) {
  std::vector<jet::NewTable> tables = Schema();
  for (jet::NewColumn& column : tables[0].columns) {
    if (column.type == jet::ColumnType::kText) column.characters = 255;
  }
  tables[0].columns[4] = {u"LOCALFILE", jet::ColumnType::kText, 255, false};
  tables[2].columns.insert(tables[2].columns.begin(), ColumnOf(u"Remark", jet::ColumnType::kText));
  tables[2].columns.push_back(ColumnOf(u"Weight", jet::ColumnType::kDouble));
  tables.push_back({u"Addresses", {ColumnOf(u"Name", jet::ColumnType::kText)}, u""});
  MakeDatabase(Data(L"Data1.dat"),
               {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"A", L"B", L"child"),
                InsertItem(L"A", L"1#A", L"item"), L"INSERT INTO Addresses VALUES('kept')"},
               tables);

  LoadData(parts, L"Data1.dat");

  EXPECT_EQ(Shape(), L"A=top(B=child)");
  ExpectWorkingDatabaseTakesChanges();
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM Addresses", {u"Name"}), ElementsAre(L"kept"));
}

TEST_F(LoadForeignDataTest, KeepsTheIndexesOfItsTables) {
  MakeDatabase(Data(L"Data1.dat"), {InsertCategory(L"0_", L"A", L"top"), InsertItem(L"A", L"1#A", L"item")});
  Change([](jet::Database& slot) {
    jet::AddIndex(slot, u"FTable", {{u"TreeviewNode"}, {u"DefineName", false}});
    jet::AddIndex(slot, u"FTable", {{u"FileIndex"}}, jet::RealIndex::kUnique);
    jet::AddIndex(slot, u"TreeviewTable", {{u"text"}}, jet::RealIndex::kIgnoreNulls);
  });

  LoadData(parts, L"Data1.dat");

  EXPECT_EQ(Shape(), L"A=top");
  ExpectWorkingDatabaseTakesChanges();
  EXPECT_THROW(Execute(InsertItem(L"A", L"1#A", L"again")), jet::Error);
  ExpectWorkingDatabaseSound();
}

TEST_F(LoadForeignDataTest, TakesATableThatLostAColumn) {
  std::vector<jet::NewTable> tables = Schema();
  tables[0].columns.insert(tables[0].columns.begin() + 2, ColumnOf(u"Dropped", jet::ColumnType::kText));
  MakeDatabase(Data(L"Data1.dat"),
               {InsertCategory(L"0_", L"A", L"top"),
                L"INSERT INTO FTable VALUES(\"A\",\"1#A\",\"gone\",\"item\",\"f\",\"l\",\"t\",\"c\")"},
               tables);
  Change([](jet::Database& slot) {  // its number stays, and so do its bytes in the rows
    jet::TableDef def = static_cast<jet::TableImpl&>(slot.OpenTable(u"FTable")).Internal().def;
    def.columns.erase(def.columns.begin() + 2);
    jet::WriteTableDef(static_cast<jet::DatabaseImpl&>(slot).Pages(), def);
  });

  LoadData(parts, L"Data1.dat");

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"FileIndex", u"DefineName", u"Comment"}),
              ElementsAre(L"1#A|item|c"));
  ExpectWorkingDatabaseTakesChanges();
}

TEST_F(LoadForeignDataTest, RefusesItemsWithAColumnMore) {
  std::vector<jet::NewTable> tables = Schema();
  tables[0].columns.push_back(ColumnOf(u"Rating", jet::ColumnType::kLong));
  MakeDatabase(Data(L"Data1.dat"), {}, tables);
  ExpectRefusedWith(L"The column 'Rating' of the table 'FTable' is one too many.");
}

TEST_F(LoadForeignDataTest, RefusesItemsInAnotherOrder) {
  std::vector<jet::NewTable> tables = Schema();
  std::swap(tables[0].columns[2], tables[0].columns[3]);
  MakeDatabase(Data(L"Data1.dat"), {}, tables);
  ExpectRefusedWith(L"The column 'DefineName' of the table 'FTable' is not in its place.");
}

TEST_F(LoadForeignDataTest, RefusesABackupInAnotherOrder) {
  std::vector<jet::NewTable> tables = Schema();
  std::swap(tables[1].columns[4], tables[1].columns[6]);
  MakeDatabase(Data(L"Data1.dat"), {}, tables);
  ExpectRefusedWith(L"The column 'LocalFile' of the table 'FBackup' is not in its place.");
}

TEST_F(LoadForeignDataTest, RefusesAColumnThatHoldsNoText) {
  std::vector<jet::NewTable> tables = Schema();
  tables[0].columns[2] = ColumnOf(u"DefineName", jet::ColumnType::kDate);
  MakeDatabase(Data(L"Data1.dat"), {}, tables);
  ExpectRefusedWith(L"The column 'DefineName' of the table 'FTable' does not hold text.");
}

TEST_F(LoadForeignDataTest, TakesATimeThatIsKeptAsADate) {
  std::vector<jet::NewTable> tables = Schema();
  for (const std::size_t table : {0, 1})
    tables[table].columns[5] = ColumnOf(u"InsertTime", jet::ColumnType::kDate);
  MakeDatabase(Data(L"Data1.dat"), {InsertItem(L"A", L"1#A", L"old"), InsertCategory(L"0_", L"A", L"top")},
               tables);

  LoadData(parts, L"Data1.dat");
  Execute(InsertItem(L"A", L"2#A", L"new"));

  EXPECT_TRUE(world.boxes.empty());
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"DefineName", u"InsertTime"}),
              ElementsAre(L"old|2026-01-01 01:00:00", L"new|2026-01-01 01:00:00"));
  ExpectWorkingDatabaseSound();
}

TEST_F(LoadForeignDataTest, RefusesCategoriesThatAreNotNumbered) {
  std::vector<jet::NewTable> tables = Schema();
  tables[2].columns[0].autoNumber = false;
  MakeDatabase(Data(L"Data1.dat"), {}, tables);
  ExpectRefusedWith(L"The column 'i' of the table 'TreeviewTable' does not number its rows.");
}

TEST_F(LoadForeignDataTest, RefusesAnIndexOverTextsThatHaveNoKey) {
  MakeDatabase(Data(L"Data1.dat"), {InsertItem(L"A", L"1#A", L"plain"), InsertItem(L"A", L"2#A", L"\x6587")});
  Change([](jet::Database& slot) {  // Access knows the keys; an index without its entries does as well here
    jet::AddIndex(slot, u"FTable", {{u"FileIndex"}});
    jet::Pager& pager = static_cast<jet::DatabaseImpl&>(slot).Pages();
    const auto& items = static_cast<jet::TableImpl&>(slot.OpenTable(u"FTable"));
    jet::TableDef def = jet::ReadTableDef(pager, items.Internal().def.page);
    def.indexes[0].columns[0].number = 2;  // DefineName
    jet::WriteTableDef(pager, def);
  });
  ExpectRefusedWith(L"has an index that cannot hold this text");
}

TEST_F(LoadForeignDataTest, RefusesARelationship) {
  MakeDatabase(Data(L"Data1.dat"), {});
  Change([](jet::Database& slot) {
    jet::AddIndex(slot, u"TreeviewTable", {{u"key"}}, 0, jet::LogicalIndex::kForeign);
  });
  ExpectRefusedWith(L"The table 'TreeviewTable' is part of a relationship");
}

}  // namespace
}  // namespace kestrelon::store
