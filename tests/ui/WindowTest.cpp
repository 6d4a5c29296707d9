#include <gtest/gtest.h>

#include <stdexcept>
#include <system_error>
#include <vector>

#include "tests/support/Pump.h"
#include "ui/win/Window.h"

namespace kestrelon::win {
namespace {

std::vector<std::string>& Reported() {
  static std::vector<std::string> reported;
  return reported;
}

// While it stands, exceptions that leave a handler are written down instead of failing the test.
class ExpectedExceptions {
 public:
  ExpectedExceptions() : before_(SetLastResort([](const char* what) { Reported().push_back(what); })) {
    Reported().clear();
  }
  ~ExpectedExceptions() { SetLastResort(before_); }
  ExpectedExceptions(const ExpectedExceptions&) = delete;
  ExpectedExceptions& operator=(const ExpectedExceptions&) = delete;

 private:
  LastResort before_;
};

constexpr UINT kThrow = WM_APP + 1, kThrowNumber = WM_APP + 2;

class Plain : public Window {
 public:
  UINT failOn = 0;

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
    if (message == kThrow || (failOn != 0 && message == failOn)) throw std::runtime_error("went wrong");
    if (message == kThrowNumber) throw 5;
    return Window::OnMessage(message, wParam, lParam);
  }
};

TEST(Window, KnowsItsHandleFromCreationToTheEnd) {
  Plain window;
  EXPECT_EQ(window.Handle(), nullptr);

  window.Create({.caption = L"Title"});
  const HWND handle = window.Handle();
  EXPECT_TRUE(IsWindow(handle));
  EXPECT_EQ(Window::Of(handle), &window);

  window.Destroy();
  EXPECT_EQ(window.Handle(), nullptr);
  EXPECT_FALSE(IsWindow(handle));
}

TEST(Window, IsDestroyedWithItsObject) {
  HWND handle = nullptr;
  {
    Plain window;
    window.Create({});
    handle = window.Handle();
  }
  EXPECT_FALSE(IsWindow(handle));
}

TEST(Window, CarriesItsCaption) {
  Plain window;
  window.Create({.caption = L"one"});
  EXPECT_EQ(window.Caption(), L"one");

  window.SetCaption(L"\u4E8C");

  EXPECT_EQ(window.Caption(), L"\u4E8C");
  EXPECT_EQ(test::TextOf(window.Handle()), L"\u4E8C");
}

TEST(Window, LetsNoExceptionLeaveItsProcedure) {
  const ExpectedExceptions expected;
  Plain window;
  window.Create({});

  EXPECT_EQ(SendMessageW(window.Handle(), kThrow, 0, 0), 0);
  EXPECT_EQ(SendMessageW(window.Handle(), kThrowNumber, 0, 0), 0);

  EXPECT_EQ(Reported(), (std::vector<std::string>{"went wrong", "unknown exception"}));
  EXPECT_TRUE(IsWindow(window.Handle()));
}

TEST(Window, ThatFailsWhileItIsMadeIsNotKeptAndThrows) {
  const ExpectedExceptions expected;
  Plain window;
  window.failOn = WM_CREATE;

  EXPECT_THROW(window.Create({}), std::system_error);

  EXPECT_EQ(window.Handle(), nullptr);
  EXPECT_EQ(Reported().size(), 1u);
}

TEST(Window, ThatCannotBeMadeThrows) {
  Plain window;
  const auto noWindow = reinterpret_cast<HWND>(INT_PTR{0x7FFF0});
  EXPECT_THROW(window.Create({.style = WS_CHILD, .owner = noWindow}), std::system_error);
}

TEST(Window, OfAWindowThatIsNotOursIsNull) {
  EXPECT_EQ(Window::Of(GetDesktopWindow()), nullptr);
  EXPECT_EQ(Window::Of(nullptr), nullptr);
}

TEST(Window, TakesANewDpiFromTheMessage) {
  Plain window;
  window.Create({});
  RECT suggested{0, 0, 100, 100};

  SendMessageW(window.Handle(), WM_DPICHANGED, MAKEWPARAM(144, 144), reinterpret_cast<LPARAM>(&suggested));

  EXPECT_EQ(window.Dpi(), 144u);
}

}  // namespace
}  // namespace kestrelon::win
