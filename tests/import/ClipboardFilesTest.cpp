#include "app/base/Win32.h"

#include <shlobj.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>

#include "import/ClipboardFiles.h"
#include "tests/import/ClipboardContents.h"
#include "tests/support/Pump.h"

namespace kestrelon::test {
namespace {

using Texts = std::vector<std::wstring>;

// Answers a few messages in its own way and writes down the changes of the clipboard that it hears of.
class Viewer : public win::Window {
 public:
  Viewer() { Create({.caption = L"viewer"}); }
  ~Viewer() override { Destroy(); }
  std::vector<std::string> log;
  std::function<void()> onChange;

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
    if (message == WM_DRAWCLIPBOARD) {
      log.push_back("window");
      if (onChange) onChange();
      return 77;
    }
    if (message == WM_USER) return 88;
    return Window::OnMessage(message, wParam, lParam);
  }
};

class ReadClipboardFiles : public testing::Test {
 protected:
  Texts Read() { return imports::ReadClipboardFiles(owner_.Handle()); }
  Viewer owner_;
};

TEST_F(ReadClipboardFiles, GivesThePathsInTheirOrder) {
  CopyFiles({L"C:\\b.txt", L"C:\\文件\\甲乙.txt", L"C:\\a.txt", L"C:\\windows"});
  EXPECT_EQ(Read(), (Texts{L"C:\\b.txt", L"C:\\文件\\甲乙.txt", L"C:\\a.txt", L"C:\\windows"}));
}

TEST_F(ReadClipboardFiles, CutsAPathThatIsLongerThanItsBufferAfter259Units) {
  const std::wstring fits = L"C:\\" + std::wstring(256, L'f'), tooLong = L"C:\\" + std::wstring(300, L'l');
  CopyFiles({fits, tooLong, L"C:\\next.txt"});
  EXPECT_EQ(Read(), (Texts{fits, tooLong.substr(0, 259), L"C:\\next.txt"}));
}

TEST_F(ReadClipboardFiles, IsEmptyWhereTheClipboardHoldsAText) {
  CopyText(L"C:\\a.txt");
  EXPECT_EQ(Read(), Texts{});
}

// Some systems find one file without a name in it.
TEST_F(ReadClipboardFiles, IsEmptyForAListWithoutFiles) {
  DROPFILES head{};
  head.pFiles = sizeof head;
  head.fWide = TRUE;
  std::string bytes(sizeof head + 2 * sizeof(wchar_t), '\0');
  std::memcpy(bytes.data(), &head, sizeof head);
  SetClipboard(CF_HDROP, bytes.data(), bytes.size());
  EXPECT_EQ(Read(), Texts{});
}

TEST_F(ReadClipboardFiles, IsEmptyForAnEmptyClipboard) {
  EmptyTheClipboard();
  EXPECT_EQ(Read(), Texts{});
}

TEST_F(ReadClipboardFiles, IsEmptyWhileAnotherWindowKeepsTheClipboardOpen) {
  CopyFiles({L"C:\\a.txt"});
  const Viewer other;
  ASSERT_TRUE(OpenClipboard(other.Handle()));
  EXPECT_EQ(Read(), Texts{});
  EXPECT_EQ(GetOpenClipboardWindow(), other.Handle()) << "it stays the other window's";
  CloseClipboard();
  EXPECT_EQ(Read(), Texts{L"C:\\a.txt"});
}

TEST_F(ReadClipboardFiles, ClosesTheClipboardAgainWithItsContentsUntouched) {
  CopyFiles({L"C:\\a.txt"});
  const DWORD before = GetClipboardSequenceNumber();
  Read();
  EXPECT_EQ(GetOpenClipboardWindow(), nullptr);
  EXPECT_EQ(GetClipboardSequenceNumber(), before);
  EXPECT_EQ(Read(), Texts{L"C:\\a.txt"});
}

class ClipboardHook : public testing::Test {
 protected:
  ClipboardHook() {
    EmptyTheClipboard();
    window_.emplace();
  }
  void Install() {
    hook_.Install(window_->Handle(), [this] { window_->log.push_back("changed"); });
  }
  bool HeardOf(std::size_t changes) {
    return PumpUntil(
        [&] { return std::count(Log().begin(), Log().end(), "changed") == std::ptrdiff_t(changes); });
  }
  std::vector<std::string>& Log() { return window_->log; }

  std::optional<Viewer> window_;
  imports::ClipboardHook hook_;
};

TEST_F(ClipboardHook, CallsBackAtOnceAndAfterEveryChange) {
  Install();
  EXPECT_TRUE(HeardOf(1));
  CopyText(L"one");
  EXPECT_TRUE(HeardOf(2));
  CopyFiles({L"C:\\two.txt"});
  EXPECT_TRUE(HeardOf(3));
}

TEST_F(ClipboardHook, AsksTheWindowsOwnProcedureFirstAndKeepsItsResults) {
  Install();
  HeardOf(1);
  Log().clear();
  EXPECT_EQ(SendMessageW(window_->Handle(), WM_DRAWCLIPBOARD, 0, 0), 77);
  EXPECT_EQ(Log(), (std::vector<std::string>{"window", "changed"}));
  EXPECT_EQ(SendMessageW(window_->Handle(), WM_USER, 0, 0), 88);
  EXPECT_EQ(Log().size(), 2u) << "no other message tells of a change";
}

TEST_F(ClipboardHook, IgnoresAFailureAndGoesOnWithTheNextChange) {
  int calls = 0;
  hook_.Install(window_->Handle(), [&] {
    ++calls;
    throw std::runtime_error("unreadable");
  });
  EXPECT_EQ(SendMessageW(window_->Handle(), WM_DRAWCLIPBOARD, 0, 0), 77);
  const int before = calls;
  CopyText(L"next");
  EXPECT_TRUE(PumpUntil([&] { return calls == before + 1; }));
}

TEST_F(ClipboardHook, AnswersNoMoreAfterItWasRemoved) {
  Install();
  HeardOf(1);
  hook_.Remove();
  CopyText(L"later");
  EXPECT_TRUE(PumpUntil([this] { return Log().back() == "window" && Log().size() == 3; }));
  EXPECT_EQ(SendMessageW(window_->Handle(), WM_DRAWCLIPBOARD, 0, 0), 77);
  EXPECT_EQ(Log(), (std::vector<std::string>{"window", "changed", "window", "window"}));
}

TEST_F(ClipboardHook, MayBeRemovedByTheWindowWhileAMessageIsUnderWay) {
  Install();
  HeardOf(1);
  Log().clear();
  window_->onChange = [this] { hook_.Remove(); };
  EXPECT_EQ(SendMessageW(window_->Handle(), WM_DRAWCLIPBOARD, 0, 0), 77);
  EXPECT_EQ(Log(), std::vector<std::string>{"window"});
}

TEST_F(ClipboardHook, StaysInTheChainOfViewersUntilItsWindowGoes) {
  Install();
  hook_.Remove();
  EXPECT_EQ(GetClipboardViewer(), window_->Handle());
}

TEST_F(ClipboardHook, PassesNothingOnToTheViewerThatRegisteredBefore) {
  Viewer earlier;
  SetClipboardViewer(earlier.Handle());
  ASSERT_TRUE(PumpUntil([&] { return earlier.log.size() == 1; }));
  Install();
  HeardOf(1);
  CopyText(L"news");
  EXPECT_TRUE(HeardOf(2));
  EXPECT_EQ(earlier.log.size(), 1u);
}

TEST_F(ClipboardHook, ServesAnotherWindowAfterTheFirstIsGone) {
  Install();
  window_.reset();
  hook_.Remove();
  window_.emplace();
  Install();
  EXPECT_TRUE(HeardOf(1));
  CopyText(L"news");
  EXPECT_TRUE(HeardOf(2));
}

}  // namespace
}  // namespace kestrelon::test
