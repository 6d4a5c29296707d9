// The main window on a monitor with another number of pixels an inch.

#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class Dpi : public MainFormFixture {
 protected:
  void ChangeTo(WORD dpi, int width, int height) {
    const RECT suggested{0, 0, width, height};
    SendMessageW(form->Handle(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
    win::DoEvents();
  }
  int WidthOf(HWND child) {
    RECT place;
    GetWindowRect(child, &place);
    return place.right - place.left;
  }
  int InnerWidth() {
    RECT inner;
    GetClientRect(form->Handle(), &inner);
    return inner.right;
  }
};

TEST_F(Dpi, KeepsTheRelationsOfThePanes) {
  Start();
  ASSERT_EQ(WidthOf(Tree().Handle()), 200);

  ChangeTo(144, 1000, 700);

  EXPECT_DOUBLE_EQ(form->BarLeft(), 3000);
  EXPECT_EQ(WidthOf(Tree().Handle()), 300);
  EXPECT_EQ(WidthOf(form->Picture1().Handle()), win::PixelsFromTwips(75, 144));
  EXPECT_EQ(WidthOf(List().Handle()), win::PixelsFromTwips(InnerWidth() * 10.0 - 3080, 144));
}

// The width of an icon in pixels.
int WidthOfIcon(HICON icon) {
  ICONINFO parts{};
  if (!GetIconInfo(icon, &parts)) return 0;
  const win::UniqueBitmap colors(parts.hbmColor), mask(parts.hbmMask);
  BITMAP bitmap{};
  return GetObjectW(colors.get(), sizeof bitmap, &bitmap) == 0 ? 0 : bitmap.bmWidth;
}

TEST_F(Dpi, ShowsTheProgramsIconInTheSizeOfTheMonitor) {
  Start();
  const HWND window = form->Handle();
  EXPECT_EQ(WidthOfIcon(reinterpret_cast<HICON>(GetClassLongPtrW(window, GCLP_HICON))), 32);
  EXPECT_EQ(WidthOfIcon(reinterpret_cast<HICON>(GetClassLongPtrW(window, GCLP_HICONSM))), 16);

  ChangeTo(144, 1000, 700);

  EXPECT_EQ(WidthOfIcon(reinterpret_cast<HICON>(SendMessageW(window, WM_GETICON, ICON_BIG, 0))), 48);
  EXPECT_EQ(WidthOfIcon(reinterpret_cast<HICON>(SendMessageW(window, WM_GETICON, ICON_SMALL, 0))), 24);
}

TEST_F(Dpi, TakesTheSuggestedPlace) {
  Start();
  ChangeTo(144, 1000, 700);
  RECT window;
  GetWindowRect(form->Handle(), &window);
  EXPECT_EQ(window.right - window.left, 1000);
  EXPECT_EQ(window.bottom - window.top, 700);
}

TEST_F(Dpi, KeepsTheRelationsOfTheColumns) {
  Start();
  std::vector<int> before;
  for (std::size_t column = 0; column < 6; ++column) before.push_back(List().ColumnWidth(column));

  ChangeTo(144, 1000, 700);

  for (std::size_t column = 0; column < 6; ++column) {
    EXPECT_NEAR(List().ColumnWidth(column), before[column] * 1.5, 0.5) << column;
  }
}

TEST_F(Dpi, KeepsTheTextsOfWidthsThatTheUserLeftAlone) {
  Start();
  const std::string before = ScopedTestDir::ReadBytes(program.settingsFile);
  ChangeTo(144, 1000, 700);
  program.databaseSaved = true;
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_EQ(ScopedTestDir::ReadBytes(program.settingsFile), before);
}

TEST_F(Dpi, WritesAWidthThatTheUserChangedInTheSameMeasure) {
  Start();
  ChangeTo(144, 1000, 700);
  List().SetColumnWidth(1, 300);
  program.databaseSaved = true;
  SendMessageW(form->Handle(), WM_CLOSE, 0, 0);
  EXPECT_EQ(dir.settings.Read(L"DefineName_Length"), L"3000");
}

TEST_F(Dpi, MakesThePicturesAnew) {
  Start();
  ChangeTo(192, 1000, 700);
  int width = 0, height = 0;
  ImageList_GetIconSize(TreeView_GetImageList(Tree().Handle(), TVSIL_NORMAL), &width, &height);
  EXPECT_EQ(width, 32);
  ImageList_GetIconSize(ListView_GetImageList(List().Handle(), LVSIL_SMALL), &width, &height);
  EXPECT_EQ(width, 32);
  const auto toolbar =
      reinterpret_cast<HIMAGELIST>(SendMessageW(Parts().Toolbar1.Handle(), TB_GETIMAGELIST, 0, 0));
  ImageList_GetIconSize(toolbar, &width, &height);
  EXPECT_EQ(width, 48);
}

TEST_F(Dpi, KeepsTheArrowOnTheSortedColumn) {
  Start();
  ClickHeader(2);

  ChangeTo(144, 1000, 700);

  HDITEMW item{};
  item.mask = HDI_FORMAT | HDI_IMAGE;
  SendMessageW(ListView_GetHeader(List().Handle()), HDM_GETITEMW, 2, reinterpret_cast<LPARAM>(&item));
  EXPECT_EQ(item.fmt, HDF_STRING | HDF_IMAGE | HDF_BITMAP_ON_RIGHT);
}

TEST_F(Dpi, ThereAndBackIsAsBefore) {
  Start();
  std::vector<int> before;
  for (std::size_t column = 0; column < 6; ++column) before.push_back(List().ColumnWidth(column));
  ChangeTo(192, 1000, 700);
  ChangeTo(96, 900, 560);
  for (std::size_t column = 0; column < 6; ++column) EXPECT_EQ(List().ColumnWidth(column), before[column]);
  EXPECT_EQ(WidthOf(Tree().Handle()), 200);
}

}  // namespace
}  // namespace kestrelon::test
