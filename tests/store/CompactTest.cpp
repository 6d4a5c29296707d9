#include <gmock/gmock.h>

#include "tests/store/StoreFixture.h"

namespace kestrelon::store {
namespace {

using test::ScopedTestDir;
using testing::ElementsAre;

class CompactTest : public StoreTest {
 protected:
  bool Compact(bool backupOriginal = false) {
    return CompactJetDatabase(world, form.Handle(), Working(), backupOriginal);
  }
};

TEST_F(CompactTest, KeepsTheContentAndRemovesItsScratchFile) {
  Execute(InsertItem(L"A", L"1#A", L"one"));
  Execute(InsertItem(L"A", L"2#A", L"two"));
  Execute(L"DELETE FROM FTable WHERE FileIndex=\"1#A\"");

  EXPECT_TRUE(Compact());

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"FileIndex"}), ElementsAre(L"2#A"));
  EXPECT_FALSE(FileExists(temporary + L"temp.dat"));
  EXPECT_FALSE(FileExists(temporary + L"backup.dat"));
  ExpectOnlyWholeFiles();
}

TEST_F(CompactTest, DoesNothingWhenThereIsNoFile) {
  DeleteIfThere(Working());

  EXPECT_TRUE(Compact(true));

  EXPECT_FALSE(FileExists(Working()));
  EXPECT_FALSE(FileExists(temporary + L"backup.dat"));
}

TEST_F(CompactTest, LeavesACopyOfTheOriginalWhenAsked) {
  Execute(InsertItem(L"A", L"1#A", L"one"));
  const std::string original = ScopedTestDir::ReadBytes(Working());
  dir.WriteFile(L"tmp\\backup.dat", "an older backup");

  EXPECT_TRUE(Compact(true));

  EXPECT_TRUE(ScopedTestDir::ReadBytes(temporary + L"backup.dat") == original);
  EXPECT_FALSE(FileExists(temporary + L"temp.dat"));
}

TEST_F(CompactTest, ReplacesAScratchFileThatWasLeftBehind) {
  Execute(InsertItem(L"A", L"1#A", L"one"));
  dir.WriteFile(L"tmp\\temp.dat", "left behind");

  EXPECT_TRUE(Compact());

  EXPECT_THAT(RowsOf(Working(), L"SELECT * FROM FTable", {u"FileIndex"}), ElementsAre(L"1#A"));
}

TEST_F(CompactTest, ReportsAFileThatIsNoDatabaseAndLeavesItWhole) {
  dir.WriteFile(L"KestrelonData\\default.dat", "this is no database");
  world.answers = {IDOK};

  EXPECT_FALSE(Compact());

  ExpectBox(L"CompactJetDatabase Error");
  EXPECT_EQ(world.boxes[0].owner, form.Handle());
  EXPECT_EQ(ScopedTestDir::ReadBytes(Working()), "this is no database");
  EXPECT_FALSE(FileExists(temporary + L"temp.dat"));
  ExpectOnlyWholeFiles();
}

TEST_F(CompactTest, ReportsAFileThatSomebodyElseHolds) {
  world.answers = {IDOK};
  {
    const Locked locked(Working());
    EXPECT_FALSE(Compact());
  }
  ExpectBox(L"CompactJetDatabase Error");
  EXPECT_TRUE(ScopedTestDir::ReadBytes(Working()) == TemplateBytes());
  EXPECT_FALSE(FileExists(temporary + L"temp.dat"));
}

TEST_F(CompactTest, ReportsATemporaryFolderThatIsGone) {
  SetEnvironmentVariableW(L"TMP", dir.Path(L"missing").c_str());
  world.answers = {IDOK};

  EXPECT_FALSE(Compact());

  ExpectBox(L"CompactJetDatabase Error");
  EXPECT_TRUE(ScopedTestDir::ReadBytes(Working()) == TemplateBytes());
}

}  // namespace
}  // namespace kestrelon::store
