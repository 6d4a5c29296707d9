#include <gmock/gmock.h>

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

TEST_F(LoadDataTest, StopsAtARowWithoutItsParentAndKeepsTheNodesBefore) {
  MakeDatabase(Data(L"Data1.dat"),
               {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"nobody", L"B", L"orphan"),
                InsertCategory(L"0_", L"C", L"never read")});
  world.answers = {IDOK};

  LoadData(parts, L"Data1.dat");

  ExpectBox(L"LoadData Error:");
  EXPECT_EQ(Shape(), L"A=top");
}

TEST_F(LoadDataTest, StopsAtADuplicateKeyAndKeepsTheNodesBefore) {
  MakeDatabase(Data(L"Data1.dat"),
               {InsertCategory(L"0_", L"A", L"top"), InsertCategory(L"0_", L"A", L"again")});
  world.answers = {IDOK};

  LoadData(parts, L"Data1.dat");

  ExpectBox(L"LoadData Error:");
  EXPECT_EQ(Shape(), L"A=top");
}

}  // namespace
}  // namespace kestrelon::store
