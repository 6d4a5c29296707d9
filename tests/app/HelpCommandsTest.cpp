// The entries of the help menu.

#include "tests/support/MainFormFixture.h"

namespace kestrelon::test {
namespace {

class HelpMenu : public MainFormFixture {
 protected:
  // Runs a command that opens a window and returns that window's name; the window is closed.
  std::wstring WindowOf(const wchar_t* command) {
    std::wstring name;
    const OnWindow opened(
        [this](HWND window) {
          return window != form->Handle() && dynamic_cast<win::Form*>(win::Window::Of(window)) != nullptr;
        },
        [&](HWND window) {
          EXPECT_FALSE(IsWindowEnabled(form->Handle()));
          name = dynamic_cast<win::Form*>(win::Window::Of(window))->Name();
          SendMessageW(window, WM_CLOSE, 0, 0);
        });
    Command(command);
    EXPECT_TRUE(IsWindowEnabled(form->Handle()));
    return name;
  }
};

TEST_F(HelpMenu, ShowsTheTips) {
  Start();
  EXPECT_EQ(WindowOf(L"meu_moretips"), L"frmTip");
}

TEST_F(HelpMenu, ShowsTheAboutBox) {
  Start();
  EXPECT_EQ(WindowOf(L"meu_about"), L"frmAbout");
}

TEST_F(HelpMenu, OpensTheTwoMails) {
  Start();
  world.executionResults = {33, 33};

  Command(L"meu_sendemailtoauthor");
  Command(L"meu_reportingbugs");

  ASSERT_EQ(world.executions.size(), 2u);
  EXPECT_TRUE(world.executions[0].target.starts_with(L"mailto:" + program.feedbackAddress + L"?"));
  EXPECT_TRUE(world.executions[1].target.starts_with(L"mailto:" + program.bugReportAddress + L"?"));
}

TEST_F(HelpMenu, ChangesNoData) {
  Start();
  program.databaseSaved = true;
  world.executionResults = {33};

  WindowOf(L"meu_moretips");
  WindowOf(L"meu_about");
  Command(L"meu_reportingbugs");

  EXPECT_TRUE(program.databaseSaved);
}

}  // namespace
}  // namespace kestrelon::test
