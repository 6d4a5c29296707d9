#include <gtest/gtest.h>

#include "tests/ui/Host.h"
#include "ui/win/Toolbar.h"

namespace kestrelon::win {
namespace {

UniqueImageList Pictures(int side) {
  UniqueImageList list(ImageList_Create(side, side, ILC_COLOR32 | ILC_MASK, 4, 1));
  for (int i = 0; i < 4; ++i) ImageList_AddIcon(list.get(), LoadIconW(nullptr, IDI_APPLICATION));
  return list;
}

struct ToolbarFixture : testing::Test {
  ToolbarFixture() {
    bar.Create(host.Handle(), 51, {{700, 0, L"Add"}, {701, 1, L"Rename"}, {}, {702, 2, L"Delete"}},
               Pictures(24));
    host.toolbar = &bar;
  }
  std::wstring TipAsked(UINT id) {
    NMTTDISPINFOW info{};
    info.hdr.hwndFrom = reinterpret_cast<HWND>(SendMessageW(bar.Handle(), TB_GETTOOLTIPS, 0, 0));
    info.hdr.code = TTN_GETDISPINFOW;
    info.hdr.idFrom = id;
    info.lpszText = info.szText;
    SendMessageW(host.Handle(), WM_NOTIFY, id, reinterpret_cast<LPARAM>(&info));
    return info.lpszText;
  }
  test::Host host;
  Toolbar bar;
};
using ToolbarTest = ToolbarFixture;

TEST_F(ToolbarTest, CountsSeparatorsAsButtons) {
  EXPECT_EQ(SendMessageW(bar.Handle(), TB_BUTTONCOUNT, 0, 0), 4);
  TBBUTTON third{};
  SendMessageW(bar.Handle(), TB_GETBUTTON, 2, reinterpret_cast<LPARAM>(&third));
  EXPECT_EQ(third.fsStyle & BTNS_SEP, BTNS_SEP);
}

TEST_F(ToolbarTest, IsFlatAndHasTooltips) {
  const LONG_PTR style = GetWindowLongPtrW(bar.Handle(), GWL_STYLE);
  EXPECT_NE(style & TBSTYLE_FLAT, 0);
  EXPECT_NE(style & TBSTYLE_TOOLTIPS, 0);
}

TEST_F(ToolbarTest, DisablesAndEnablesOneButton) {
  EXPECT_TRUE(bar.IsEnabled(4));

  bar.Enable(4, false);

  EXPECT_FALSE(bar.IsEnabled(4));
  EXPECT_TRUE(bar.IsEnabled(2));
  EXPECT_EQ(SendMessageW(bar.Handle(), TB_ISBUTTONENABLED, 702, 0), 0);

  bar.Enable(4, true);
  EXPECT_TRUE(bar.IsEnabled(4));
}

TEST_F(ToolbarTest, AnswersForTheTipsOfItsOwnButtonsOnly) {
  EXPECT_EQ(TipAsked(701), L"Rename");
  EXPECT_EQ(TipAsked(999), L"");

  bar.SetTip(2, std::wstring(200, L'r'));  // longer than the buffer that the tooltip offers

  EXPECT_EQ(bar.Tip(2), std::wstring(200, L'r'));
  EXPECT_EQ(TipAsked(701), std::wstring(200, L'r'));
}

TEST_F(ToolbarTest, GrowsWithItsPictures) {
  const int before = bar.Height();

  bar.SetImages(Pictures(48));
  bar.AutoSize();

  EXPECT_GE(bar.Height(), before + 20);
}

}  // namespace
}  // namespace kestrelon::win
