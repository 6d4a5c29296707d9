#pragma once

#include <string>

#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"

namespace kestrelon::ui {

// The mailto links of the two mails: address, subject and, for a bug report, a body to fill in. In a link
// "%0a" is a line break; everything else stands as it is, blanks too.
std::wstring FeedbackMail(const Program& program);
std::wstring BugReportMail(const Program& program);

// Open them in the user's mail program.
void meu_sendemailtoauthor_Click(const Program& program, const OutsideWorld& world, HWND owner);
void meu_reportingbugs_Click(const Program& program, const OutsideWorld& world, HWND owner);

}  // namespace kestrelon::ui
