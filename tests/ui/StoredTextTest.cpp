// Text boxes that take no double quote.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/BalloonSpy.h"
#include "tests/support/KeyInput.h"
#include "tests/ui/TestForm.h"
#include "ui/win/StoredText.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

class StoredText : public testing::Test {
 protected:
  StoredText() {
    ShowWindow(form_.Handle(), SW_SHOW);
    edit_ = form_.Of(L"Text1");
    win::TakeStorableText(edit_, 20, L"no quotes");
    spy_ = std::make_unique<BalloonSpy>(edit_);
    SetFocus(edit_);
  }
  static void Copy(std::wstring_view text) {
    ASSERT_TRUE(OpenClipboard(nullptr));
    EmptyClipboard();
    const HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t));
    auto* target = static_cast<wchar_t*>(GlobalLock(memory));
    std::memcpy(target, text.data(), text.size() * sizeof(wchar_t));
    target[text.size()] = 0;
    GlobalUnlock(memory);
    SetClipboardData(CF_UNICODETEXT, memory);
    CloseClipboard();
  }
  void Type(std::wstring_view text) {
    for (const wchar_t letter : text) SendMessageW(edit_, WM_CHAR, static_cast<WPARAM>(letter), 1);
  }
  void Paste() { SendMessageW(edit_, WM_PASTE, 0, 0); }
  void Put(const std::wstring& text) {
    SetWindowTextW(edit_, text.c_str());
    SendMessageW(edit_, EM_SETSEL, text.size(), -1);
  }
  HWND Tip() {
    HWND found = nullptr;
    while ((found = FindWindowExW(nullptr, found, TOOLTIPS_CLASSW, nullptr)) != nullptr) {
      if (GetWindow(found, GW_OWNER) == form_.Handle() && IsWindowVisible(found)) return found;
    }
    return nullptr;
  }

  TestForm form_;
  HWND edit_ = nullptr;
  std::unique_ptr<BalloonSpy> spy_;
};

TEST_F(StoredText, DropsADoubleQuoteThatIsTypedAndSaysWhy) {
  Type(L"a\"b");
  EXPECT_EQ(TextOf(edit_), L"ab");
  EXPECT_EQ(spy_->Texts(), Texts{L"no quotes"});
}

TEST_F(StoredText, TakesEverythingElseWithoutAWord) {
  Type(L"a'b\u201C\u201D\uFF02文 é");
  EXPECT_EQ(TextOf(edit_), L"a'b\u201C\u201D\uFF02文 é");
  EXPECT_EQ(spy_->Texts(), Texts{});
}

TEST_F(StoredText, PutsAPastedTextInWithoutItsDoubleQuotesAndSaysWhy) {
  Copy(L"\"C:\\docs\\a.txt\"");  // as the file manager copies a path
  Put(L"<>");
  SendMessageW(edit_, EM_SETSEL, 1, 1);
  Paste();
  EXPECT_EQ(TextOf(edit_), L"<C:\\docs\\a.txt>");
  EXPECT_EQ(spy_->Texts(), Texts{L"no quotes"});
  SendMessageW(edit_, EM_UNDO, 0, 0);
  EXPECT_EQ(TextOf(edit_), L"<>") << "as any other paste";
}

TEST_F(StoredText, PastesInPlaceOfWhatIsSelected) {
  Copy(L"\"b\"");
  Put(L"axc");
  SendMessageW(edit_, EM_SETSEL, 1, 2);
  Paste();
  EXPECT_EQ(TextOf(edit_), L"abc");
}

TEST_F(StoredText, PastesATextWithoutDoubleQuotesInTheControlsOwnWay) {
  Copy(L"it's fine");
  Paste();
  EXPECT_EQ(TextOf(edit_), L"it's fine");
  EXPECT_EQ(spy_->Texts(), Texts{});
}

TEST_F(StoredText, PastesNoMoreThanThereIsRoomFor) {
  Put(std::wstring(15, L'x'));
  Copy(L"\"1234567890\"");
  Paste();
  EXPECT_EQ(TextOf(edit_), std::wstring(15, L'x') + L"12345");
}

TEST_F(StoredText, PastesNoHalfCharacter) {
  Put(std::wstring(18, L'x'));
  Copy(L"\"1\U0001F426\"");
  Paste();
  EXPECT_EQ(TextOf(edit_), std::wstring(18, L'x') + L"1");
}

TEST_F(StoredText, PastesOnlyTheFirstLineIntoASingleLine) {
  Copy(L"\"one\"\r\n\"two\"");
  Paste();
  EXPECT_EQ(TextOf(edit_), L"one");
}

TEST_F(StoredText, PastesAllLinesIntoABoxOfSeveral) {
  win::FormControl& box = form_.AddControl({L"Text2",
                                            -1,
                                            win::ControlKind::kTextBox,
                                            L"",
                                            L"",
                                            {120, 1600, 2400, 600},
                                            ES_MULTILINE | ES_WANTRETURN});
  win::TakeStorableText(box.window, 100, L"no quotes");
  Copy(L"\"one\"\r\n\"two\"");
  SendMessageW(box.window, WM_PASTE, 0, 0);
  EXPECT_EQ(TextOf(box.window), L"one\r\ntwo");
}

TEST_F(StoredText, TakesTheKeysOfPastingForTheSame) {
  Copy(L"\"q\"");
  for (const auto& [held, key] :
       {std::pair<BYTE, WORD>{VK_CONTROL, 'V'}, std::pair<BYTE, WORD>{VK_SHIFT, VK_INSERT}}) {
    Put(L"");
    const KeysDown down({held});
    PostMessageW(edit_, WM_KEYDOWN, key, 1);
    win::DoEvents();
    EXPECT_EQ(TextOf(edit_), L"q") << key;
  }
}

TEST_F(StoredText, LeavesAReadOnlyBoxAlone) {
  SendMessageW(edit_, EM_SETREADONLY, TRUE, 0);
  Copy(L"\"q\"");
  Paste();
  Type(L"\"");
  EXPECT_EQ(TextOf(edit_), L"");
  EXPECT_EQ(spy_->Texts(), Texts{});
}

TEST_F(StoredText, LimitsWhatIsTyped) {
  Type(std::wstring(25, L'x'));
  EXPECT_EQ(TextOf(edit_), std::wstring(20, L'x'));
  EXPECT_EQ(SendMessageW(edit_, EM_GETLIMITTEXT, 0, 0), 20);
}

TEST_F(StoredText, TakesATextOfTheProgramAsItIsAndRefusesItWhenAsked) {
  Put(L"ab");
  EXPECT_FALSE(win::RefusesItsText(edit_));
  Put(L"a\"b and longer than its limit");
  EXPECT_EQ(TextOf(edit_), L"a\"b and longer than its limit");
  EXPECT_EQ(spy_->Texts(), Texts{});
  SetFocus(form_.Of(L"Check1"));

  EXPECT_TRUE(win::RefusesItsText(edit_));

  EXPECT_EQ(GetFocus(), edit_);
  EXPECT_EQ(spy_->Texts(), Texts{L"no quotes"});
}

TEST_F(StoredText, ShowsOtherReasonsInTheSameWay) {
  SetFocus(form_.Of(L"Check1"));
  win::ShowBalloon(edit_, L"the disk is full");
  EXPECT_EQ(GetFocus(), edit_);
  EXPECT_EQ(spy_->Texts(), Texts{L"the disk is full"});
}

TEST_F(StoredText, TakesAnotherTextAndLimitWhenToldAgain) {
  win::TakeStorableText(edit_, 2, L"nothing of the kind");
  Type(L"abc\"");
  EXPECT_EQ(TextOf(edit_), L"ab");
  EXPECT_EQ(spy_->Texts(), Texts{L"nothing of the kind"});
}

TEST_F(StoredText, ShowsATipOfItsOwnWhereTheControlShowsNoBalloon) {
  spy_->shows = false;
  Type(L"\"");
  ASSERT_NE(Tip(), nullptr);
  TTTOOLINFOW tool{};
  tool.cbSize = offsetof(TTTOOLINFOW, lpszText) + sizeof(LPWSTR);
  wchar_t text[100] = L"";
  tool.lpszText = text;
  tool.hwnd = edit_;
  SendMessageW(Tip(), TTM_GETTEXTW, 100, reinterpret_cast<LPARAM>(&tool));
  EXPECT_STREQ(text, L"no quotes");

  Type(L"x");
  EXPECT_EQ(Tip(), nullptr) << "it goes when the user types on";

  Type(L"\"");
  ASSERT_NE(Tip(), nullptr);
  SetFocus(form_.Of(L"Check1"));
  EXPECT_EQ(Tip(), nullptr) << "and with the focus";
}

TEST_F(StoredText, MayGoWithItsTip) {
  spy_->shows = false;
  Type(L"\"");
  const HWND tip = Tip();
  ASSERT_NE(tip, nullptr);
  spy_.reset();
  form_.Destroy();
  EXPECT_FALSE(IsWindow(tip));
}

}  // namespace
}  // namespace kestrelon::test
