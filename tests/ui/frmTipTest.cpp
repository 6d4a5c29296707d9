#include <gtest/gtest.h>

#include <functional>
#include <set>

#include "tests/support/FakeWorld.h"
#include "tests/support/KeyInput.h"
#include "tests/support/ScopedTestDir.h"
#include "tests/ui/Host.h"
#include "ui/frmTip.h"

namespace kestrelon::ui {
namespace {

using Texts = std::vector<std::wstring>;

TEST(TipsOf, AreTheLinesInTheirOrder) {
  EXPECT_EQ(TipsOf("one\r\ntwo\r\nthree\r\n"), (Texts{L"one", L"two", L"three"}));
  EXPECT_EQ(TipsOf("one\ntwo\nthree\n"), (Texts{L"one", L"two", L"three"}));
}

TEST(TipsOf, NeedNoEndOfTheLastLine) {
  EXPECT_EQ(TipsOf("one\r\ntwo"), (Texts{L"one", L"two"}));
  EXPECT_EQ(TipsOf("one"), (Texts{L"one"}));
}

TEST(TipsOf, KeepEmptyLinesAndBlanks) {
  EXPECT_EQ(TipsOf("one \r\n\r\n two\r\n"), (Texts{L"one ", L"", L" two"}));
}

TEST(TipsOf, AnEmptyFileAreNone) {
  EXPECT_EQ(TipsOf(""), Texts());
  EXPECT_EQ(TipsOf("\xEF\xBB\xBF"), Texts());
}

TEST(TipsOf, AreReadAsUtf8WithAndWithoutAByteOrderMark) {
  EXPECT_EQ(TipsOf("\xE5\x88\xAB\xE5\x90\x8D\r\n"), (Texts{L"别名"}));
  EXPECT_EQ(TipsOf("\xEF\xBB\xBF\xE5\x88\xAB\xE5\x90\x8D\r\n"), (Texts{L"别名"}));
}

TEST(TipsOf, AreReadByTheSystemsCodePageWhereTheyAreNoUtf8) {
  const char bytes[] = "caf\xE9";
  wchar_t expected[8] = L"";
  MultiByteToWideChar(CP_ACP, 0, bytes, -1, expected, 8);

  EXPECT_EQ(TipsOf(bytes), Texts{expected});
  EXPECT_EQ(TipsOf(bytes).at(0).substr(0, 3), L"caf");
}

class Tip : public testing::Test {
 protected:
  void WriteTips(std::string_view bytes) { dir.WriteFile(L"Program\\TIPOFDAY.TXT", bytes); }
  // Opens the window, hands it to `act` and closes it afterwards if it is still there.
  void Open(const std::function<void(frmTip&)>& act) {
    frmTip tip(dir.program, world);
    const test::OnWindow opened([&](HWND window) { return window == tip.Handle(); },
                                [&](HWND) {
                                  act(tip);
                                  tip.Close();
                                });
    tip.Show(host.Handle());
    EXPECT_TRUE(opened.Done());
  }
  static HWND Of(frmTip& tip, const wchar_t* name) { return tip.Find(name)->window; }
  static std::wstring Shown(frmTip& tip) { return test::TextOf(Of(tip, L"lblTipText")); }
  static void Press(frmTip& tip, const wchar_t* name) { SendMessageW(Of(tip, name), BM_CLICK, 0, 0); }

  test::ScopedTestDir dir;
  test::FakeWorld world;
  test::Host host;
};

TEST_F(Tip, StartsWithATipChosenAtRandom) {
  WriteTips("one\r\ntwo\r\nthree\r\n");
  for (const auto& [draw, shown] :
       {std::pair(0.0, L"one"), std::pair(0.333, L"one"), std::pair(0.334, L"two"), std::pair(0.666, L"two"),
        std::pair(0.999999, L"three")}) {
    world.fractions = {draw};
    Open([expected = shown](frmTip& tip) { EXPECT_EQ(Shown(tip), expected); });
  }
}

TEST_F(Tip, SeedsTheRandomGeneratorEachTimeItOpens) {
  WriteTips("one\r\n");
  world.fractions = {0, 0};
  Open([&](frmTip&) { EXPECT_EQ(world.reseeds, 1); });
  Open([&](frmTip&) { EXPECT_EQ(world.reseeds, 2); });
}

TEST_F(Tip, GoesOnInTheOrderOfTheFileAndFromTheLastToTheFirst) {
  WriteTips("one\r\ntwo\r\nthree\r\n");
  world.fractions = {0.5};
  Open([](frmTip& tip) {
    EXPECT_EQ(Shown(tip), L"two");
    Press(tip, L"cmdNextTip");
    EXPECT_EQ(Shown(tip), L"three");
    Press(tip, L"cmdNextTip");
    EXPECT_EQ(Shown(tip), L"one");
    Press(tip, L"cmdNextTip");
    EXPECT_EQ(Shown(tip), L"two");
  });
}

TEST_F(Tip, StaysWithTheOnlyTip) {
  WriteTips("one");
  world.fractions = {0.999};
  Open([](frmTip& tip) {
    Press(tip, L"cmdNextTip");
    EXPECT_EQ(Shown(tip), L"one");
  });
}

TEST_F(Tip, SaysThatTheFileIsMissing) {
  Open([](frmTip& tip) {
    EXPECT_EQ(Shown(tip), L"File TIPOFDAY.TXT not found ? ");
    Press(tip, L"cmdNextTip");
    EXPECT_EQ(Shown(tip), L"File TIPOFDAY.TXT not found ? ");
  });
  EXPECT_EQ(world.reseeds, 1);
}

TEST_F(Tip, ShowsNothingOfAnEmptyFile) {
  WriteTips("");
  Open([](frmTip& tip) {
    EXPECT_EQ(Shown(tip), L"");
    Press(tip, L"cmdNextTip");
    EXPECT_EQ(Shown(tip), L"");
  });
}

TEST_F(Tip, ShowsAnAmpersandAsItIs) {
  WriteTips("this & that");
  world.fractions = {0};
  Open([](frmTip& tip) {
    EXPECT_EQ(Shown(tip), L"this & that");
    EXPECT_NE(GetWindowLongPtrW(Of(tip, L"lblTipText"), GWL_STYLE) & SS_NOPREFIX, 0);
  });
}

TEST_F(Tip, ReadsAFileOfMoreThanOneBlock) {
  WriteTips(std::string(5000, 'a') + "\r\nlast\r\n");
  world.fractions = {0.9};
  Open([](frmTip& tip) {
    EXPECT_EQ(Shown(tip), L"last");
    Press(tip, L"cmdNextTip");
    EXPECT_EQ(Shown(tip), std::wstring(5000, L'a'));
  });
}

TEST_F(Tip, ClosesByItsButtonAndByEscape) {
  WriteTips("one");
  world.fractions = {0, 0};
  Open([](frmTip& tip) {
    Press(tip, L"cmdOK");
    EXPECT_EQ(tip.Handle(), nullptr);
  });
  Open([](frmTip& tip) {
    EXPECT_EQ(GetFocus(), Of(tip, L"cmdOK"));
    test::PressKey(GetFocus(), VK_ESCAPE);
    EXPECT_EQ(tip.Handle(), nullptr);
  });
  EXPECT_TRUE(IsWindowEnabled(host.Handle()));
}

TEST_F(Tip, IsInTheLanguageInUseButForTheTips) {
  dir.WriteIniFile(
      L"Program\\Lang\\Chinese_S.ini",
      L"[frmTip]\r\n0=标题\r\nLabel1=知道吗\r\ncmdNextTip=下一条\r\ncmdOK=确定\r\nlblTipText=no\r\n");
  dir.program.languageName = L"Chinese_S";
  WriteTips("one");
  world.fractions = {0};
  Open([](frmTip& tip) {
    EXPECT_EQ(tip.Caption(), L"标题");
    EXPECT_EQ(test::TextOf(Of(tip, L"Label1")), L"知道吗");
    EXPECT_EQ(test::TextOf(Of(tip, L"cmdNextTip")), L"下一条");
    EXPECT_EQ(test::TextOf(Of(tip, L"cmdOK")), L"确定");
    EXPECT_EQ(Shown(tip), L"one");
  });
}

// The file that ships, as the build writes it.
class ShippedTips : public Tip {
 protected:
  ShippedTips() {
    for (const char unit : test::ScopedTestDir::ReadBytes(KESTRELON_TIPS_SOURCE)) {
      if (unit == '\n') bytes += '\r';
      bytes += unit;
    }
  }
  std::string bytes;
};

TEST_F(ShippedTips, AreManyAndNoneIsEmptyOrThereTwice) {
  const Texts tips = TipsOf(bytes);

  EXPECT_GE(tips.size(), 25u);
  EXPECT_EQ(std::set<std::wstring>(tips.begin(), tips.end()).size(), tips.size());
  for (const std::wstring& tip : tips) EXPECT_GT(Trim(tip).size(), 20u);
}

TEST_F(ShippedTips, HaveRoomInTheWindow) {
  WriteTips(bytes);
  world.fractions = {0};
  Open([this](frmTip& tip) {
    const HWND label = Of(tip, L"lblTipText");
    for (const unsigned dpi : {96u, 144u, 192u}) {
      RECT whole;
      GetWindowRect(tip.Handle(), &whole);
      const RECT suggested{0, 0, whole.right - whole.left, whole.bottom - whole.top};
      SendMessageW(tip.Handle(), WM_DPICHANGED, MAKEWPARAM(dpi, dpi), reinterpret_cast<LPARAM>(&suggested));
      RECT room;
      GetClientRect(label, &room);
      const HDC context = GetDC(label);
      const HGDIOBJ before =
          SelectObject(context, reinterpret_cast<HFONT>(SendMessageW(label, WM_GETFONT, 0, 0)));
      for (const std::wstring& text : TipsOf(bytes)) {
        RECT needed{0, 0, room.right, 0};
        DrawTextW(context, text.c_str(), -1, &needed, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
        EXPECT_LE(needed.bottom, room.bottom) << Narrow(text);
        EXPECT_LE(needed.right, room.right) << Narrow(text);
      }
      SelectObject(context, before);
      ReleaseDC(label, context);
    }
  });
}

}  // namespace
}  // namespace kestrelon::ui
