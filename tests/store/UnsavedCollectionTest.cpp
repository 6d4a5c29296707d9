// What is in no slot: kept beside the working database, set aside when it goes away, recovered after a crash.

#include <gmock/gmock.h>

#include <filesystem>

#include "tests/store/UnsavedFixture.h"

namespace kestrelon::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(UnsavedCollectionTest, IsRecoveredWithItemsAndTreeAfterACrash) {
  Work();
  EXPECT_TRUE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
  EXPECT_THAT(FaultsOf(Unsaved()), IsEmpty());
  ExpectNothingBesideTheDatabases();
}

TEST_F(UnsavedCollectionTest, HasTheTreeThatWasKeptLast) {
  Work();
  tree.SetText(*tree.Find(L"B"), L"renamed");
  unsaved->Keep();
  AddCategory(nullptr, L"C", L"not kept yet");
  EXPECT_TRUE(Restart());
  EXPECT_THAT(ContentOf(Unsaved()), ElementsAre(L"B|1#B|item 1", L"0_|A|top", L"A|B|renamed"));
}

TEST_F(UnsavedCollectionTest, HasTheTreeOfTheMomentInWhichItemsWereLastChanged) {
  Work();
  AddCategory(nullptr, L"C", L"third");
  AddItem(L"C", 1);
  EXPECT_TRUE(Restart());
  EXPECT_THAT(ContentOf(Unsaved()),
              ElementsAre(L"B|1#B|item 1", L"C|1#C|item 1", L"0_|A|top", L"A|B|child", L"0_|C|third"));
}

TEST_F(UnsavedCollectionTest, IsARecoveredTreeWithoutItemsToo) {
  AddCategory(nullptr, L"A", L"alone");
  unsaved->Keep();
  EXPECT_TRUE(Restart());
  EXPECT_THAT(ContentOf(Unsaved()), ElementsAre(L"0_|A|alone"));
}

TEST_F(UnsavedCollectionTest, LeavesTheTableOfCategoriesAloneUntilItIsSaved) {
  Work();
  unsaved->Keep();
  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM TreeviewTable", {u"key"}), IsEmpty());
}

TEST_F(UnsavedCollectionTest, DoesNotComeBackOnceItIsInASlot) {
  Work();
  ASSERT_TRUE(Save(1));
  EXPECT_FALSE(unsaved->Any());
  EXPECT_FALSE(Restart());
  EXPECT_FALSE(IsThere());
}

TEST_F(UnsavedCollectionTest, ComesBackWhenItWasChangedAfterItWasSaved) {
  Work();
  ASSERT_TRUE(Save(1));
  AddItem(L"A", 1);
  EXPECT_TRUE(unsaved->Any());
  EXPECT_TRUE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()).size(), Worked().size() + 1);
}

TEST_F(UnsavedCollectionTest, ReplacesNothingWhenItIsEmpty) {
  Work();
  ASSERT_TRUE(Restart());
  AddItem(L"nowhere", 1);  // an item that no category shows
  EXPECT_FALSE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
}

TEST_F(UnsavedCollectionTest, ReplacesNothingWhenASlotHoldsTheSame) {
  Work();
  ASSERT_TRUE(Save(3));
  AddItem(L"B", 2);
  Execute(L"DELETE FROM FTable WHERE FileIndex=\"2#B\"");
  EXPECT_TRUE(unsaved->Any());
  EXPECT_FALSE(Restart());
  EXPECT_FALSE(IsThere());
}

TEST_F(UnsavedCollectionTest, IsReplacedByTheNextOne) {
  Work();
  ASSERT_TRUE(Restart());
  AddCategory(nullptr, L"N", L"next");
  unsaved->SetAside();
  EXPECT_THAT(ContentOf(Unsaved()), ElementsAre(L"0_|N|next"));
}

TEST_F(UnsavedCollectionTest, TellsTheTimeOfTheLastChange) {
  EXPECT_FALSE(UnsavedTime(dir.program));
  SYSTEMTIME before, after;
  GetLocalTime(&before);
  Work();
  GetLocalTime(&after);
  ASSERT_TRUE(Restart());
  const auto time = UnsavedTime(dir.program);
  ASSERT_TRUE(time);
  const auto number = [](const SYSTEMTIME& t) {
    FILETIME file;
    SystemTimeToFileTime(&t, &file);
    return std::uint64_t{file.dwHighDateTime} << 32 | file.dwLowDateTime;
  };
  EXPECT_GE(number(*time) + 20'000'000, number(before));
  EXPECT_LE(number(*time), number(after) + 20'000'000);
}

TEST_F(UnsavedCollectionTest, IsSetAsideWhenAnotherOneIsLoadedOverIt) {
  MakeDatabase(Data(L"Data2.dat"), {InsertCategory(L"0_", L"S", L"slot")});
  Work();
  EXPECT_TRUE(LoadData(parts, L"Data2.dat"));
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
  EXPECT_EQ(Shape(), L"S=slot");
  EXPECT_FALSE(unsaved->Any());
  EXPECT_FALSE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
}

TEST_F(UnsavedCollectionTest, IsSetAsideWhenASlotNeverSavedIsLoadedOverIt) {
  Work();
  EXPECT_TRUE(LoadData(parts, L"Data0.dat"));
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
  EXPECT_EQ(Shape(), L"");
}

TEST_F(UnsavedCollectionTest, OpensLikeASlotAndIsStillUnsavedThen) {
  Work();
  ASSERT_TRUE(Restart());
  EXPECT_TRUE(LoadData(parts, kUnsavedFile));
  EXPECT_EQ(Shape(), L"A=top(B=child)");
  EXPECT_TRUE(unsaved->Any());
  std::filesystem::remove(std::filesystem::path(Unsaved()));
  EXPECT_TRUE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
}

TEST_F(UnsavedCollectionTest, ChangesPlacesWithTheUnsavedOneThatIsShown) {
  Work();
  ASSERT_TRUE(Restart());
  AddCategory(nullptr, L"N", L"newer");
  EXPECT_TRUE(LoadData(parts, kUnsavedFile));
  EXPECT_EQ(Shape(), L"A=top(B=child)");
  EXPECT_THAT(ContentOf(Unsaved()), ElementsAre(L"0_|N|newer"));
  EXPECT_TRUE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()), Worked()) << "what was shown when the program crashed";
}

TEST_F(UnsavedCollectionTest, IsFoundAgainAfterTheNextCrash) {
  Work();
  ASSERT_TRUE(Restart());
  ASSERT_TRUE(LoadData(parts, kUnsavedFile));
  EXPECT_TRUE(Restart()) << "nothing was changed, but it is in no slot";
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
}

TEST_F(UnsavedCollectionTest, CountsAsChangedOnceItIsOpened) {
  Work();
  ASSERT_TRUE(Restart());
  dir.program.databaseSaved = true;
  ASSERT_TRUE(LoadData(parts, kUnsavedFile));
  EXPECT_FALSE(dir.program.databaseSaved);
}

TEST_F(UnsavedCollectionTest, StaysWhenALoadFails) {
  dir.WriteFile(L"KestrelonData\\Data1.dat", "no database");
  Work();
  EXPECT_FALSE([&] {
    world.answers = {IDOK};
    return LoadData(parts, L"Data1.dat");
  }());
  EXPECT_EQ(Shape(), L"A=top(B=child)");
  EXPECT_TRUE(unsaved->Any());
  EXPECT_TRUE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
}

TEST_F(UnsavedCollectionTest, IsGoneWithAnEndThatLeavesNothing) {
  Work();
  unsaved->SetAside();
  unsaved->Finish();
  ExpectNothingBesideTheDatabases();
  EXPECT_FALSE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()), Worked());
}

TEST_F(UnsavedCollectionTest, HasACategoryForEachItemWhenTheTreeIsLost) {
  Work();
  AddItem(L"A", 1);
  unsaved.reset();
  for (const auto& entry : std::filesystem::directory_iterator(dir.program.dataFolder)) {
    if (entry.path().wstring().find(L".tree") != std::wstring::npos)
      dir.WriteFile(L"KestrelonData\\" + entry.path().filename().wstring(), "damaged");
  }
  EXPECT_TRUE(Restart());
  EXPECT_THAT(ContentOf(Unsaved()), ElementsAre(L"A|1#A|item 1", L"B|1#B|item 1", L"0_|A|A", L"0_|B|B"));
}

TEST_F(UnsavedCollectionTest, KeepsTheItemsThoughTheTreeCannotBeWritten) {
  Work();
  AddCategory(nullptr, L"C", L"third");
  // A folder stands where the next file of the tree would be made.
  std::filesystem::create_directory(Working() + L".tree2");
  AddItem(L"A", 1);
  EXPECT_TRUE(unsaved->TreeChanged());
  EXPECT_THROW(unsaved->Keep(), std::exception);
  std::filesystem::remove(std::filesystem::path(Working() + L".tree2"));
  unsaved->Keep();
  EXPECT_FALSE(unsaved->TreeChanged());
  EXPECT_TRUE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()).size(), 5u);
}

TEST_F(UnsavedCollectionTest, LeavesNoOldFilesOfTheTreeBehind) {
  for (int i = 0; i < 10; ++i) {
    AddCategory(nullptr, L"K" + std::to_wstring(i), L"category");
    unsaved->Keep();
  }
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir.program.dataFolder))
    files += entry.path().wstring().find(L".tree") != std::wstring::npos;
  EXPECT_EQ(files, 1);
}

TEST_F(UnsavedCollectionTest, HasACategoryForItemsThatCameAfterTheLastTreeThatCouldBeWritten) {
  Work();
  AddCategory(nullptr, L"C", L"third");
  std::filesystem::create_directory(Working() + L".tree2");
  AddItem(L"C", 1);
  std::filesystem::remove(std::filesystem::path(Working() + L".tree2"));
  EXPECT_TRUE(Restart());
  EXPECT_THAT(ContentOf(Unsaved()),
              ElementsAre(L"B|1#B|item 1", L"C|1#C|item 1", L"0_|A|top", L"A|B|child", L"0_|C|C"));
}

// The collection was saved, so that its categories are in the working database itself.
TEST_F(UnsavedCollectionTest, HasACategoryForItemsThoughNoTreeCouldBeWrittenSinceItWasSaved) {
  Work();
  ASSERT_TRUE(Save(1));
  AddCategory(nullptr, L"C", L"third");
  std::filesystem::create_directory(Working() + L".tree2");
  AddItem(L"C", 1);
  std::filesystem::remove(std::filesystem::path(Working() + L".tree2"));
  EXPECT_TRUE(Restart());
  EXPECT_THAT(ContentOf(Unsaved()),
              ElementsAre(L"B|1#B|item 1", L"C|1#C|item 1", L"0_|A|top", L"A|B|child", L"0_|C|C"));
}

TEST_F(UnsavedCollectionTest, IsRecoveredFromFilesThatBecameReadOnly) {
  Work();
  ASSERT_TRUE(Restart());
  Work();
  AddItem(L"A", 1);
  connection.Forget();
  for (const std::wstring& path : {Working(), Unsaved()}) {
    ASSERT_TRUE(SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY));
  }
  EXPECT_TRUE(Restart());
  EXPECT_EQ(ContentOf(Unsaved()).size(), Worked().size() + 1);
}

TEST_F(UnsavedCollectionTest, ThatCannotBeRecoveredIsPutAwayWhole) {
  Work();
  connection.Forget();
  unsaved.reset();
  const std::wstring kept = PutUnrecoveredAway(dir.program);
  EXPECT_TRUE(FileExists(kept));
  EXPECT_FALSE(FileExists(Working()));
  int beside = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir.program.dataFolder)) {
    const std::wstring name = entry.path().wstring();
    EXPECT_FALSE(name.starts_with(Working() + L".")) << Narrow(name);
    beside += name.starts_with(kept + L".");
  }
  EXPECT_GT(beside, 1) << "the log and the tree";
  dir.WriteFile(L"KestrelonData\\default.dat", TemplateBytes());
  EXPECT_NE(PutUnrecoveredAway(dir.program), kept);
  dir.WriteFile(L"KestrelonData\\default.dat", TemplateBytes());
}

}  // namespace
}  // namespace kestrelon::store
