#include "ui/frmAbout.h"

#include <cstdlib>

#include "lang/SelectLanguage.h"
#include "packaging/resource.h"
#include "ui/Mail.h"
#include "ui/fase.h"
#include "ui/win/Boxes.h"

namespace kestrelon::ui {
namespace {

constexpr BYTE kAlpha = 220;  // of 255

constexpr double kWidth = 5400, kMargin = 225, kGap = 120;
constexpr double kIconSize = 480;  // 32 pixels at 96 an inch
constexpr double kTextLeft = kMargin + kIconSize + kGap, kTextWidth = kWidth - kTextLeft - kMargin;
constexpr double kTitlePoints = 16, kPoints = 10;
constexpr double kTitleHeight = 480, kLineHeight = 330;
constexpr double kVersionTop = kMargin + kTitleHeight + kGap;
constexpr double kMailTop = kVersionTop + kLineHeight + kGap;
constexpr double kButtonWidth = 1950, kButtonHeight = 420;
constexpr double kButtonTop = kMailTop + kLineHeight + 2 * kGap;
constexpr double kSysInfoLeft = kWidth - kMargin - kButtonWidth;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

int Brightness(COLORREF colour) {
  return (299 * GetRValue(colour) + 587 * GetGValue(colour) + 114 * GetBValue(colour)) / 1000;
}

// The system's colour of links, unless it can hardly be read on the window's own colour.
COLORREF LinkColour() {
  constexpr int kReadable = 80;
  const COLORREF link = ::GetSysColor(COLOR_HOTLIGHT), face = ::GetSysColor(COLOR_BTNFACE);
  if (std::abs(Brightness(link) - Brightness(face)) >= kReadable) return link;
  return Brightness(face) >= 128 ? RGB(0, 102, 204) : RGB(153, 204, 255);
}

}  // namespace

void frmAbout::Show(HWND owner) {
  CreateControls(owner);
  Form_Load();
  ShowModal(owner);
}

void frmAbout::CreateControls(HWND owner) {
  CreateDialogWindow(L"About Kestrelon", owner);

  AddControl({L"Image1",
              -1,
              win::ControlKind::kOther,
              L"",
              L"",
              {kMargin, kMargin, kIconSize, kIconSize},
              SS_ICON | SS_REALSIZECONTROL});
  // Neither has a tag: name and version are the same in every language.
  const std::wstring title = L" " + program_.productName;
  const std::wstring version = program_.versionLabel + L" " + program_.editionLabel;
  AddControl({L"lblTitle",
              -1,
              win::ControlKind::kLabel,
              L"",
              title.c_str(),
              {kTextLeft, kMargin, kTextWidth, kTitleHeight},
              SS_NOTIFY | SS_NOPREFIX});
  AddControl({L"lblVersion",
              -1,
              win::ControlKind::kLabel,
              L"",
              version.c_str(),
              {kTextLeft, kVersionTop, kTextWidth, kLineHeight},
              SS_NOPREFIX});
  AddControl({L"Label1",
              -1,
              win::ControlKind::kLabel,
              L"Label1",
              L"Mail to support",
              {kTextLeft, kMailTop, kTextWidth, kLineHeight},
              SS_NOTIFY});
  win::FormControl& ok =
      AddControl({L"cmdOK",
                  -1,
                  win::ControlKind::kCommandButton,
                  L"cmdOK",
                  L"&OK",
                  {kSysInfoLeft - kGap - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight}});
  SetDefaultButton(ok);
  SetCancelButton(ok);
  AddControl({L"cmdSysInfo",
              -1,
              win::ControlKind::kCommandButton,
              L"cmdSysInfo",
              L"&System Info...",
              {kSysInfoLeft, kButtonTop, kButtonWidth, kButtonHeight}});
  SizeClientAndCentre(kWidth, kHeight, owner);
}

void frmAbout::Form_Load() {
  lang::ReadLanguage(*this, program_, program_.languageName, world_);
  win::FontSpec font = lang::FontOfLocale(::GetUserDefaultLCID());
  font.points = kTitlePoints;
  SetControlFont(*Find(L"lblTitle"), font);
  font.points = kPoints;
  SetControlFont(*Find(L"lblVersion"), font);
  LayOut();
  MakeTranslucent(Handle(), kAlpha);
}

void frmAbout::LayOut() {
  Form::LayOut();
  const win::FormControl* const image = Find(L"Image1");
  if (!image) return;
  const int pixels = win::PixelsFromTwips(kIconSize, Dpi());
  const HANDLE icon = ::LoadImageW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDI_PROGRAM), IMAGE_ICON,
                                   pixels, pixels, LR_SHARED);
  ::SendMessageW(image->window, STM_SETICON, reinterpret_cast<WPARAM>(icon), 0);
}

void frmAbout::lblTitle_Click() { world_.shellExecute(Handle(), L"", program_.homePage, SW_SHOWNORMAL); }

void frmAbout::Label1_Click() { meu_sendemailtoauthor_Click(program_, world_, Handle()); }

void frmAbout::cmdSysInfo_Click() {
  if (world_.startProgram(L"msinfo32.exe", SW_SHOWNORMAL)) return;
  win::Inform(world_, Handle(), lang::Message(program_, lang::kNoSystemInformation), program_.productName);
}

bool frmAbout::IsLink(HWND control) {
  for (const wchar_t* name : {L"lblTitle", L"Label1"}) {
    const win::FormControl* const label = Find(name);
    if (label && label->window && label->window == control) return true;
  }
  return false;
}

LRESULT frmAbout::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_SETCURSOR && IsLink(reinterpret_cast<HWND>(wParam))) {
    ::SetCursor(::LoadCursorW(nullptr, IDC_HAND));
    return TRUE;
  }
  if (message == WM_CTLCOLORSTATIC && IsLink(reinterpret_cast<HWND>(lParam))) {
    const auto context = reinterpret_cast<HDC>(wParam);
    ::SetTextColor(context, LinkColour());
    ::SetBkColor(context, ::GetSysColor(COLOR_BTNFACE));
    return reinterpret_cast<LRESULT>(::GetSysColorBrush(COLOR_BTNFACE));
  }
  return Form::OnMessage(message, wParam, lParam);
}

void frmAbout::OnControl(win::FormControl& control, UINT code) {
  // A label's STN_CLICKED is the same number.
  if (code != BN_CLICKED) return;
  if (control.name == L"lblTitle") lblTitle_Click();
  if (control.name == L"Label1") Label1_Click();
  if (control.name == L"cmdSysInfo") cmdSysInfo_Click();
  if (control.name == L"cmdOK") Close();
}

}  // namespace kestrelon::ui
