#include "tests/ui/ListFixture.h"
#include "ui/win/ListView.h"

namespace kestrelon::win {
namespace {

using test::Names;

struct ListEventsFixture : test::ListFixture {
  ListEventsFixture() {
    Fill({L"Alpha", L"beta", L"Beetle", L"gamma"});
    list.events.selectionChanged = [this] { log.push_back(L"selection"); };
    list.events.doubleClick = [this] { log.push_back(L"double"); };
    list.events.keyDown = [this](int key, int shift) {
      log.push_back(L"key " + std::to_wstring(key) + L" " + std::to_wstring(shift));
    };
    list.events.mouseDown = [this](int button, int, POINT) {
      log.push_back(L"down " + std::to_wstring(button));
    };
    list.events.mouseUp = [this](int button, int, POINT) { log.push_back(L"up " + std::to_wstring(button)); };
    list.events.columnClick = [this](std::size_t column) {
      log.push_back(L"column " + std::to_wstring(column));
    };
    win::DoEvents();
    log.clear();
  }
  void Press(POINT point) { test::SendMouse(list.Handle(), WM_LBUTTONDOWN, point, MK_LBUTTON); }
  void Release(POINT point) { test::SendMouse(list.Handle(), WM_LBUTTONUP, point); }
  LRESULT HeaderNotification(UINT code, int column) {
    const auto header = reinterpret_cast<HWND>(SendMessageW(list.Handle(), LVM_GETHEADER, 0, 0));
    NMHEADERW notification{};
    notification.hdr.hwndFrom = header;
    notification.hdr.code = code;
    notification.iItem = column;
    return SendMessageW(list.Handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&notification));
  }
  LRESULT Find(const wchar_t* text, int start) {
    NMLVFINDITEMW find{};
    find.hdr.hwndFrom = list.Handle();
    find.hdr.code = LVN_ODFINDITEMW;
    find.iStart = start;
    find.lvfi.flags = LVFI_STRING | LVFI_PARTIAL | LVFI_WRAP;
    find.lvfi.psz = text;
    return SendMessageW(host.Handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&find));
  }
  Names log;
};
using ListViewEventsTest = ListEventsFixture;

TEST_F(ListViewEventsTest, AClickChangesTheSelectionOnceAndThenIsReleased) {
  list.SelectAll();

  Press(OnRow(1));
  Release(OnRow(1));
  win::DoEvents();

  EXPECT_EQ(log, (Names{L"down 1", L"selection", L"up 1"}));
  EXPECT_EQ(SelectedAliases(), Names{L"beta"});
}

TEST_F(ListViewEventsTest, AnArrowKeyChangesTheSelectionOnce) {
  list.SelectOnly(0);
  SetFocus(list.Handle());
  win::DoEvents();
  log.clear();

  test::SendKey(list.Handle(), VK_DOWN);
  win::DoEvents();

  EXPECT_EQ(log, (Names{L"key 40 0", L"selection"}));
  EXPECT_EQ(SelectedAliases(), Names{L"beta"});
}

TEST_F(ListViewEventsTest, ShiftSelectsARangeWithOneEvent) {
  list.SelectOnly(0);
  SetFocus(list.Handle());
  win::DoEvents();
  log.clear();

  test::SendKey(list.Handle(), VK_END, {VK_SHIFT});
  win::DoEvents();

  EXPECT_EQ(log, (Names{L"key 35 1", L"selection"}));
  EXPECT_EQ(list.SelectedRows().size(), 4u);
}

TEST_F(ListViewEventsTest, OurOwnChangesOfTheSelectionRaiseNothing) {
  list.SelectAll();
  list.SelectNone();
  list.SelectOnly(2);
  list.Select(0, true);
  list.SortBy(1, true);
  list.Remove(0);
  Fill({L"x"});
  win::DoEvents();
  EXPECT_EQ(log, Names{});
}

TEST_F(ListViewEventsTest, ARightClickOnAnotherRowSelectsItAloneBeforeTheRelease) {
  list.SelectOnly(0);

  test::SendMouse(list.Handle(), WM_RBUTTONDOWN, OnRow(2), MK_RBUTTON);
  test::SendMouse(list.Handle(), WM_RBUTTONUP, OnRow(2));
  win::DoEvents();

  EXPECT_EQ(log, (Names{L"down 2", L"selection", L"up 2"}));
  EXPECT_EQ(SelectedAliases(), Names{L"Beetle"});
  EXPECT_EQ(GetFocus(), list.Handle());
}

TEST_F(ListViewEventsTest, ARightClickOnASelectedRowKeepsTheWholeSelection) {
  list.SelectOnly(0);
  list.Select(2, true);

  test::SendMouse(list.Handle(), WM_RBUTTONDOWN, OnRow(2), MK_RBUTTON);
  test::SendMouse(list.Handle(), WM_RBUTTONUP, OnRow(2));

  EXPECT_EQ(SelectedAliases(), (Names{L"Alpha", L"Beetle"}));
  EXPECT_EQ(list.SelectedRow(), 2u);
}

TEST_F(ListViewEventsTest, ARightClickBesideTheRowsSelectsNothing) {
  list.SelectOnly(0);
  test::SendMouse(list.Handle(), WM_RBUTTONDOWN, BelowTheRows(), MK_RBUTTON);
  test::SendMouse(list.Handle(), WM_RBUTTONUP, BelowTheRows());
  EXPECT_EQ(SelectedAliases(), Names{});
}

TEST_F(ListViewEventsTest, RealClicksAreReleasedExactlyOnce) {
  POINT point = OnRow(3);
  ClientToScreen(list.Handle(), &point);
  SetCursorPos(point.x, point.y);
  INPUT inputs[4] = {};
  const DWORD flags[4] = {MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP, MOUSEEVENTF_RIGHTDOWN,
                          MOUSEEVENTF_RIGHTUP};
  for (int i = 0; i < 4; ++i) {
    inputs[i].type = INPUT_MOUSE;
    inputs[i].mi.dwFlags = flags[i];
  }
  SendInput(4, inputs, sizeof(INPUT));

  EXPECT_TRUE(test::PumpUntil([&] { return log.size() >= 5; }));
  win::DoEvents();
  EXPECT_EQ(log, (Names{L"down 1", L"selection", L"up 1", L"down 2", L"up 2"}));
}

TEST_F(ListViewEventsTest, ADoubleClickCountsOnlyOnARow) {
  test::SendMouse(list.Handle(), WM_LBUTTONDBLCLK, BelowTheRows(), MK_LBUTTON);
  Release(BelowTheRows());
  EXPECT_EQ(log, (Names{L"down 1", L"up 1"}));
  log.clear();

  Press(OnRow(1));
  Release(OnRow(1));
  test::SendMouse(list.Handle(), WM_LBUTTONDBLCLK, OnRow(1), MK_LBUTTON);
  Release(OnRow(1));

  EXPECT_EQ(log, (Names{L"down 1", L"selection", L"up 1", L"down 1", L"double", L"up 1"}));
}

TEST_F(ListViewEventsTest, KeysComeWithTheirShiftState) {
  test::SendKey(list.Handle(), 'A', {VK_CONTROL});
  test::SendKey(list.Handle(), VK_F6);
  EXPECT_EQ(log, (Names{L"key 65 2", L"key 117 0"}));
}

TEST_F(ListViewEventsTest, AltEnterIsAKeyToo) {
  const test::KeysDown alt({VK_MENU});
  SendMessageW(list.Handle(), WM_SYSKEYDOWN, VK_RETURN, 1 << 29);
  EXPECT_EQ(log, Names{L"key 13 4"});
}

TEST_F(ListViewEventsTest, TellsWhichHeaderWasClicked) {
  const auto header = reinterpret_cast<HWND>(SendMessageW(list.Handle(), LVM_GETHEADER, 0, 0));
  NMHEADERW click{};
  click.hdr.hwndFrom = header;
  click.hdr.code = HDN_ITEMCLICKW;
  click.iItem = 4;
  SendMessageW(list.Handle(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&click));
  EXPECT_EQ(log, Names{L"column 4"});
}

TEST_F(ListViewEventsTest, TheIconColumnCannotBeResized) {
  EXPECT_EQ(HeaderNotification(HDN_BEGINTRACKW, 0), TRUE);
  EXPECT_EQ(HeaderNotification(HDN_DIVIDERDBLCLICKW, 0), TRUE);
  EXPECT_EQ(HeaderNotification(HDN_BEGINTRACKW, 1), FALSE);
  EXPECT_EQ(list.ColumnWidth(0), 22);
}

TEST_F(ListViewEventsTest, TypedLettersLookForTheAlias) {
  EXPECT_EQ(Find(L"be", 0), 1);
  EXPECT_EQ(Find(L"BEE", 0), 2);
  EXPECT_EQ(Find(L"alpha", 2), 0);  // from the end on to the top
  EXPECT_EQ(Find(L"delta", 0), -1);
}

TEST_F(ListViewEventsTest, TypingALetterGoesToTheRow) {
  list.SelectOnly(0);
  SetFocus(list.Handle());
  SendMessageW(list.Handle(), WM_CHAR, L'g', 1);
  EXPECT_EQ(SelectedAliases(), Names{L"gamma"});
}

TEST_F(ListViewEventsTest, TellsMovesAndThatThePointerLeft) {
  int leaves = 0;
  Names moves;
  list.events.mouseLeave = [&] { ++leaves; };
  list.events.mouseMove = [&](int buttons, int, POINT point) {
    moves.push_back(std::to_wstring(buttons) + L" " + std::to_wstring(point.x));
  };

  test::SendMouse(list.Handle(), WM_MOUSEMOVE, {5, 30});
  test::SendMouse(list.Handle(), WM_MOUSEMOVE, {6, 30}, MK_RBUTTON);
  SendMessageW(list.Handle(), WM_MOUSELEAVE, 0, 0);

  EXPECT_EQ(moves, (Names{L"0 5", L"2 6"}));
  EXPECT_EQ(leaves, 1);
}

TEST_F(ListViewEventsTest, DraggingARowWithTheLeftButtonBeginsADrag) {
  int drags = 0;
  list.events.beginDrag = [&] { ++drags; };

  Press(OnRow(0));
  const POINT start = OnRow(0);
  for (int step = 0; step < 20; ++step)
    test::SendMouse(list.Handle(), WM_MOUSEMOVE, {start.x + step, start.y}, MK_LBUTTON);
  Release({start.x + 20, start.y});

  EXPECT_EQ(drags, 1);
}

TEST_F(ListViewEventsTest, TellsTheFocus) {
  int focused = 0;
  list.events.gotFocus = [&] { ++focused; };
  SetFocus(nullptr);
  SetFocus(list.Handle());
  EXPECT_EQ(focused, 1);
}

TEST_F(ListViewEventsTest, AnExceptionInAHandlerGoesToTheLastResort) {
  static int reported;
  reported = 0;
  const LastResort before = SetLastResort([](const char*) { ++reported; });
  list.events.keyDown = [](int, int) { throw std::runtime_error("handler"); };

  test::SendKey(list.Handle(), VK_F6);

  SetLastResort(before);
  EXPECT_EQ(reported, 1);
}

}  // namespace
}  // namespace kestrelon::win
