#include <gtest/gtest.h>

#include "tests/support/FakeWorld.h"
#include "ui/Mail.h"

namespace kestrelon::ui {
namespace {

constexpr const wchar_t* kFeedback = L"mailto:feedback@kestrelon.example.org?subject=Feedback for Kestrelon";
constexpr const wchar_t* kBugReport =
    L"mailto:bugs@kestrelon.example.org?subject=Feedback for Kestrelon&body="
    L"***********************************************************************%0a%0a"
    L"%0a1 .Provide an information that will reproduce the bug .%0a%0a"
    L"info:%0a%0a"
    L"***********************************************************************%0a%0a"
    L"2 .Please supply any suggestions that may be helpful in fixing the bug .%0a%0a"
    L"suggestions:";

TEST(FeedbackMail, HasTheFeedbackAddressAndASubject) { EXPECT_EQ(FeedbackMail(Program()), kFeedback); }

TEST(FeedbackMail, GoesToTheAddressOfTheProgram) {
  Program program;
  program.feedbackAddress = L"a@b.example";
  EXPECT_EQ(FeedbackMail(program), L"mailto:a@b.example?subject=Feedback for Kestrelon");
}

TEST(BugReportMail, HasItsAddressTheSameSubjectAndABodyToFillIn) {
  EXPECT_EQ(BugReportMail(Program()), kBugReport);
}

TEST(BugReportMail, HasTwoLinesOf71Asterisks) {
  const std::wstring link = BugReportMail(Program());
  const std::wstring line(71, L'*');
  const std::size_t first = link.find(L'*'), second = link.find(L'*', first + 71);

  EXPECT_EQ(link.substr(first, 72), line + L'%');
  EXPECT_EQ(link.substr(second, 72), line + L'%');
  EXPECT_EQ(link.find(L'*', second + 71), std::wstring::npos);
}

TEST(MailCommands, OpenTheLinkWithoutAWindow) {
  test::FakeWorld world;
  world.executionResults = {33, 33};

  meu_sendemailtoauthor_Click(Program(), world, nullptr);
  meu_reportingbugs_Click(Program(), world, nullptr);

  ASSERT_EQ(world.executions.size(), 2u);
  EXPECT_EQ(world.executions[0].target, kFeedback);
  EXPECT_EQ(world.executions[1].target, kBugReport);
  for (const auto& execution : world.executions) {
    EXPECT_EQ(execution.verb, L"open");
    EXPECT_EQ(execution.show, SW_HIDE);
  }
}

}  // namespace
}  // namespace kestrelon::ui
