// A click on a column's header.

#include <functional>

#include "items/ShowData.h"
#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

class ColumnClick : public MainFormFixture {
 protected:
  // Aliases with the file name, in the order of the database.
  void StartWith(const std::vector<std::pair<const wchar_t*, const wchar_t*>>& items) {
    Start();
    int number = 0;
    for (const auto& [alias, file] : items) AddItem(L"A_", ++number, {alias, file});
    items::ShowData(Parts(), L"A_");
  }
  DWORD HeaderFormat(int column) {
    HDITEMW item{};
    item.mask = HDI_FORMAT | HDI_IMAGE;
    SendMessageW(ListView_GetHeader(List().Handle()), HDM_GETITEMW, static_cast<WPARAM>(column),
                 reinterpret_cast<LPARAM>(&item));
    image_ = item.iImage;
    return static_cast<DWORD>(item.fmt);
  }
  int image_ = -1;  // of the header that HeaderFormat() looked at
};

TEST_F(ColumnClick, OnTheSameHeaderThreeTimesGivesAscendingDescendingAscending) {
  StartWith({{L"b", L"1"}, {L"c", L"2"}, {L"a", L"3"}});
  ClickHeader(1);
  EXPECT_EQ(Column(1), (Texts{L"a", L"b", L"c"}));
  ClickHeader(1);
  EXPECT_EQ(Column(1), (Texts{L"c", L"b", L"a"}));
  ClickHeader(1);
  EXPECT_EQ(Column(1), (Texts{L"a", L"b", L"c"}));
}

TEST_F(ColumnClick, OnAnotherColumnSortsByItAscending) {
  StartWith({{L"b", L"1"}, {L"c", L"3"}, {L"a", L"2"}});
  ClickHeader(1);
  ClickHeader(1);
  ClickHeader(2);
  EXPECT_EQ(Column(2), (Texts{L"1", L"2", L"3"}));
}

TEST_F(ColumnClick, BackOnAColumnUsesItsRememberedDirectionAndTurnsItAtTheNextClick) {
  StartWith({{L"b", L"1"}, {L"c", L"2"}, {L"a", L"3"}});
  ClickHeader(1);
  ClickHeader(1);
  ClickHeader(2);

  ClickHeader(1);
  EXPECT_EQ(Column(1), (Texts{L"c", L"b", L"a"}));
  ClickHeader(1);
  EXPECT_EQ(Column(1), (Texts{L"a", L"b", L"c"}));
}

TEST_F(ColumnClick, KeepsTheDirectionInTheHeadersTag) {
  StartWith({{L"b", L"1"}});
  ClickHeader(1);
  EXPECT_EQ(List().HeaderTag(1), 0);
  ClickHeader(1);
  EXPECT_EQ(List().HeaderTag(1), -1);
  EXPECT_EQ(List().HeaderTag(2), 0);
  ClickHeader(1);
  EXPECT_EQ(List().HeaderTag(1), 0);
}

TEST_F(ColumnClick, ComparesTimesAsText) {
  Start();
  AddItem(L"A_", 1, {L"a", L"f", L"p", L"9/30/2005"});
  AddItem(L"A_", 2, {L"b", L"f", L"p", L"10/1/2005"});
  items::ShowData(Parts(), L"A_");

  ClickHeader(4);

  EXPECT_EQ(Column(4), (Texts{L"10/1/2005", L"9/30/2005"}));
}

TEST_F(ColumnClick, ComparesWithoutRegardToCase) {
  StartWith({{L"b", L"1"}, {L"A", L"2"}, {L"a", L"3"}, {L"B", L"4"}});
  ClickHeader(1);
  EXPECT_EQ(Column(2), (Texts{L"2", L"3", L"1", L"4"}));
}

TEST_F(ColumnClick, KeepsTheOrderOfEqualTextsInBothDirections) {
  StartWith({{L"x", L"1"}, {L"y", L"2"}, {L"x", L"3"}, {L"y", L"4"}});
  ClickHeader(1);
  EXPECT_EQ(Column(2), (Texts{L"1", L"3", L"2", L"4"}));
  ClickHeader(1);
  EXPECT_EQ(Column(2), (Texts{L"2", L"4", L"1", L"3"}));
}

TEST_F(ColumnClick, MovesTagsWithTheirRows) {
  StartWith({{L"b", L"1"}, {L"a", L"2"}});
  ClickHeader(1);
  EXPECT_EQ(List().Rows()[0].Tag(), L"2#A_");
  EXPECT_EQ(List().Rows()[1].Tag(), L"1#A_");
}

TEST_F(ColumnClick, KeepsTheSelectionWithItsRows) {
  StartWith({{L"d", L"1"}, {L"c", L"2"}, {L"b", L"3"}, {L"a", L"4"}});
  List().Select(0, true);
  List().Select(2, true);

  ClickHeader(1);

  Texts selected;
  for (const std::size_t row : List().SelectedRows()) selected.push_back(Cell(row, 1));
  EXPECT_EQ(selected, (Texts{L"b", L"d"}));
}

TEST_F(ColumnClick, SortsOnceSoThatRowsAddedLaterStandAtTheEnd) {
  StartWith({{L"b", L"1"}, {L"c", L"2"}});
  ClickHeader(1);
  win::ListRow row;
  row.Set({L"a", L"3", L"", L"", L""}, L"3#A_");
  List().Append(row);
  EXPECT_EQ(Column(1), (Texts{L"b", L"c", L"a"}));
}

TEST_F(ColumnClick, ShowsTheArrowOfTheDirectionOnThatColumnAlone) {
  StartWith({{L"b", L"1"}});

  ClickHeader(1);
  EXPECT_EQ(HeaderFormat(1), static_cast<DWORD>(HDF_STRING | HDF_IMAGE | HDF_BITMAP_ON_RIGHT));
  EXPECT_EQ(image_, 0);

  ClickHeader(1);
  EXPECT_EQ(HeaderFormat(1), static_cast<DWORD>(HDF_STRING | HDF_IMAGE | HDF_BITMAP_ON_RIGHT));
  EXPECT_EQ(image_, 1);

  ClickHeader(2);
  EXPECT_EQ(HeaderFormat(2), static_cast<DWORD>(HDF_STRING | HDF_IMAGE | HDF_BITMAP_ON_RIGHT));
  EXPECT_EQ(image_, 0);
  EXPECT_EQ(HeaderFormat(1), static_cast<DWORD>(HDF_STRING));
}

TEST_F(ColumnClick, TheArrowGoesWhenTheListIsFilledAnew) {
  const std::function<void()> ways[] = {
      [this] { items::ShowData(Parts(), L"A_"); },
      [this] { items::ClearList(Parts()); },
  };
  for (const auto& way : ways) {
    End();
    StartWith({{L"b", L"1"}, {L"a", L"2"}});
    ClickHeader(1);
    ASSERT_TRUE(List().InSortOrder());
    ASSERT_NE(HeaderFormat(1) & HDF_IMAGE, 0u);

    way();

    EXPECT_EQ(HeaderFormat(1), static_cast<DWORD>(HDF_STRING));
    EXPECT_FALSE(List().InSortOrder());
  }
}

TEST_F(ColumnClick, TheDirectionTurnsOnWhenTheSameColumnIsClickedAfterTheListWasFilledAnew) {
  StartWith({{L"b", L"1"}, {L"c", L"2"}, {L"a", L"3"}});
  ClickHeader(1);
  items::ShowData(Parts(), L"A_");
  ASSERT_EQ(Column(1), (Texts{L"b", L"c", L"a"}));

  ClickHeader(1);

  EXPECT_EQ(Column(1), (Texts{L"c", L"b", L"a"}));
  EXPECT_EQ(HeaderFormat(1), static_cast<DWORD>(HDF_STRING | HDF_IMAGE | HDF_BITMAP_ON_RIGHT));
  EXPECT_EQ(image_, 1);
}

TEST_F(ColumnClick, TheArrowStaysAwayWhenTheMonitorChanges) {
  StartWith({{L"b", L"1"}});
  ClickHeader(1);
  items::ShowData(Parts(), L"A_");
  RECT place{0, 0, 800, 600};
  SendMessageW(form->Handle(), WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&place));
  EXPECT_EQ(HeaderFormat(1) & HDF_IMAGE, 0u);
}

TEST_F(ColumnClick, MakesTheArrowsAtTheFirstSortAndKeepsThem) {
  StartWith({{L"b", L"1"}});
  EXPECT_EQ(form->ListHelpers().sortIcons, nullptr);
  ClickHeader(1);
  const auto* icons = form->ListHelpers().sortIcons.get();
  ClickHeader(2);
  EXPECT_EQ(form->ListHelpers().sortIcons.get(), icons);
}

TEST_F(ColumnClick, OnAnEmptyListIsHarmless) {
  Start();
  ClickHeader(3);
  ClickHeader(3);
  EXPECT_EQ(List().Count(), 0u);
  EXPECT_EQ(List().HeaderTag(3), -1);
}

}  // namespace
}  // namespace kestrelon::test
