#include <gtest/gtest.h>

#include <functional>

#include "tests/support/FakeWorld.h"
#include "tests/support/KeyInput.h"
#include "tests/support/ScopedTestDir.h"
#include "tests/ui/Host.h"
#include "ui/fase.h"
#include "ui/frmAbout.h"

namespace kestrelon::ui {
namespace {

// 255 for a window that is not translucent.
int AlphaOf(HWND window) {
  BYTE alpha = 255;
  DWORD flags = 0;
  if ((GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_LAYERED) == 0) return 255;
  GetLayeredWindowAttributes(window, nullptr, &alpha, &flags);
  return (flags & LWA_ALPHA) != 0 ? alpha : 255;
}

TEST(MakeTranslucent, GivesAWindowItsAlpha) {
  test::Host host;
  ASSERT_EQ(AlphaOf(host.Handle()), 255);

  EXPECT_TRUE(MakeTranslucent(host.Handle(), 100));
  EXPECT_EQ(AlphaOf(host.Handle()), 100);
  EXPECT_TRUE(MakeTranslucent(host.Handle(), 200));
  EXPECT_EQ(AlphaOf(host.Handle()), 200);
}

TEST(MakeTranslucent, FailsForAWindowThatIsNone) { EXPECT_FALSE(MakeTranslucent(nullptr, 100)); }

class About : public testing::Test {
 protected:
  // Opens the window, hands it to `act` and closes it afterwards if it is still there.
  void Open(const std::function<void(frmAbout&)>& act) {
    frmAbout about(dir.program, world);
    const test::OnWindow opened([&](HWND window) { return window == about.Handle(); },
                                [&](HWND) {
                                  act(about);
                                  about.Close();
                                });
    about.Show(host.Handle());
    EXPECT_TRUE(opened.Done());
  }
  static HWND Of(frmAbout& about, const wchar_t* name) { return about.Find(name)->window; }
  static std::wstring Text(frmAbout& about, const wchar_t* name) { return test::TextOf(Of(about, name)); }
  static void Press(frmAbout& about, const wchar_t* name) { SendMessageW(Of(about, name), BM_CLICK, 0, 0); }
  // The mouse on a label.
  static void ClickOn(HWND label) {
    SendMessageW(label, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(3, 3));
    SendMessageW(label, WM_LBUTTONUP, 0, MAKELPARAM(3, 3));
  }
  static HCURSOR PointerOver(frmAbout& about, const wchar_t* name) {
    SetCursor(nullptr);
    const auto label = reinterpret_cast<WPARAM>(Of(about, name));
    SendMessageW(about.Handle(), WM_SETCURSOR, label, MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    return GetCursor();
  }

  test::ScopedTestDir dir;
  test::FakeWorld world;
  test::Host host;
};

TEST_F(About, ShowsTheTitleAfterOneBlankAndTheVersion) {
  Open([](frmAbout& about) {
    EXPECT_EQ(Text(about, L"lblTitle"), L" Kestrelon");
    EXPECT_EQ(Text(about, L"lblVersion"), L"V10.12 Pro");
  });
}

TEST_F(About, IsTranslucent) {
  Open([](frmAbout& about) { EXPECT_EQ(AlphaOf(about.Handle()), 220); });
}

TEST_F(About, ShowsTheProgramsIconInTheSizeOfTheDpi) {
  Open([](frmAbout& about) {
    for (const auto& [dpi, pixels] : {std::pair(96u, 32), std::pair(192u, 64)}) {
      const RECT suggested{0, 0, 800, 600};
      SendMessageW(about.Handle(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
      const auto icon = reinterpret_cast<HICON>(SendMessageW(Of(about, L"Image1"), STM_GETICON, 0, 0));
      ICONINFO parts{};
      ASSERT_TRUE(GetIconInfo(icon, &parts));
      BITMAP bitmap{};
      GetObjectW(parts.hbmMask, sizeof bitmap, &bitmap);
      EXPECT_EQ(bitmap.bmWidth, pixels);
      DeleteObject(parts.hbmMask);
      DeleteObject(parts.hbmColor);
      RECT place;
      GetClientRect(Of(about, L"Image1"), &place);
      EXPECT_EQ(place.right, pixels);
      EXPECT_EQ(place.bottom, pixels);
    }
  });
}

TEST_F(About, OpensTheHomePageByAClickOnTheTitle) {
  world.executionResults = {33};
  Open([](frmAbout& about) { ClickOn(Of(about, L"lblTitle")); });
  ASSERT_EQ(world.executions.size(), 1u);
  EXPECT_EQ(world.executions[0].verb, L"");
  EXPECT_EQ(world.executions[0].target, L"https://kestrelon.example.org/");
  EXPECT_EQ(world.executions[0].show, SW_SHOWNORMAL);
}

TEST_F(About, OpensAFeedbackMailByAClickOnTheLabelForIt) {
  world.executionResults = {33};
  Open([](frmAbout& about) { ClickOn(Of(about, L"Label1")); });
  ASSERT_EQ(world.executions.size(), 1u);
  EXPECT_EQ(world.executions[0].verb, L"open");
  EXPECT_EQ(world.executions[0].target,
            L"mailto:feedback@kestrelon.example.org?subject=Feedback for Kestrelon");
  EXPECT_EQ(world.executions[0].show, SW_HIDE);
}

TEST_F(About, DoesNothingByAClickOnTheVersion) {
  Open([](frmAbout& about) { ClickOn(Of(about, L"lblVersion")); });
  EXPECT_TRUE(world.executions.empty());
}

TEST_F(About, HasTheHandPointerOverTheLabelsThatCanBeClickedAlone) {
  Open([](frmAbout& about) {
    const HCURSOR hand = LoadCursorW(nullptr, IDC_HAND);
    EXPECT_EQ(PointerOver(about, L"lblTitle"), hand);
    EXPECT_EQ(PointerOver(about, L"Label1"), hand);
    EXPECT_NE(PointerOver(about, L"lblVersion"), hand);
    EXPECT_NE(PointerOver(about, L"cmdOK"), hand);
  });
}

TEST_F(About, ShowsTheLabelsThatCanBeClickedInAColourThatStandsOutAndCanBeRead) {
  Open([](frmAbout& about) {
    const HDC context = GetDC(about.Handle());
    const auto colour = [&](const wchar_t* name) {
      SetTextColor(context, RGB(1, 2, 3));
      SendMessageW(about.Handle(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(context),
                   reinterpret_cast<LPARAM>(Of(about, name)));
      return GetTextColor(context);
    };
    const auto green = [](COLORREF shown) { return static_cast<int>(GetGValue(shown)); };
    for (const wchar_t* link : {L"lblTitle", L"Label1"}) {
      EXPECT_NE(colour(link), colour(L"lblVersion"));
      EXPECT_GT(std::abs(green(colour(link)) - green(GetSysColor(COLOR_BTNFACE))), 60) << Narrow(link);
    }
    ReleaseDC(about.Handle(), context);
  });
}

TEST_F(About, StartsTheSystemsInformationProgram) {
  world.startResults = {true};
  Open([](frmAbout& about) { Press(about, L"cmdSysInfo"); });
  ASSERT_EQ(world.starts.size(), 1u);
  EXPECT_EQ(world.starts[0].commandLine, L"msinfo32.exe");
  EXPECT_EQ(world.starts[0].show, SW_SHOWNORMAL);
  EXPECT_TRUE(world.boxes.empty());
}

TEST_F(About, SaysWhenThereIsNoSuchProgram) {
  world.startResults = {false};
  world.answers = {IDOK};
  Open([this](frmAbout& about) {
    Press(about, L"cmdSysInfo");
    ASSERT_EQ(world.boxes.size(), 1u);
    EXPECT_EQ(world.boxes[0].owner, about.Handle());
  });
  EXPECT_EQ(world.boxes.at(0).text, L"System information is not available on this computer.");
  EXPECT_EQ(world.boxes.at(0).title, L"Kestrelon");
  EXPECT_EQ(world.boxes.at(0).flags, UINT{MB_OK | MB_ICONINFORMATION});
}

TEST_F(About, ClosesByItsButtonAndByEnterAndEscape) {
  Open([](frmAbout& about) {
    Press(about, L"cmdOK");
    EXPECT_EQ(about.Handle(), nullptr);
  });
  for (const WORD key : {WORD{VK_RETURN}, WORD{VK_ESCAPE}}) {
    Open([key](frmAbout& about) {
      EXPECT_EQ(GetFocus(), Of(about, L"cmdOK"));
      test::PressKey(GetFocus(), key);
      EXPECT_EQ(about.Handle(), nullptr);
    });
  }
  EXPECT_TRUE(IsWindowEnabled(host.Handle()));
}

TEST_F(About, IsInTheLanguageInUseButForNameAndVersion) {
  dir.WriteIniFile(L"Program\\Lang\\Chinese_T.ini",
                   L"[frmAbout]\r\n0=關於\r\nLabel1=寄信\r\ncmdOK=確定\r\ncmdSysInfo=系統資訊\r\n");
  dir.program.languageName = L"Chinese_T";
  Open([](frmAbout& about) {
    EXPECT_EQ(about.Caption(), L"關於");
    EXPECT_EQ(Text(about, L"Label1"), L"寄信");
    EXPECT_EQ(Text(about, L"cmdOK"), L"確定");
    EXPECT_EQ(Text(about, L"cmdSysInfo"), L"系統資訊");
    EXPECT_EQ(Text(about, L"lblTitle"), L" Kestrelon");
    EXPECT_EQ(Text(about, L"lblVersion"), L"V10.12 Pro");
  });
}

}  // namespace
}  // namespace kestrelon::ui
