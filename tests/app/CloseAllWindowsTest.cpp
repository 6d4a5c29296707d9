#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/CloseAllWindows.h"
#include "ui/win/Window.h"

namespace kestrelon::app {
namespace {

class Noting : public win::Window {
 public:
  Noting(std::string name, std::vector<std::string>& gone, HWND owner = nullptr)
      : name_(std::move(name)), gone_(gone) {
    win::WindowSpec spec;
    spec.className = L"KestrelonNotingWindow";
    spec.owner = owner;
    spec.style = WS_POPUP | WS_CAPTION;
    Create(spec);
  }

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
    if (message == WM_DESTROY) gone_.push_back(name_);
    return Window::OnMessage(message, wParam, lParam);
  }

 private:
  std::string name_;
  std::vector<std::string>& gone_;
};

bool Quits() {
  MSG message;
  return PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
}

TEST(CloseAllWindows, UnloadsTheWindowsInFrontFirstAndTheMainWindowLast) {
  std::vector<std::string> gone;
  Noting main("main", gone);
  Noting first("first tool", gone, main.Handle());
  Noting second("second tool", gone, main.Handle());

  CloseAllWindows(false);

  EXPECT_EQ(gone, (std::vector<std::string>{"second tool", "first tool", "main"}));
  EXPECT_EQ(main.Handle(), nullptr);
  EXPECT_TRUE(Quits());
}

TEST(CloseAllWindows, EndsTheProgramWhenNothingIsOpen) {
  CloseAllWindows(false);
  EXPECT_TRUE(Quits());
}

}  // namespace
}  // namespace kestrelon::app
