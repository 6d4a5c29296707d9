#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class ShowData : public MainFormFixture {
 protected:
  void StartWithItems() {
    Start();
    AddItem(L"A_", 2, {L"zebra", L"z.txt", L"C:\\dir\\z.txt", L"11/15/2026 1:20:05 PM", L"first in"});
    AddItem(L"B_", 1, {L"other"});
    AddItem(L"A_", 1, {L"ant", L"a.txt", L"C:\\dir\\a.txt", L"1/2/2026 3:04:05 AM", L""});
    AddItem(L"A_", 7, {L"", L".profile", L"C:\\.profile", L"", L"it's so"});
  }
};

TEST_F(ShowData, ShowsEveryFieldInItsColumnAndKeepsTheFileIndexAsTag) {
  StartWithItems();

  items::ShowData(Parts(), L"A_");

  ASSERT_EQ(List().Count(), 3u);
  EXPECT_EQ(Cell(0, 0), L"");
  EXPECT_EQ(Cell(0, 1), L"zebra");
  EXPECT_EQ(Cell(0, 2), L"z.txt");
  EXPECT_EQ(Cell(0, 3), L"C:\\dir\\z.txt");
  EXPECT_EQ(Cell(0, 4), L"11/15/2026 1:20:05 PM");
  EXPECT_EQ(Cell(0, 5), L"first in");
  EXPECT_EQ(List().Rows()[0].Tag(), L"2#A_");
  EXPECT_EQ(List().Rows()[2].Tag(), L"7#A_");
  EXPECT_EQ(Cell(2, 5), L"it's so");
}

TEST_F(ShowData, ShowsTheItemsOfThatCategoryAloneInTheDatabasesOwnOrder) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  EXPECT_EQ(Column(1), (std::vector<std::wstring>{L"zebra", L"ant", L""}));
  EXPECT_EQ(ListView_GetItemCount(List().Handle()), 3);
}

TEST_F(ShowData, GivesEveryRowTheThirdSmallIcon) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  LVITEMW item{};
  item.mask = LVIF_IMAGE;
  item.iItem = 1;
  SendMessageW(List().Handle(), LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  EXPECT_EQ(item.iImage, 2);
  EXPECT_EQ(ImageList_GetImageCount(ListView_GetImageList(List().Handle(), LVSIL_SMALL)), 3);
}

TEST_F(ShowData, CountsTheObjectsInPanel3) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  EXPECT_EQ(Panel(3), L"3 Objects");
  items::ShowData(Parts(), L"B_");
  EXPECT_EQ(Panel(3), L"1 Objects");
}

TEST_F(ShowData, OfACategoryWithoutItemsIsAnEmptyListWith0Objects) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");

  items::ShowData(Parts(), L"none_");

  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(ListView_GetItemCount(List().Handle()), 0);
  EXPECT_EQ(Panel(3), L"0 Objects");
}

TEST_F(ShowData, ReplacesTheRowsThatWereThere) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  items::ShowData(Parts(), L"A_");
  EXPECT_EQ(List().Count(), 3u);
}

TEST_F(ShowData, LeavesNothingSelectedAndTheItemCommandsDisabled) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  Click(List().Handle(), MiddleOfRow(1));
  ASSERT_TRUE(Menus().IsEnabled(L"meu_openfile"));

  items::ShowData(Parts(), L"A_");

  EXPECT_EQ(List().SelectedRow(), std::nullopt);
  EXPECT_FALSE(Menus().IsEnabled(L"meu_openfile"));
  EXPECT_FALSE(Parts().Toolbar1.IsEnabled(6));
}

TEST_F(ShowData, ClosesTheConnectionAgain) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(ShowData, WorksOnAConnectionThatIsOpenAndLeavesItOpen) {
  StartWithItems();
  store::Opened connection(Parts().connection);

  items::ShowData(Parts(), L"A_");

  EXPECT_EQ(List().Count(), 3u);
  EXPECT_TRUE(Parts().connection.IsOpen());
}

TEST_F(ShowData, SortsNothingByItself) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  ClickHeader(1);
  ASSERT_EQ(Column(1), (std::vector<std::wstring>{L"", L"ant", L"zebra"}));

  items::ShowData(Parts(), L"A_");

  EXPECT_EQ(Column(1), (std::vector<std::wstring>{L"zebra", L"ant", L""}));
}

TEST_F(ShowData, PaintsOnceAtTheEnd) {
  StartWithItems();
  const MessageSpy redraw(List().Handle(), WM_SETREDRAW);
  const MessageSpy paint(List().Handle(), WM_PAINT);

  items::ShowData(Parts(), L"A_");

  EXPECT_GE(redraw.Count(), 2);
  EXPECT_EQ(paint.Count(), 0);
  EXPECT_TRUE(GetUpdateRect(List().Handle(), nullptr, FALSE));
}

TEST_F(ShowData, ShowsTheFailureOfItsStatementInItsOwnBoxAndAnEmptyList) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  world.answers = {IDOK};

  items::ShowData(Parts(), L"a\"b");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"ShowData Error:");
  EXPECT_TRUE(world.boxes[0].text.starts_with(L"Unkonw Error:")) << Narrow(world.boxes[0].text);
  EXPECT_EQ(world.boxes[0].flags, static_cast<UINT>(MB_OK | MB_ICONEXCLAMATION));
  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(Panel(3), L"0 Objects");
  EXPECT_FALSE(Parts().connection.IsOpen());
}

TEST_F(ShowData, ShowsAMissingDatabaseInItsOwnBox) {
  StartWithItems();
  Parts().connection.Forget();
  DeleteIfThere(program.dataFolder + L"default.dat");
  world.answers = {IDOK};

  items::ShowData(Parts(), L"A_");

  ASSERT_EQ(world.boxes.size(), 1u);
  EXPECT_EQ(world.boxes[0].title, L"ShowData Error:");
  EXPECT_EQ(List().Count(), 0u);
}

TEST_F(ShowData, HoldsTenThousandItems) {
  Start();
  {
    store::Opened connection(Parts().connection);
    for (int i = 1; i <= 10000; ++i) {
      const std::wstring number = std::to_wstring(i);
      connection->Execute(L"INSERT INTO FTable VALUES(\"A_\",\"" + number + L"#A_\",\"n" + number +
                          L"\",\"f\",\"p\",\"t\",'')");
    }
    connection.Close();
  }

  items::ShowData(Parts(), L"A_");

  EXPECT_EQ(Panel(3), L"10000 Objects");
  EXPECT_EQ(Cell(9999, 1), L"n10000");
}

TEST_F(ShowData, ClearListEmptiesTheListAndItsCount) {
  StartWithItems();
  items::ShowData(Parts(), L"A_");
  items::ClearList(Parts());
  EXPECT_EQ(ListView_GetItemCount(List().Handle()), 0);
  EXPECT_EQ(Panel(3), L"0 Objects");
}

}  // namespace
}  // namespace kestrelon::test
