#include <gmock/gmock.h>

#include <atomic>
#include <thread>

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

// Another program of the same user, on a data folder of its own, packs into the same scratch file.
TEST_F(CompactTest, WaitsForAnotherProgramThatPacks) {
  const std::wstring name = L"Global\\KestrelonPacking-" + IdentityOf(temporary);
  std::atomic<bool> begun = false, ended = false;
  std::thread other([&] {
    const win::Unique<HANDLE, ::CloseHandle> turn(CreateMutexW(nullptr, TRUE, name.c_str()));
    dir.WriteFile(L"tmp\\temp.dat", "of the other");
    begun = true;
    Sleep(200);
    EXPECT_EQ(ScopedTestDir::ReadBytes(temporary + L"temp.dat"), "of the other");
    ended = true;
    ReleaseMutex(turn.get());
  });
  while (!begun) Sleep(1);
  EXPECT_TRUE(Compact());
  EXPECT_TRUE(ended);
  other.join();
}

}  // namespace
}  // namespace kestrelon::store
