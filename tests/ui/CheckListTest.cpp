#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/KeyInput.h"
#include "tests/ui/Host.h"
#include "ui/win/CheckList.h"

namespace kestrelon::win {
namespace {

using Rows = std::vector<std::size_t>;

struct CheckListTest : testing::Test {
  CheckListTest() {
    list.Create(host.Handle(), 62);
    host.checkList = &list;
    SetWindowPos(list.Handle(), nullptr, 0, 0, 300, 200, SWP_NOZORDER);
    list.events.itemClick = [this](std::size_t row) { clicked.push_back(row); };
  }
  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendMessageW(list.Handle(), message, wParam, lParam);
  }
  std::wstring Shown(int row) {
    wchar_t text[500] = {};
    LVITEMW item{};
    item.pszText = text;
    item.cchTextMax = 500;
    Send(LVM_GETITEMTEXTW, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    return text;
  }
  RECT Rectangle(int row, int part) {
    RECT rectangle{};
    rectangle.left = part;
    Send(LVM_GETITEMRECT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&rectangle));
    return rectangle;
  }
  POINT OnText(int row) {
    const RECT text = Rectangle(row, LVIR_LABEL);
    return {text.left + 5, (text.top + text.bottom) / 2};
  }
  POINT OnBox(int row) {
    const RECT text = Rectangle(row, LVIR_LABEL);
    return {text.left / 2, (text.top + text.bottom) / 2};
  }
  void Click(POINT point) {
    test::SendMouse(list.Handle(), WM_LBUTTONDOWN, point, MK_LBUTTON);
    test::SendMouse(list.Handle(), WM_LBUTTONUP, point);
  }
  int ClientWidth() {
    RECT client{};
    GetClientRect(list.Handle(), &client);
    return client.right;
  }

  test::Host host;
  CheckList list;
  Rows clicked;
};

TEST_F(CheckListTest, ShowsItsRowsWithoutTicks) {
  list.SetRows({L"C:\\b.txt", L"C:\\\u6587\u4EF6.txt", L"C:\\a.txt"});

  EXPECT_EQ(list.Count(), 3u);
  EXPECT_EQ(list.Text(1), L"C:\\\u6587\u4EF6.txt");
  EXPECT_EQ(Send(LVM_GETITEMCOUNT), 3);
  EXPECT_EQ(Shown(0), L"C:\\b.txt");
  EXPECT_EQ(Shown(2), L"C:\\a.txt");
  EXPECT_EQ(list.TickedRows(), Rows{});
}

TEST_F(CheckListTest, ReplacesItsRowsAndTheirTicks) {
  list.SetRows({L"one", L"two"});
  list.SetAllTicked(true);

  list.SetRows({L"three"});

  EXPECT_EQ(Send(LVM_GETITEMCOUNT), 1);
  EXPECT_EQ(Shown(0), L"three");
  EXPECT_FALSE(list.Ticked(0));
  list.Clear();
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(Send(LVM_GETITEMCOUNT), 0);
}

TEST_F(CheckListTest, TicksSingleRowsAndAll) {
  list.SetRows({L"one", L"two", L"three"});

  list.SetTicked(1, true);
  EXPECT_EQ(list.TickedRows(), Rows{1});
  EXPECT_TRUE(list.Ticked(1));
  EXPECT_FALSE(list.Ticked(0));

  list.SetAllTicked(true);
  EXPECT_EQ(list.TickedRows(), (Rows{0, 1, 2}));
  list.SetTicked(0, false);
  EXPECT_EQ(list.TickedRows(), (Rows{1, 2}));
  list.SetAllTicked(false);
  EXPECT_EQ(list.TickedRows(), Rows{});
}

TEST_F(CheckListTest, RemovesTheTickedRowsAndLeavesTheOthersUnticked) {
  list.SetRows({L"one", L"two", L"three", L"four"});
  list.SetTicked(0, true);
  list.SetTicked(2, true);

  list.RemoveRows(list.TickedRows());

  EXPECT_EQ(list.Count(), 2u);
  EXPECT_EQ(list.Text(0), L"two");
  EXPECT_EQ(list.Text(1), L"four");
  EXPECT_EQ(Send(LVM_GETITEMCOUNT), 2);
  EXPECT_EQ(Shown(1), L"four");
  EXPECT_EQ(list.TickedRows(), Rows{});
}

TEST_F(CheckListTest, WithoutTicksKeepsEveryRowAndTheSelection) {
  list.SetRows({L"one", L"two"});
  Click(OnText(1));

  list.RemoveRows(list.TickedRows());

  EXPECT_EQ(list.Count(), 2u);
  EXPECT_EQ(Send(LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_SELECTED), 1);
}

TEST_F(CheckListTest, AClickOnTheBoxTicksAndUnticks) {
  list.SetRows({L"one", L"two"});

  Click(OnBox(1));
  EXPECT_EQ(list.TickedRows(), Rows{1});
  Click(OnBox(1));
  EXPECT_EQ(list.TickedRows(), Rows{});
}

TEST_F(CheckListTest, SpaceTicksTheRowWithTheFocus) {
  list.SetRows({L"one", L"two", L"three"});
  SetFocus(list.Handle());
  Click(OnText(0));
  test::SendKey(list.Handle(), VK_DOWN);

  test::SendKey(list.Handle(), VK_SPACE);
  EXPECT_EQ(list.TickedRows(), Rows{1});
  test::SendKey(list.Handle(), VK_SPACE);
  EXPECT_EQ(list.TickedRows(), Rows{});
}

TEST_F(CheckListTest, TellsAClickOnARowOnceAndAgainOnTheSameRow) {
  list.SetRows({L"one", L"two"});

  Click(OnText(1));
  EXPECT_EQ(clicked, Rows{1});
  Click(OnText(1));
  EXPECT_EQ(clicked, (Rows{1, 1}));
  Click(OnText(0));
  EXPECT_EQ(clicked, (Rows{1, 1, 0}));
}

TEST_F(CheckListTest, TellsAClickBehindTheTextToo) {
  list.SetRows({L"one"});
  Click({ClientWidth() - 3, OnText(0).y});
  EXPECT_EQ(clicked, Rows{0});
}

TEST_F(CheckListTest, TellsNoClickBelowTheRows) {
  list.SetRows({L"one"});
  Click({20, 150});
  EXPECT_EQ(clicked, Rows{});
}

TEST_F(CheckListTest, TellsARowThatTheKeyboardReaches) {
  list.SetRows({L"one", L"two", L"three"});
  Click(OnText(0));
  clicked.clear();

  test::SendKey(list.Handle(), VK_DOWN);
  test::SendKey(list.Handle(), VK_END);
  test::SendKey(list.Handle(), VK_END);  // is there already

  EXPECT_EQ(clicked, (Rows{1, 2}));
}

TEST_F(CheckListTest, TellsNoClickForOurOwnChanges) {
  list.SetRows({L"one", L"two"});
  list.SetTicked(1, true);
  list.SetAllTicked(true);
  list.RemoveRows(list.TickedRows());
  list.SetRows({L"three"});

  EXPECT_EQ(clicked, Rows{});
}

TEST_F(CheckListTest, HasAColumnAtLeastAsWideAsItself) {
  list.SetRows({L"one"});
  EXPECT_EQ(Send(LVM_GETCOLUMNWIDTH), ClientWidth());
}

TEST_F(CheckListTest, HasAColumnAsWideAsTheWidestText) {
  const std::wstring wide(200, L'W');
  list.SetRows({L"one", wide, L"two"});

  const LRESULT width = Send(LVM_GETCOLUMNWIDTH);
  EXPECT_GT(width, ClientWidth());
  EXPECT_GT(width, Send(LVM_GETSTRINGWIDTHW, 0, reinterpret_cast<LPARAM>(wide.c_str())));
}

TEST_F(CheckListTest, LeavesNoRoomForTheScrollBarToHideInTheColumn) {
  list.SetRows(std::vector<std::wstring>(100, L"row"));

  EXPECT_NE(GetWindowLongPtrW(list.Handle(), GWL_STYLE) & WS_VSCROLL, 0);
  EXPECT_EQ(Send(LVM_GETCOLUMNWIDTH), ClientWidth());
}

TEST_F(CheckListTest, FillsTicksAndRemovesThousandsOfRowsQuickly) {
  const ULONGLONG start = GetTickCount64();

  list.SetRows(std::vector<std::wstring>(10000, L"C:\\folder\\file.txt"));
  list.SetAllTicked(true);
  list.SetTicked(5000, false);
  EXPECT_EQ(list.TickedRows().size(), 9999u);
  list.RemoveRows(list.TickedRows());

  EXPECT_EQ(list.Count(), 1u);
  RecordProperty("milliseconds", static_cast<int>(GetTickCount64() - start));
  // Row by row on the screen this takes most of a minute.
  EXPECT_LT(GetTickCount64() - start, 5000u);
}

TEST_F(CheckListTest, OutlivesItsWindow) {
  list.SetRows({L"one"});
  DestroyWindow(list.Handle());

  EXPECT_EQ(list.Handle(), nullptr);
  EXPECT_FALSE(list.Ticked(0));
  list.SetRows({L"two", L"three"});
  EXPECT_EQ(list.Count(), 2u);
}

}  // namespace
}  // namespace kestrelon::win
