#include "ui/frmTip.h"

#include <algorithm>
#include <optional>

#include "lang/SelectLanguage.h"

namespace kestrelon::ui {
namespace {

constexpr const wchar_t* kTipsFile = L"TIPOFDAY.TXT";

constexpr double kWidth = 6000, kMargin = 225, kGap = 120;
constexpr double kInnerWidth = kWidth - 2 * kMargin;
constexpr double kHeadingHeight = 450, kTipHeight = 1200;
constexpr double kHeadingPoints = 14, kTipPoints = 10;
constexpr double kTipTop = kMargin + kHeadingHeight + kGap;
constexpr double kButtonWidth = 1650, kButtonHeight = 420;
constexpr double kButtonTop = kTipTop + kTipHeight + kGap;
constexpr double kOkLeft = kWidth - kMargin - kButtonWidth;
constexpr double kHeight = kButtonTop + kButtonHeight + kMargin;

// nullopt when the file is not there, or is none that can be read.
std::optional<std::string> BytesOf(const std::wstring& path) {
  const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return std::nullopt;
  const win::Finally close([file] { ::CloseHandle(file); });
  std::string bytes;
  char block[4096];
  for (DWORD read = 0; ::ReadFile(file, block, sizeof block, &read, nullptr) && read > 0;) {
    bytes.append(block, read);
  }
  return bytes;
}

// Empty when the bytes are no text of that code page.
std::wstring Decoded(std::string_view bytes, UINT codePage, DWORD flags) {
  const int size = static_cast<int>(bytes.size());
  std::wstring text(
      static_cast<std::size_t>(::MultiByteToWideChar(codePage, flags, bytes.data(), size, nullptr, 0)),
      L'\0');
  ::MultiByteToWideChar(codePage, flags, bytes.data(), size, text.data(), static_cast<int>(text.size()));
  return text;
}

std::wstring TextOf(std::string_view bytes) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (bytes.starts_with(kByteOrderMark)) bytes.remove_prefix(kByteOrderMark.size());
  std::wstring text = Decoded(bytes, CP_UTF8, MB_ERR_INVALID_CHARS);
  return text.empty() ? Decoded(bytes, CP_ACP, 0) : text;
}

}  // namespace

std::vector<std::wstring> TipsOf(std::string_view bytes) {
  std::vector<std::wstring> tips;
  const std::wstring text = TextOf(bytes);
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(L'\n', start), text.size());
    tips.push_back(text.substr(start, end - start));
    if (tips.back().ends_with(L'\r')) tips.back().pop_back();
    start = end + 1;
  }
  return tips;
}

void frmTip::Show(HWND owner) {
  CreateControls(owner);
  Form_Load();
  ShowModal(owner);
}

void frmTip::CreateControls(HWND owner) {
  CreateDialogWindow(L"Tip of the day", owner);

  AddControl({L"Label1",
              -1,
              win::ControlKind::kLabel,
              L"Label1",
              L"Did you know...",
              {kMargin, kMargin, kInnerWidth, kHeadingHeight}});
  // No tag: the text is a tip. An ampersand in it is no access key.
  AddControl({L"lblTipText",
              -1,
              win::ControlKind::kLabel,
              L"",
              L"",
              {kMargin, kTipTop, kInnerWidth, kTipHeight},
              SS_NOPREFIX});
  AddControl({L"cmdNextTip",
              -1,
              win::ControlKind::kCommandButton,
              L"cmdNextTip",
              L"&Next Tip",
              {kOkLeft - kGap - kButtonWidth, kButtonTop, kButtonWidth, kButtonHeight}});
  win::FormControl& ok = AddControl({L"cmdOK",
                                     -1,
                                     win::ControlKind::kCommandButton,
                                     L"cmdOK",
                                     L"&OK",
                                     {kOkLeft, kButtonTop, kButtonWidth, kButtonHeight}});
  SetDefaultButton(ok);
  SetCancelButton(ok);
  SizeClientAndCentre(kWidth, kHeight, owner);
}

void frmTip::Form_Load() {
  lang::ReadLanguage(*this, program_, program_.languageName, world_);
  win::FontSpec font = lang::FontOfLocale(::GetUserDefaultLCID());
  font.points = kHeadingPoints;
  SetControlFont(*Find(L"Label1"), font);
  font.points = kTipPoints;
  SetControlFont(*Find(L"lblTipText"), font);
  ::SetFocus(Find(L"cmdOK")->window);

  world_.reseedRandom();
  const auto bytes = BytesOf(program_.programFolder + kTipsFile);
  tips_ = TipsOf(bytes.value_or(std::string()));
  if (!bytes) SetControlCaption(*Find(L"lblTipText"), std::wstring(L"File ") + kTipsFile + L" not found ? ");
  if (tips_.empty()) return;
  tip_ = static_cast<std::size_t>(world_.randomFraction() * static_cast<double>(tips_.size())) + 1;
  ShowTip();
}

void frmTip::cmdNextTip_Click() {
  if (tips_.empty()) return;
  tip_ = tip_ == tips_.size() ? 1 : tip_ + 1;
  ShowTip();
}

void frmTip::ShowTip() { SetControlCaption(*Find(L"lblTipText"), tips_[tip_ - 1]); }

void frmTip::OnControl(win::FormControl& control, UINT code) {
  if (control.name == L"cmdNextTip" && code == BN_CLICKED) cmdNextTip_Click();
  if (control.name == L"cmdOK" && code == BN_CLICKED) Close();
}

}  // namespace kestrelon::ui
