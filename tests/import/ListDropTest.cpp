#include <ole2.h>

#include "app/base/GetFileInfo.h"
#include "import/ListDrop.h"
#include "items/FileListDataObject.h"
#include "tests/support/MainFormFixture.h"
#include "tests/support/TestDataObject.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

class ListDrop : public MainFormFixture {
 protected:
  void StartWithCategory() {
    Start();
    SelectCategory(AddCategory(L"K_", L"category"));
    program.databaseSaved = true;
  }
  DWORD Over(IDataObject& data) { return imports::ListView1_OLEDragOver(Parts(), data, {10, 10}); }
  DWORD Drop(IDataObject& data) { return imports::ListView1_OLEDragDrop(Parts(), data, {10, 10}); }
  DWORD Drop(const Texts& paths) { return Drop(*items::MakeFileListDataObject(paths).get()); }
  Texts Items() { return Query(L"SELECT TreeviewNode, FileIndex, LocalFile FROM FTable", 3); }
};

TEST_F(ListDrop, OffersToCopyFilesAndNothingElse) {
  StartWithCategory();
  EXPECT_EQ(Over(*items::MakeFileListDataObject({L"C:\\a.txt"}).get()), static_cast<DWORD>(DROPEFFECT_COPY));
  TestDataObject text = TestDataObject::Text();
  EXPECT_EQ(Over(text), static_cast<DWORD>(DROPEFFECT_NONE));
}

TEST_F(ListDrop, FiveFilesGetTheNumbers1To5InTheirOrderAndOneInsertTime) {
  StartWithCategory();
  world.localTime = [this] {
    ++world.now.wSecond;  // the clock goes on from file to file
    return world.now;
  };
  Texts paths;
  for (const wchar_t* name : {L"e.txt", L"d.txt", L"图 c.txt", L"b.tar.gz", L"a"}) {
    paths.push_back(dir.WriteFile(std::wstring(L"f\\") + name));
  }

  EXPECT_EQ(Drop(paths), static_cast<DWORD>(DROPEFFECT_COPY));

  EXPECT_EQ(Items(), (Texts{L"K_|1#K_|" + paths[0], L"K_|2#K_|" + paths[1], L"K_|3#K_|" + paths[2],
                            L"K_|4#K_|" + paths[3], L"K_|5#K_|" + paths[4]}));
  EXPECT_EQ(Column(1), (Texts{L"e", L"d", L"图 c", L"b.tar", L"a"}));
  EXPECT_EQ(Column(2), (Texts{L"e.txt", L"d.txt", L"图 c.txt", L"b.tar.gz", L"a"}));
  EXPECT_EQ(Column(4), Texts(5, L"11/15/2026 1:20:06 PM"));
  EXPECT_EQ(Panel(3), L"5 Objects");
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(ListDrop, NumbersContinueThoseOfTheCategory) {
  StartWithCategory();
  Drop({L"C:\\a.txt", L"C:\\b.txt"});
  Drop({L"C:\\a.txt"});
  EXPECT_EQ(Items(), (Texts{L"K_|1#K_|C:\\a.txt", L"K_|2#K_|C:\\b.txt", L"K_|3#K_|C:\\a.txt"}));
}

TEST_F(ListDrop, NumbersGoOnPast16BitsUpTo32) {
  StartWithCategory();
  AddItem(L"K_", 32767, {L"old"});
  Drop({L"C:\\a.txt"});
  EXPECT_EQ(Items().back(), L"K_|32768#K_|C:\\a.txt");
  Execute(L"DELETE FROM FTable WHERE FileIndex=\"32768#K_\"");
  AddItem(L"K_", 2147483647, {L"last"});
  world.answers = {IDOK};

  EXPECT_EQ(Drop({L"C:\\over.txt"}), static_cast<DWORD>(DROPEFFECT_NONE));

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:Overflow")) << Narrow(world.boxes[0].text);
  EXPECT_EQ(Items().size(), 2u);
}

TEST_F(ListDrop, AFolderIsLeftOutAndLeavesNoGapInTheNumbers) {
  StartWithCategory();
  const std::wstring one = dir.WriteFile(L"f\\one.txt"), inside = dir.WriteFile(L"f\\folder\\inside.txt"),
                     two = dir.WriteFile(L"f\\two.txt");
  Drop({one, dir.Path(L"f\\folder"), two});
  EXPECT_EQ(Items(), (Texts{L"K_|1#K_|" + one, L"K_|2#K_|" + two}));
}

TEST_F(ListDrop, AFolderWithAnyFurtherAttributeIsTakenLikeAFile) {
  StartWithCategory();
  dir.WriteFile(L"f\\locked\\x.txt");
  const std::wstring locked = dir.Path(L"f\\locked");
  // Not every file system keeps the first of these for a folder.
  SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
  const win::Finally unlock([&] { SetFileAttributesW(locked.c_str(), FILE_ATTRIBUTE_NORMAL); });
  Drop({locked});
  EXPECT_EQ(Items(), Texts{L"K_|1#K_|" + locked});
}

TEST_F(ListDrop, OfAFolderAloneClearsTheDatabaseSavedFlagAllTheSame) {
  StartWithCategory();
  dir.WriteFile(L"f\\x.txt");
  Drop({dir.Path(L"f")});
  EXPECT_EQ(Items(), Texts{});
  EXPECT_FALSE(program.databaseSaved);
}

TEST_F(ListDrop, OfATextInsertsNothing) {
  StartWithCategory();
  TestDataObject text = TestDataObject::Text();
  Drop(text);
  EXPECT_EQ(Items(), Texts{});
  EXPECT_EQ(List().Count(), 0u);
}

TEST_F(ListDrop, OfTheListsOwnRowsInsertsNothingAndEndsTheInternalDrag) {
  StartWithCategory();
  Parts().internalDrag = true;
  EXPECT_EQ(Drop({L"C:\\a.txt"}), static_cast<DWORD>(DROPEFFECT_NONE));
  EXPECT_EQ(Items(), Texts{});
  EXPECT_TRUE(program.databaseSaved);
  EXPECT_FALSE(Parts().internalDrag);
  Drop({L"C:\\a.txt"});
  EXPECT_EQ(Items().size(), 1u) << "the next drop comes from outside";
}

TEST_F(ListDrop, WithoutACategoryAsksForOneInItsOwnWords) {
  Start();
  program.databaseSaved = true;
  world.answers = {IDOK};

  EXPECT_EQ(Drop({L"C:\\a.txt"}), static_cast<DWORD>(DROPEFFECT_NONE));

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].text, L"Please select a category to import!");
  EXPECT_EQ(world.boxes[0].title, L"Kestrelon");
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONINFORMATION));
  EXPECT_EQ(Items(), Texts{});
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(ListDrop, IsTakenWhetherDraggingInTheTreeIsEnabledOrNot) {
  StartWithCategory();
  ASSERT_FALSE(Menus().IsChecked(L"meu_aa"));
  Drop({L"C:\\a.txt"});
  Command(L"meu_aa");
  Drop({L"C:\\b.txt"});
  EXPECT_EQ(Column(2), (Texts{L"a.txt", L"b.txt"}));
}

TEST_F(ListDrop, ShowsItsBoxWhenTheSourceDoesNotGiveTheFilesItOffers) {
  StartWithCategory();
  TestDataObject data = TestDataObject::Files({L"C:\\a.txt"});
  data.broken = true;
  world.answers = {IDOK};
  EXPECT_EQ(Drop(data), static_cast<DWORD>(DROPEFFECT_NONE));
  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"ListView1_OLEDragDrop Error:");
  EXPECT_EQ(Items(), Texts{});
  EXPECT_TRUE(program.databaseSaved);
}

TEST_F(ListDrop, ShowsAFailureInItsOwnBoxAndKeepsTheRowsBeforeIt) {
  StartWithCategory();
  world.answers = {IDOK};

  EXPECT_EQ(Drop({L"C:\\good.txt", L"C:\\ba\"d.txt", L"C:\\never.txt"}), static_cast<DWORD>(DROPEFFECT_NONE));

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"ListView1_OLEDragDrop Error:");
  EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:")) << Narrow(world.boxes[0].text);
  EXPECT_EQ(Items(), Texts{L"K_|1#K_|C:\\good.txt"});
  EXPECT_EQ(Column(2), Texts{L"good.txt"});
  EXPECT_FALSE(program.databaseSaved);
  EXPECT_FALSE(Parts().connection.IsOpen());
}

}  // namespace
}  // namespace kestrelon::test
