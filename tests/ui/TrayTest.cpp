#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/ui/Host.h"
#include "ui/modTray.h"

namespace kestrelon::ui {
namespace {

constexpr UINT kCallback = WM_APP + 7;

struct TrayFixture : testing::Test {
  TrayFixture()
      : tray([this](DWORD message, NOTIFYICONDATAW& data) {
          calls.emplace_back(message, data);
          return answer && message != refuses;
        }) {
    tray.Create(host.Handle(), kCallback);
    tray.activated = [this] { ++activations; };
  }
  bool Callback(LPARAM mouseMessage) { return tray.OnMessage(kCallback, 1, mouseMessage); }

  test::Host host;
  bool answer = true;
  DWORD refuses = NIM_SETVERSION;  // a call that fails whatever the answer is
  std::vector<std::pair<DWORD, NOTIFYICONDATAW>> calls;
  int activations = 0;
  cSysTray tray;
  HICON icon = LoadIconW(nullptr, IDI_APPLICATION);
};
using TrayTest = TrayFixture;

TEST_F(TrayTest, AddsTheIconWithItsTipAndItsMessage) {
  EXPECT_TRUE(tray.Add(icon, L"Kestrelon"));

  ASSERT_EQ(calls.size(), 1u);
  const auto& [message, data] = calls[0];
  EXPECT_EQ(message, DWORD{NIM_ADD});
  EXPECT_EQ(data.hWnd, host.Handle());
  EXPECT_EQ(data.uCallbackMessage, kCallback);
  EXPECT_EQ(data.hIcon, icon);
  EXPECT_STREQ(data.szTip, L"Kestrelon");
  EXPECT_EQ(data.uFlags, UINT{NIF_MESSAGE | NIF_ICON | NIF_TIP});
  EXPECT_TRUE(tray.IsShown());
}

TEST_F(TrayTest, SaysWhenThereIsNoNotificationArea) {
  answer = false;
  EXPECT_FALSE(tray.Add(icon, L"Kestrelon"));
  EXPECT_FALSE(tray.IsShown());

  tray.Remove();
  EXPECT_EQ(calls.size(), 1u);  // nothing to remove
}

TEST_F(TrayTest, ALongTipIsCut) {
  tray.Add(icon, std::wstring(300, L't'));
  EXPECT_EQ(std::wstring(calls[0].second.szTip), std::wstring(127, L't'));
}

TEST_F(TrayTest, RemovesTheIconOnce) {
  tray.Add(icon, L"Kestrelon");
  tray.Remove();
  tray.Remove();
  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[1].first, DWORD{NIM_DELETE});
  EXPECT_FALSE(tray.IsShown());
}

TEST_F(TrayTest, AClickAndADoubleClickActivate) {
  tray.Add(icon, L"Kestrelon");

  EXPECT_TRUE(Callback(WM_MOUSEMOVE));
  EXPECT_TRUE(Callback(WM_LBUTTONDOWN));
  EXPECT_EQ(activations, 0);
  EXPECT_TRUE(Callback(WM_LBUTTONUP));
  EXPECT_EQ(activations, 1);
  EXPECT_TRUE(Callback(WM_LBUTTONDBLCLK));
  EXPECT_EQ(activations, 2);
}

TEST_F(TrayTest, TheSecondHalfOfADoubleClickDoesNothingOnceTheIconIsGone) {
  tray.Add(icon, L"Kestrelon");
  tray.activated = [this] {
    ++activations;
    tray.Remove();
  };

  Callback(WM_LBUTTONUP);
  Callback(WM_LBUTTONDBLCLK);
  Callback(WM_LBUTTONUP);

  EXPECT_EQ(activations, 1);
}

TEST_F(TrayTest, OtherMessagesAreNotItsOwn) {
  tray.Add(icon, L"Kestrelon");
  EXPECT_FALSE(tray.OnMessage(WM_LBUTTONUP, 1, WM_LBUTTONUP));
  EXPECT_FALSE(tray.OnMessage(kCallback, 2, WM_LBUTTONUP));  // another icon's
  EXPECT_EQ(activations, 0);
}

TEST_F(TrayTest, ARestartedTaskBarGetsTheIconAgain) {
  const UINT restarted = RegisterWindowMessageW(L"TaskbarCreated");
  tray.OnMessage(restarted, 0, 0);
  EXPECT_TRUE(calls.empty());  // not shown: nothing to add

  tray.Add(icon, L"Kestrelon");
  tray.OnMessage(restarted, 0, 0);

  ASSERT_EQ(calls.size(), 2u);
  EXPECT_EQ(calls[1].first, DWORD{NIM_ADD});
  EXPECT_STREQ(calls[1].second.szTip, L"Kestrelon");
}

TEST_F(TrayTest, AnIconThatIsStillThereStaysWhenItIsToBeAddedAgain) {
  tray.Add(icon, L"Kestrelon");
  refuses = NIM_ADD;

  tray.OnMessage(RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);

  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[2].first, DWORD{NIM_MODIFY});
  EXPECT_TRUE(tray.IsShown());
  EXPECT_EQ(activations, 0);
}

TEST_F(TrayTest, AnIconThatIsLostBringsTheWindowBack) {
  tray.Add(icon, L"Kestrelon");
  answer = false;

  tray.OnMessage(RegisterWindowMessageW(L"TaskbarCreated"), 0, 0);

  EXPECT_FALSE(tray.IsShown());
  EXPECT_EQ(activations, 1);
}

TEST_F(TrayTest, TheIconGoesWithTheObject) {
  std::vector<DWORD> messages;
  {
    cSysTray other([&](DWORD message, NOTIFYICONDATAW&) {
      messages.push_back(message);
      return true;
    });
    other.Create(host.Handle(), kCallback);
    other.Add(icon, L"x");
  }
  EXPECT_EQ(messages, (std::vector<DWORD>{NIM_ADD, NIM_DELETE}));
}

}  // namespace
}  // namespace kestrelon::ui
