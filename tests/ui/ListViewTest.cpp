#include "tests/ui/ListFixture.h"
#include "ui/win/ListView.h"

namespace kestrelon::win {
namespace {

using test::Names;
using ListViewTest = test::ListFixture;
using Rows = std::vector<std::size_t>;

TEST_F(ListViewTest, IsAVirtualReportListOfWholeRows) {
  const LONG_PTR style = GetWindowLongPtrW(list.Handle(), GWL_STYLE);
  EXPECT_EQ(style & LVS_TYPEMASK, LVS_REPORT);
  EXPECT_NE(style & LVS_OWNERDATA, 0);
  EXPECT_NE(style & LVS_SHOWSELALWAYS, 0);
  const LRESULT extended = SendMessageW(list.Handle(), LVM_GETEXTENDEDLISTVIEWSTYLE, 0, 0);
  EXPECT_NE(extended & LVS_EX_FULLROWSELECT, 0);
  EXPECT_NE(extended & LVS_EX_DOUBLEBUFFER, 0);
}

TEST_F(ListViewTest, KnowsItsColumns) {
  EXPECT_EQ(list.ColumnCount(), 6u);
  EXPECT_EQ(list.ColumnText(1), L"Alias");
  EXPECT_EQ(list.ColumnWidth(0), 22);
  EXPECT_EQ(list.ColumnWidth(5), 120);

  list.SetColumnText(5, L"\u5907\u6CE8");
  list.SetColumnText(2, L"");
  list.SetColumnWidth(4, 77);

  EXPECT_EQ(list.ColumnText(5), L"\u5907\u6CE8");
  EXPECT_EQ(list.ColumnText(2), L"");
  EXPECT_EQ(list.ColumnWidth(4), 77);
}

TEST_F(ListViewTest, HeaderTagsStartAtZeroAndAreKept) {
  EXPECT_EQ(list.HeaderTag(3), 0);
  list.SetHeaderTag(3, -1);
  EXPECT_EQ(list.HeaderTag(3), -1);
  EXPECT_EQ(list.HeaderTag(2), 0);
}

TEST_F(ListViewTest, ShowsItsRows) {
  Fill({L"one", L"two"});

  EXPECT_EQ(list.Count(), 2u);
  EXPECT_EQ(ShownCount(), 2);
  EXPECT_EQ(Shown(0, 0), L"");
  EXPECT_EQ(Shown(1, 1), L"two");
  EXPECT_EQ(Shown(1, 2), L"two.txt");
  EXPECT_EQ(Shown(0, 3), L"C:\\one.txt");
}

TEST_F(ListViewTest, ShowsTheThirdSmallIconInEveryRow) {
  Fill({L"one"});
  LVITEMW item{};
  item.mask = LVIF_IMAGE;
  SendMessageW(list.Handle(), LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  EXPECT_EQ(item.iImage, 2);
}

TEST_F(ListViewTest, CutsALongTextToTheBufferThatIsOffered) {
  std::vector<ListRow> rows(1);
  rows[0].Set({L"a", L"b", L"c", L"d", std::wstring(65535, L'x')}, L"t");
  list.SetRows(std::move(rows));
  EXPECT_EQ(Shown(0, 5), std::wstring(499, L'x'));
  EXPECT_EQ(list.Rows()[0].Text(5).size(), 65535u);
}

TEST_F(ListViewTest, NewRowsStartUnselectedAtTheTop) {
  Fill(Names(500, L"old"));
  list.SelectOnly(400);
  ASSERT_GT(SendMessageW(list.Handle(), LVM_GETTOPINDEX, 0, 0), 0);

  Fill(Names(450, L"new"));

  EXPECT_EQ(list.SelectedRows(), Rows{});
  EXPECT_EQ(list.SelectedRow(), std::nullopt);
  EXPECT_EQ(SendMessageW(list.Handle(), LVM_GETTOPINDEX, 0, 0), 0);
  EXPECT_EQ(ShownCount(), 450);
}

TEST_F(ListViewTest, AppendsAndChangesRows) {
  Fill({L"one"});
  list.Append(Row(L"two"));
  list.SetText(0, 5, L"a comment");

  EXPECT_EQ(ShownCount(), 2);
  EXPECT_EQ(Shown(1, 1), L"two");
  EXPECT_EQ(Shown(0, 5), L"a comment");
  EXPECT_THROW(list.SetText(9, 1, L"x"), std::out_of_range);
}

TEST_F(ListViewTest, RemovesRowsAndKeepsTheSelectionOfTheOthers) {
  Fill({L"a", L"b", L"c", L"d", L"e", L"f"});
  for (const std::size_t row : {1u, 2u, 5u}) list.Select(row, true);

  list.RemoveRows({0, 2, 4});

  EXPECT_EQ(Aliases(), (Names{L"b", L"d", L"f"}));
  EXPECT_EQ(ShownCount(), 3);
  EXPECT_EQ(SelectedAliases(), (Names{L"b", L"f"}));
}

TEST_F(ListViewTest, RemovesOneRow) {
  Fill({L"a", L"b"});
  list.Remove(0);
  EXPECT_EQ(Aliases(), Names{L"b"});
  EXPECT_EQ(Shown(0, 1), L"b");
}

TEST_F(ListViewTest, RemovingEveryRowLeavesAnEmptyList) {
  Fill({L"a", L"b", L"c"});
  list.SelectAll();
  list.RemoveRows({0, 1, 2});
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(ShownCount(), 0);
  EXPECT_EQ(list.SelectedRow(), std::nullopt);
}

TEST_F(ListViewTest, RemovingNothingChangesNothing) {
  Fill({L"a", L"b"});
  list.SelectOnly(1);
  list.RemoveRows({});
  EXPECT_EQ(SelectedAliases(), Names{L"b"});
}

TEST_F(ListViewTest, ClearTakesEverything) {
  Fill({L"a", L"b"});
  list.SelectAll();
  list.Clear();
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(ShownCount(), 0);
  EXPECT_EQ(list.SelectedRows(), Rows{});
}

TEST_F(ListViewTest, SortsByTextWithoutRegardToCase) {
  Fill({L"pear", L"Apple", L"apple2", L"PEACH", L"banana"});

  list.SortBy(1, false);
  EXPECT_EQ(Aliases(), (Names{L"Apple", L"apple2", L"banana", L"PEACH", L"pear"}));
  EXPECT_EQ(list.SortKey(), 1);

  list.SortBy(1, true);
  EXPECT_EQ(Aliases(), (Names{L"pear", L"PEACH", L"banana", L"apple2", L"Apple"}));
}

TEST_F(ListViewTest, SortsTimesAsTexts) {
  list.SetRows({Row(L"a", L"9/30/2005"), Row(L"b", L"10/1/2005"), Row(L"c", L"")});
  list.SortBy(4, false);
  EXPECT_EQ(Aliases(), (Names{L"c", L"b", L"a"}));
}

TEST_F(ListViewTest, SortsStably) {
  list.SetRows({Row(L"3", L"x"), Row(L"1", L"X"), Row(L"2", L"x"), Row(L"0", L"w")});
  list.SortBy(4, false);
  EXPECT_EQ(Aliases(), (Names{L"0", L"3", L"1", L"2"}));
  list.SortBy(4, true);
  EXPECT_EQ(Aliases(), (Names{L"3", L"1", L"2", L"0"}));
}

TEST_F(ListViewTest, SortsTheIconColumnWhereNothingDiffers) {
  Fill({L"b", L"a"});
  list.SortBy(0, false);
  EXPECT_EQ(Aliases(), (Names{L"b", L"a"}));
}

TEST_F(ListViewTest, TheSelectionAndTheFocusGoWithTheirRowsThroughASort) {
  Fill({L"d", L"b", L"c", L"a"});
  list.SelectOnly(0);
  list.Select(2, true);

  list.SortBy(1, false);

  EXPECT_EQ(SelectedAliases(), (Names{L"c", L"d"}));
  EXPECT_EQ(list.SelectedRow(), 3u);  // the focused one
}

TEST_F(ListViewTest, RowsAddedAfterASortStayWhereTheyWereAdded) {
  Fill({L"b", L"c"});
  list.SortBy(1, false);
  list.Append(Row(L"a"));
  EXPECT_EQ(Aliases(), (Names{L"b", L"c", L"a"}));
}

TEST_F(ListViewTest, SelectsAndDeselectsRows) {
  Fill({L"a", L"b", L"c"});
  list.Select(0, true);
  list.Select(2, true);
  EXPECT_EQ(list.SelectedRows(), (Rows{0, 2}));
  EXPECT_TRUE(list.IsSelected(2));
  list.Select(0, false);
  EXPECT_EQ(list.SelectedRows(), Rows{2});
  EXPECT_FALSE(list.IsSelected(0));
}

TEST_F(ListViewTest, SelectsAllAndNone) {
  Fill({L"a", L"b", L"c"});
  list.SelectAll();
  EXPECT_EQ(list.SelectedRows(), (Rows{0, 1, 2}));
  list.SelectNone();
  EXPECT_EQ(list.SelectedRows(), Rows{});
}

TEST_F(ListViewTest, SelectAllInAnEmptyListDoesNothing) {
  list.SelectAll();
  EXPECT_EQ(list.SelectedRows(), Rows{});
}

TEST_F(ListViewTest, SelectOnlySelectsFocusesAndShowsOneRow) {
  Fill(Names(300, L"x"));
  list.SelectAll();

  list.SelectOnly(250);

  EXPECT_EQ(list.SelectedRows(), Rows{250});
  EXPECT_EQ(list.SelectedRow(), 250u);
  const LRESULT top = SendMessageW(list.Handle(), LVM_GETTOPINDEX, 0, 0);
  EXPECT_LE(top, 250);
  EXPECT_GT(top, 200);
}

TEST_F(ListViewTest, TheSelectedRowIsTheFocusedOneElseTheFirst) {
  Fill({L"a", L"b", L"c"});
  list.SelectOnly(2);
  list.Select(0, true);
  EXPECT_EQ(list.SelectedRow(), 2u);
  list.Select(2, false);
  EXPECT_EQ(list.SelectedRow(), 0u);
}

TEST_F(ListViewTest, FindsTheRowAnywhereAlongIt) {
  Fill({L"a", L"b"});
  const POINT second = OnRow(1);
  EXPECT_EQ(list.HitTest(second), 1u);
  EXPECT_EQ(list.HitTest({400, second.y}), 1u);
  EXPECT_EQ(list.HitTest(BelowTheRows()), std::nullopt);
}

TEST_F(ListViewTest, GoesWithItsParentWindow) {
  Fill({L"a"});
  host.Destroy();
  EXPECT_EQ(list.Handle(), nullptr);
}

}  // namespace
}  // namespace kestrelon::win
