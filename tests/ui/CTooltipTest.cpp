#include <gtest/gtest.h>

#include "tests/ui/Host.h"
#include "ui/CTooltip.h"

namespace kestrelon::ui {
namespace {

struct TooltipFixture : testing::Test {
  TooltipFixture()
      : control(CreateWindowExW(0, L"STATIC", L"", WS_CHILD | WS_VISIBLE | SS_NOTIFY, 10, 10, 300, 200,
                                host.Handle(), nullptr, GetModuleHandleW(nullptr), nullptr)) {}
  LONG_PTR Style() { return GetWindowLongPtrW(tip.Handle(), GWL_STYLE); }
  TTTOOLINFOW Tool() {
    TTTOOLINFOW info{};
    info.cbSize = CTooltip::kToolInfoSize;
    info.hwnd = control;
    info.uId = reinterpret_cast<UINT_PTR>(control);
    info.lpszText = text;
    SendMessageW(tip.Handle(), TTM_GETTOOLINFOW, 0, reinterpret_cast<LPARAM>(&info));
    return info;
  }
  // What the tip would take of the screen; the control does not tell its title to every caller that asks.
  SIZE Size() {
    TTTOOLINFOW info = Tool();
    const LRESULT size = SendMessageW(tip.Handle(), TTM_GETBUBBLESIZE, 0, reinterpret_cast<LPARAM>(&info));
    return {LOWORD(size), HIWORD(size)};
  }
  LONG Height() { return Size().cy; }
  test::Host host;
  HWND control;
  CTooltip tip;
  wchar_t text[2000] = {};
};
using CTooltipTest = TooltipFixture;

TEST_F(CTooltipTest, ARectangularTipAlwaysShowsAndTakesNoPrefixes) {
  tip.Create(control);
  wchar_t name[64] = {};
  GetClassNameW(tip.Handle(), name, 64);
  EXPECT_STREQ(name, L"tooltips_class32");
  EXPECT_EQ(Style() & 0xFF, 3);
  EXPECT_EQ(tip.ParentControl(), control);
}

TEST_F(CTooltipTest, ABalloonHasTheBalloonStyleToo) {
  tip.SetStyle(TipStyle::kBalloon);
  tip.Create(control);
  EXPECT_EQ(Style() & 0xFF, 67);
}

TEST_F(CTooltipTest, TheToolIsTheWholeControl) {
  tip.SetTipText(L"the text");
  tip.Create(control);

  EXPECT_EQ(SendMessageW(tip.Handle(), TTM_GETTOOLCOUNT, 0, 0), 1);
  EXPECT_EQ(Tool().uFlags, 17u);
  EXPECT_STREQ(text, L"the text");
}

TEST_F(CTooltipTest, ACentredTipSaysSo) {
  tip.SetCentered(true);
  tip.Create(control);
  EXPECT_EQ(Tool().uFlags, 19u);
}

TEST_F(CTooltipTest, TheToolsDescriptionHasASizeThatA64BitTooltipTakes) {
  EXPECT_EQ(CTooltip::kToolInfoSize, 56u);
  EXPECT_EQ(CTooltip::kToolInfoSize, TTTOOLINFOW_V1_SIZE);
}

TEST_F(CTooltipTest, WithAnEmptyTitleAndNoIconThereIsNoTitleLine) {
  tip.SetTipText(L"one line");
  tip.Create(control);
  const LONG without = Height();

  tip.SetTitle(L"Title");
  tip.Create(control);
  const LONG with = Height();
  tip.SetTitle(L"");
  tip.Create(control);

  EXPECT_GT(with, without);
  EXPECT_EQ(Height(), without);
}

TEST_F(CTooltipTest, AnIconAloneMakesATitleLine) {
  tip.SetTipText(L"one line");
  tip.Create(control);
  const LONG without = Height();
  tip.SetIcon(TipIcon::kWarning);
  tip.Create(control);
  EXPECT_GT(Height(), without);
}

TEST_F(CTooltipTest, TitleAndIconChangeAtOnce) {
  tip.SetTipText(L"x");
  tip.Create(control);
  const LONG without = Height();

  tip.SetTitle(L"later");
  const SIZE titled = Size();
  EXPECT_GT(titled.cy, without);
  EXPECT_EQ(tip.Title(), L"later");

  tip.SetIcon(TipIcon::kError);
  EXPECT_GT(Size().cx, titled.cx);
  EXPECT_EQ(tip.Icon(), TipIcon::kError);
}

TEST_F(CTooltipTest, ALongTitleShowsItsBeginning) {
  tip.SetTitle(std::wstring(250, L't'));
  tip.Create(control);
  const LONG cut = Size().cx;
  EXPECT_EQ(tip.Title().size(), 250u);

  tip.SetTitle(std::wstring(99, L't'));

  EXPECT_EQ(Size().cx, cut);
}

TEST_F(CTooltipTest, TheTextChangesAtOnce) {
  tip.SetTipText(L"before");
  tip.Create(control);
  tip.SetTipText(L"after");
  Tool();
  EXPECT_STREQ(text, L"after");
  EXPECT_EQ(tip.TipText(), L"after");
}

TEST_F(CTooltipTest, ColoursAreSetWhenAskedForAndChangeAtOnce) {
  tip.SetForeColor(RGB(1, 2, 3));
  tip.SetBackColor(RGB(4, 5, 6));
  tip.Create(control);
  EXPECT_EQ(SendMessageW(tip.Handle(), TTM_GETTIPTEXTCOLOR, 0, 0), RGB(1, 2, 3));
  EXPECT_EQ(SendMessageW(tip.Handle(), TTM_GETTIPBKCOLOR, 0, 0), RGB(4, 5, 6));

  tip.SetForeColor(RGB(7, 8, 9));
  tip.SetBackColor(std::nullopt);
  EXPECT_EQ(SendMessageW(tip.Handle(), TTM_GETTIPTEXTCOLOR, 0, 0), RGB(7, 8, 9));
  EXPECT_EQ(static_cast<DWORD>(SendMessageW(tip.Handle(), TTM_GETTIPBKCOLOR, 0, 0)),
            GetSysColor(COLOR_INFOBK));
}

TEST_F(CTooltipTest, TheTimesAreNeverApplied) {
  tip.Create(control);
  const LRESULT shown = SendMessageW(tip.Handle(), TTM_GETDELAYTIME, TTDT_AUTOPOP, 0);
  const LRESULT initial = SendMessageW(tip.Handle(), TTM_GETDELAYTIME, TTDT_INITIAL, 0);

  tip.SetVisibleTime(12345);
  tip.SetDelayTime(77);
  tip.Create(control);

  EXPECT_EQ(tip.VisibleTime(), 12345);
  EXPECT_EQ(tip.DelayTime(), 77);
  EXPECT_EQ(SendMessageW(tip.Handle(), TTM_GETDELAYTIME, TTDT_AUTOPOP, 0), shown);
  EXPECT_EQ(SendMessageW(tip.Handle(), TTM_GETDELAYTIME, TTDT_INITIAL, 0), initial);
}

TEST_F(CTooltipTest, LinesAreBrokenAtCrLf) {
  tip.SetTipText(L"one");
  tip.Create(control);
  const LONG one = Height();
  tip.SetTipText(L"one\r\ntwo\r\nthree");
  EXPECT_GT(Height(), 2 * one - 10);
}

TEST_F(CTooltipTest, DestroyTakesTheWindowAway) {
  tip.Create(control);
  const HWND window = tip.Handle();

  tip.Destroy();
  tip.Destroy();

  EXPECT_FALSE(IsWindow(window));
  EXPECT_EQ(tip.Handle(), nullptr);
}

TEST_F(CTooltipTest, CreatingAgainLeavesOneWindow) {
  tip.Create(control);
  const HWND first = tip.Handle();
  tip.Create(control);
  EXPECT_FALSE(IsWindow(first));
  EXPECT_TRUE(IsWindow(tip.Handle()));
}

TEST(CTooltip, GoesWithItsObject) {
  const test::Host host;
  HWND window = nullptr;
  {
    CTooltip tip;
    tip.Create(host.Handle());
    window = tip.Handle();
  }
  EXPECT_FALSE(IsWindow(window));
}

TEST(CTooltip, SurvivesTheEndOfItsControl) {
  CTooltip tip;
  {
    const test::Host host;
    tip.Create(host.Handle());
  }
  tip.SetTipText(L"x");
  tip.Hide();
  tip.Destroy();
  EXPECT_EQ(tip.Handle(), nullptr);
}

TEST_F(CTooltipTest, ShowsWhenThePointerRestsOnTheControlAndHides) {
  RECT rectangle{};
  GetWindowRect(control, &rectangle);
  SetCursorPos(rectangle.left + 20, rectangle.top + 20);
  tip.SetTipText(L"text");
  tip.SetStyle(TipStyle::kBalloon);
  tip.Create(control);
  // No movement comes after the creation.
  tip.PointerIsAt({20, 20});
  EXPECT_FALSE(IsWindowVisible(tip.Handle()));
  EXPECT_TRUE(test::PumpUntil([&] { return IsWindowVisible(tip.Handle()) != FALSE; }));

  tip.Hide();
  EXPECT_FALSE(IsWindowVisible(tip.Handle()));
}

}  // namespace
}  // namespace kestrelon::ui
