#include "ui/CTooltip.h"

#include <algorithm>
#include <climits>

#include "app/base/File.h"

namespace kestrelon::ui {

namespace {

// The tooltip refuses a title of 100 units or more and would show none.
constexpr std::size_t kLongestTitle = 99;
// Wide enough for any line: the tooltip breaks lines at CR LF only once it has been told a width.
constexpr LPARAM kWidestLine = SHRT_MAX;
// The first user-defined message number, which is no tooltip message (TTM_SETDELAYTIME is 1027): the control
// ignores it, and tips keep their standard timing.
constexpr UINT kTimesMessage = 1024;

}  // namespace

CTooltip::CTooltip() {
  const INITCOMMONCONTROLSEX classes{sizeof(INITCOMMONCONTROLSEX), ICC_BAR_CLASSES};
  ::InitCommonControlsEx(&classes);
}

TTTOOLINFOW CTooltip::Tool() {
  TTTOOLINFOW tool{};
  tool.cbSize = kToolInfoSize;
  tool.uFlags = TTF_IDISHWND | TTF_SUBCLASS | (centered_ ? TTF_CENTERTIP : 0U);
  tool.hwnd = parent_;
  tool.uId = reinterpret_cast<UINT_PTR>(parent_);
  tool.lpszText = tipText_.data();
  return tool;
}

void CTooltip::Create(HWND parent) {
  Destroy();
  const DWORD style = TTS_ALWAYSTIP | TTS_NOPREFIX | (style_ == TipStyle::kBalloon ? DWORD{TTS_BALLOON} : 0U);
  // Owned by the control's top-level window, which it must stay above.
  const HWND tooltip = ::CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, style, CW_USEDEFAULT, CW_USEDEFAULT,
                                         CW_USEDEFAULT, CW_USEDEFAULT, ::GetAncestor(parent, GA_ROOT),
                                         nullptr, ::GetModuleHandleW(nullptr), nullptr);
  if (tooltip == nullptr) ThrowLastError(L"tooltip");
  handle_ = tooltip;
  parent_ = parent;
  TTTOOLINFOW tool = Tool();
  ::SendMessageW(handle_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
  ::SendMessageW(handle_, TTM_SETMAXTIPWIDTH, 0, kWidestLine);
  if (!title_.empty() || icon_ != TipIcon::kNone) SendTitle();
  if (foreColor_) ::SendMessageW(handle_, TTM_SETTIPTEXTCOLOR, *foreColor_, 0);
  if (backColor_) ::SendMessageW(handle_, TTM_SETTIPBKCOLOR, *backColor_, 0);
  ::SendMessageW(handle_, kTimesMessage, TTDT_AUTOPOP, visibleTime_);
  ::SendMessageW(handle_, kTimesMessage, TTDT_INITIAL, delayTime_);
}

void CTooltip::Destroy() {
  // The owner may have taken the tooltip with it.
  if (handle_ != nullptr && ::IsWindow(handle_)) ::DestroyWindow(handle_);
  handle_ = nullptr;
  parent_ = nullptr;
}

void CTooltip::PointerIsAt(POINT client) {
  if (handle_ == nullptr) return;
  MSG moved{};
  moved.hwnd = parent_;
  moved.message = WM_MOUSEMOVE;
  moved.lParam = MAKELPARAM(client.x, client.y);
  ::SendMessageW(handle_, TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&moved));
}

void CTooltip::Hide() {
  if (handle_ != nullptr) ::SendMessageW(handle_, TTM_POP, 0, 0);
}

void CTooltip::SendTitle() {
  const std::wstring shown = title_.substr(0, kLongestTitle);
  ::SendMessageW(handle_, TTM_SETTITLEW, static_cast<WPARAM>(icon_), reinterpret_cast<LPARAM>(shown.c_str()));
}

void CTooltip::SetIcon(TipIcon icon) {
  icon_ = icon;
  if (handle_ != nullptr) SendTitle();
}

void CTooltip::SetTitle(const std::wstring& title) {
  title_ = title;
  if (handle_ != nullptr) SendTitle();
}

void CTooltip::SetForeColor(std::optional<COLORREF> color) {
  foreColor_ = color;
  if (handle_ != nullptr)
    ::SendMessageW(handle_, TTM_SETTIPTEXTCOLOR, color.value_or(::GetSysColor(COLOR_INFOTEXT)), 0);
}

void CTooltip::SetBackColor(std::optional<COLORREF> color) {
  backColor_ = color;
  if (handle_ != nullptr)
    ::SendMessageW(handle_, TTM_SETTIPBKCOLOR, color.value_or(::GetSysColor(COLOR_INFOBK)), 0);
}

void CTooltip::SetTipText(const std::wstring& text) {
  tipText_ = text;
  if (handle_ == nullptr) return;
  TTTOOLINFOW tool = Tool();
  ::SendMessageW(handle_, TTM_UPDATETIPTEXTW, 0, reinterpret_cast<LPARAM>(&tool));
}

}  // namespace kestrelon::ui
