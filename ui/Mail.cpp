#include "ui/Mail.h"

namespace kestrelon::ui {
namespace {

constexpr const wchar_t* kSubject = L"?subject=Feedback for Kestrelon";
constexpr const wchar_t* kAsterisks =
    L"***********************************************************************%0a%0a";

void OpenMail(const OutsideWorld& world, HWND owner, const std::wstring& link) {
  world.shellExecute(owner, L"open", link, SW_HIDE);
}

}  // namespace

std::wstring FeedbackMail(const Program& program) { return L"mailto:" + program.feedbackAddress + kSubject; }

std::wstring BugReportMail(const Program& program) {
  // A bug report has the subject of the feedback mail: both are sorted as feedback.
  return L"mailto:" + program.bugReportAddress + kSubject + L"&body=" + kAsterisks +
         L"%0a1 .Provide an information that will reproduce the bug .%0a%0a" + L"info:%0a%0a" + kAsterisks +
         L"2 .Please supply any suggestions that may be helpful in fixing the bug .%0a%0a" + L"suggestions:";
}

void meu_sendemailtoauthor_Click(const Program& program, const OutsideWorld& world, HWND owner) {
  OpenMail(world, owner, FeedbackMail(program));
}

void meu_reportingbugs_Click(const Program& program, const OutsideWorld& world, HWND owner) {
  OpenMail(world, owner, BugReportMail(program));
}

}  // namespace kestrelon::ui
