#include "app/base/Win32.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include "tests/ui/Host.h"
#include "ui/win/CommandsOff.h"
#include "ui/win/StatusBar.h"

namespace kestrelon::win {
namespace {

struct StatusBarFixture : testing::Test {
  StatusBarFixture() { bar.Create(host.Handle(), 50); }
  std::wstring Shown(int panel) {
    wchar_t text[4096] = {};
    SendMessageW(bar.Handle(), SB_GETTEXTW, static_cast<WPARAM>(panel - 1), reinterpret_cast<LPARAM>(text));
    return text;
  }
  test::Host host;
  StatusBar bar;
};
using StatusBarTest = StatusBarFixture;

TEST_F(StatusBarTest, HasThreeEmptyPanels) {
  EXPECT_EQ(SendMessageW(bar.Handle(), SB_GETPARTS, 0, 0), 3);
  for (int panel = 1; panel <= 3; ++panel) EXPECT_EQ(bar.PanelText(panel), L"");
}

TEST_F(StatusBarTest, ShowsAndRemembersTheTextOfEachPanel) {
  bar.SetPanelText(1, L"Category : A");
  bar.SetPanelText(2, L"S004211151317037719_");
  bar.SetPanelText(3, L"12 Objects");

  EXPECT_EQ(bar.PanelText(1), L"Category : A");
  EXPECT_EQ(bar.PanelText(2), L"S004211151317037719_");
  EXPECT_EQ(Shown(1), L"Category : A");
  EXPECT_EQ(Shown(2), L"S004211151317037719_");
  EXPECT_EQ(Shown(3), L"12 Objects");
}

TEST_F(StatusBarTest, KeepsALongTextWhole) {
  const std::wstring path(3000, L'x');

  bar.SetPanelText(1, path);

  EXPECT_EQ(bar.PanelText(1), path);
}

TEST_F(StatusBarTest, ShowsATextThatWasOnlyKeptWhenItIsSet) {
  bar.SetPanelText(1, L"first");

  bar.KeepPanelText(1, L"second");
  EXPECT_EQ(bar.PanelText(1), L"second");
  EXPECT_EQ(Shown(1), L"first");

  bar.SetPanelText(1, L"second");
  EXPECT_EQ(Shown(1), L"second");
}

TEST_F(StatusBarTest, ShowsTheLastStepOfAnOperationAtItsEnd) {
  {
    ProgressText progress(bar);
    for (const wchar_t* step : {L"one", L"two", L"three"}) {
      progress.ShowInPassing(step);
      EXPECT_EQ(bar.PanelText(1), step);
    }
  }
  EXPECT_EQ(Shown(1), L"three");
}

TEST_F(StatusBarTest, GivesTheLastPanelTheRest) {
  bar.SetPanelWidths({300, 150});

  int edges[3] = {};
  SendMessageW(bar.Handle(), SB_GETPARTS, 3, reinterpret_cast<LPARAM>(edges));
  EXPECT_EQ(edges[0], 300);
  EXPECT_EQ(edges[1], 450);
  EXPECT_EQ(edges[2], -1);
}

TEST_F(StatusBarTest, HasAHeightAndRefusesPanelsThatAreNotThere) {
  EXPECT_GT(bar.Height(), 0);
  EXPECT_THROW(bar.SetPanelText(4, L"x"), std::out_of_range);
  EXPECT_THROW(bar.PanelText(0), std::out_of_range);
}

}  // namespace
}  // namespace kestrelon::win
