#include "app/base/Win32.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include "tests/support/ScopedTestDir.h"
#include "tests/ui/Host.h"
#include "ui/cLVHeaderSortIcons.h"

namespace kestrelon::ui {
namespace {

// The bytes of an icon file with one picture of 16 x 16 pixels, all of one colour.
std::string IconFile(unsigned char shade) {
  constexpr int kSide = 16, kMaskBytes = kSide * 4;
  std::string bytes;
  const auto put = [&](unsigned value, int size) {
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i)));
  };
  const unsigned pixels = kSide * kSide * 4, whole = 40 + pixels + kMaskBytes;
  put(0, 2), put(1, 2), put(1, 2);  // one icon
  put(kSide, 1), put(kSide, 1), put(0, 2), put(1, 2), put(32, 2), put(whole, 4), put(22, 4);
  put(40, 4), put(kSide, 4), put(2 * kSide, 4), put(1, 2), put(32, 2), put(0, 4), put(pixels, 4);
  bytes.append(16, '\0');
  for (int i = 0; i < kSide * kSide; ++i) put(0xFF000000u | shade * 0x10101u, 4);
  bytes.append(kMaskBytes, '\0');
  return bytes;
}

struct SortIconsFixture : testing::Test {
  SortIconsFixture() {
    dir.WriteFile(L"Program\\ico\\sortascending.ico", IconFile(10));
    dir.WriteFile(L"Program\\ico\\sortdescending.ico", IconFile(200));
    list = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_REPORT, 0, 0, 500, 300,
                           host.Handle(), nullptr, GetModuleHandleW(nullptr), nullptr);
    AddColumn(L"Alias", LVCFMT_LEFT);
    AddColumn(L"Name", LVCFMT_LEFT);
    AddColumn(L"Size", LVCFMT_RIGHT);
    header = reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
  }
  void AddColumn(const wchar_t* text, int alignment) {
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
    column.fmt = alignment;
    column.cx = 100;
    column.iSubItem = columns;
    column.pszText = const_cast<wchar_t*>(text);
    SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(columns++), reinterpret_cast<LPARAM>(&column));
  }
  HDITEMW Item(int column) {
    HDITEMW item{};
    item.mask = HDI_FORMAT | HDI_IMAGE;
    SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(column), reinterpret_cast<LPARAM>(&item));
    return item;
  }
  int Format(int column) {
    return Item(column).fmt & (HDF_JUSTIFYMASK | HDF_IMAGE | HDF_BITMAP_ON_RIGHT | HDF_STRING);
  }
  HIMAGELIST HeaderImages() {
    return reinterpret_cast<HIMAGELIST>(SendMessageW(header, HDM_GETIMAGELIST, 0, 0));
  }

  test::ScopedTestDir dir;
  test::Host host;
  HWND list = nullptr, header = nullptr;
  int columns = 0;
};
using HeaderSortIconsTest = SortIconsFixture;

TEST_F(HeaderSortIconsTest, LoadsBothPicturesAtOnce) {
  const cLVHeaderSortIcons icons(dir.program.programFolder);

  ASSERT_EQ(ImageList_GetImageCount(icons.Images()), 2);
  int width = 0, height = 0;
  ImageList_GetIconSize(icons.Images(), &width, &height);
  EXPECT_EQ(width, 16);
  EXPECT_EQ(height, 16);
}

TEST_F(HeaderSortIconsTest, TakesAFolderWithoutABackslashToo) {
  std::wstring folder = dir.program.programFolder;
  folder.pop_back();
  const cLVHeaderSortIcons icons(folder);
  EXPECT_EQ(ImageList_GetImageCount(icons.Images()), 2);
}

TEST_F(HeaderSortIconsTest, AnAscendingColumnShowsTheFirstPictureAtTheRightOfItsText) {
  cLVHeaderSortIcons icons(dir.program.programFolder);

  icons.ShowSortIcon(list, 1, false);

  EXPECT_EQ(HeaderImages(), icons.Images());
  EXPECT_EQ(Format(1), HDF_LEFT | HDF_STRING | HDF_IMAGE | HDF_BITMAP_ON_RIGHT);
  EXPECT_EQ(Item(1).iImage, 0);
}

TEST_F(HeaderSortIconsTest, ADescendingColumnShowsTheSecondPicture) {
  cLVHeaderSortIcons icons(dir.program.programFolder);
  icons.ShowSortIcon(list, 0, true);
  EXPECT_EQ(Item(0).iImage, 1);
}

TEST_F(HeaderSortIconsTest, ARightAlignedSortedColumnShowsItsArrowAtTheLeftOfTheCaption) {
  cLVHeaderSortIcons icons(dir.program.programFolder);
  icons.ShowSortIcon(list, 2, false);
  EXPECT_EQ(Format(2), HDF_RIGHT | HDF_STRING | HDF_IMAGE);
}

TEST_F(HeaderSortIconsTest, OtherColumnsLoseTheirArrowAndKeepTheirAlignment) {
  cLVHeaderSortIcons icons(dir.program.programFolder);
  icons.ShowSortIcon(list, 2, false);
  icons.ShowSortIcon(list, 0, false);

  EXPECT_EQ(Format(2), HDF_RIGHT | HDF_STRING);
  EXPECT_EQ(Format(1), HDF_LEFT | HDF_STRING);
}

TEST_F(HeaderSortIconsTest, TheCaptionsStay) {
  cLVHeaderSortIcons icons(dir.program.programFolder);
  icons.ShowSortIcon(list, 1, false);
  wchar_t text[50] = {};
  LVCOLUMNW column{};
  column.mask = LVCF_TEXT;
  column.pszText = text;
  column.cchTextMax = 50;
  SendMessageW(list, LVM_GETCOLUMNW, 1, reinterpret_cast<LPARAM>(&column));
  EXPECT_STREQ(text, L"Name");
}

TEST_F(HeaderSortIconsTest, AListInIconViewIsLeftAlone) {
  SetWindowLongPtrW(list, GWL_STYLE,
                    (GetWindowLongPtrW(list, GWL_STYLE) & ~LONG_PTR{LVS_TYPEMASK}) | LVS_ICON);
  const int before = Format(1);
  cLVHeaderSortIcons icons(dir.program.programFolder);

  icons.ShowSortIcon(list, 1, false);

  EXPECT_EQ(Format(1), before);
  EXPECT_EQ(HeaderImages(), nullptr);
}

TEST_F(HeaderSortIconsTest, WithoutTheFilesThereIsNoArrow) {
  cLVHeaderSortIcons icons(dir.Path(L"nowhere"));
  icons.ShowSortIcon(list, 1, false);
  EXPECT_EQ(Format(1), HDF_LEFT | HDF_STRING);
}

}  // namespace
}  // namespace kestrelon::ui
