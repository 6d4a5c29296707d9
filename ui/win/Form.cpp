#include "ui/win/Form.h"

#include <commctrl.h>

#include <algorithm>
#include <utility>

namespace kestrelon::win {

namespace {

bool IsOfClass(HWND window, const wchar_t* className) {
  wchar_t name[32] = {};
  return window != nullptr && ::GetClassNameW(window, name, 32) > 0 && ::lstrcmpiW(name, className) == 0;
}

// Is this a control's own edit for one of its labels? All keys are for that edit, whatever the form's
// buttons.
bool IsLabelEdit(HWND focus) {
  if (!IsOfClass(focus, WC_EDITW)) return false;
  const HWND parent = ::GetParent(focus);
  return IsOfClass(parent, WC_TREEVIEWW) || IsOfClass(parent, WC_LISTVIEWW);
}

// A box of several lines that Enter breaks lines in.
bool TakesEnter(HWND focus) {
  const LONG_PTR asked = ES_MULTILINE | ES_WANTRETURN;
  return IsOfClass(focus, WC_EDITW) && (::GetWindowLongPtrW(focus, GWL_STYLE) & asked) == asked;
}

// A drop-down list that is open: Enter and Escape close it.
bool IsOpenList(HWND focus) {
  return IsOfClass(focus, WC_COMBOBOXW) && ::SendMessageW(focus, CB_GETDROPPEDSTATE, 0, 0) != FALSE;
}

LRESULT DialogCode(HWND control) { return ::SendMessageW(control, WM_GETDLGCODE, 0, 0); }

RECT WorkAreaNear(HWND window) {
  MONITORINFO monitor{};
  monitor.cbSize = sizeof monitor;
  ::GetMonitorInfoW(::MonitorFromWindow(window, MONITOR_DEFAULTTOPRIMARY), &monitor);
  return monitor.rcWork;
}

bool IsUsable(HWND control) {
  return control != nullptr && ::IsWindow(control) && ::IsWindowVisible(control) &&
         ::IsWindowEnabled(control);
}

// One message, with the dialog keys of the form that it is for.
void Process(MSG& message) {
  if (message.message >= WM_KEYFIRST && message.message <= WM_KEYLAST && message.hwnd != nullptr) {
    auto* form = dynamic_cast<Form*>(Window::Of(::GetAncestor(message.hwnd, GA_ROOT)));
    if (form != nullptr && form->TranslateDialogMessage(message)) return;
  }
  ::TranslateMessage(&message);
  ::DispatchMessageW(&message);
}

}  // namespace

Form::~Form() {
  Close();  // the controls let go of the fonts before these are deleted
}

void Form::CreateDialogWindow(const std::wstring& caption, HWND owner, DWORD extendedStyle, DWORD style) {
  WindowSpec spec;
  spec.className = L"KestrelonDialog";
  spec.caption = caption;
  spec.style = WS_POPUP | WS_CAPTION | WS_SYSMENU | style;
  spec.extendedStyle = extendedStyle;
  spec.owner = owner;
  Create(spec);
}

void Form::SizeClientAndCentre(double widthTwips, double heightTwips, HWND owner) {
  RECT size{0, 0, PixelsFromTwips(widthTwips, Dpi()), PixelsFromTwips(heightTwips, Dpi())};
  ::AdjustWindowRectExForDpi(&size, static_cast<DWORD>(::GetWindowLongPtrW(Handle(), GWL_STYLE)),
                             ::GetMenu(Handle()) != nullptr,
                             static_cast<DWORD>(::GetWindowLongPtrW(Handle(), GWL_EXSTYLE)), Dpi());
  const int width = size.right - size.left, height = size.bottom - size.top;
  const RECT work = WorkAreaNear(owner != nullptr ? owner : Handle());
  RECT over = work;
  if (owner != nullptr && ::IsWindowVisible(owner) && !::IsIconic(owner)) ::GetWindowRect(owner, &over);
  // The title bar stays within reach: on the work area, with its upper left corner in any case.
  const int x =
      std::max<int>(work.left, std::min<int>((over.left + over.right - width) / 2, work.right - width));
  const int y =
      std::max<int>(work.top, std::min<int>((over.top + over.bottom - height) / 2, work.bottom - height));
  ::SetWindowPos(Handle(), nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

void Form::ShowModal(HWND owner) {
  if (Handle() == nullptr || modal_) return;
  modal_ = true;
  // Every window of the program waits, not the owner alone: a tool dialog that works on the same data too.
  std::pair<Form*, HWND> who{this, owner == nullptr ? nullptr : ::GetAncestor(owner, GA_ROOT)};
  ::EnumThreadWindows(
      ::GetCurrentThreadId(),
      [](HWND window, LPARAM parameter) -> BOOL {
        const auto& [self, root] = *reinterpret_cast<std::pair<Form*, HWND>*>(parameter);
        const bool titled = (::GetWindowLongPtrW(window, GWL_STYLE) & WS_CAPTION) == WS_CAPTION;
        if (window == self->Handle() || !::IsWindowEnabled(window)) return TRUE;
        if (window != root && !(titled && ::IsWindowVisible(window))) return TRUE;
        ::EnableWindow(window, FALSE);
        self->disabled_.push_back(window);
        return TRUE;
      },
      reinterpret_cast<LPARAM>(&who));
  const Finally enable([this] { EnableOthers(); });
  ::ShowWindow(Handle(), SW_SHOW);
  if (!::IsChild(Handle(), ::GetFocus())) FocusAControl();
  MSG message;
  while (modal_ && Handle() != nullptr && PumpOneMessage(message)) {
  }
  Close();  // the loop also ends when the program does
}

void Form::EnableOthers() {
  for (const HWND window : std::exchange(disabled_, {})) ::EnableWindow(window, TRUE);
}

void Form::Close() {
  modal_ = false;
  // While the others are disabled the system would make some other program's window the active one.
  EnableOthers();
  Destroy();
}

bool Form::PressesButton(HWND focus, WPARAM key) {
  // Enter belongs to the button that has the focus, else to the default button; Escape to the cancel button.
  UINT id = key == VK_RETURN ? defaultId_ : cancelId_;
  if (key == VK_RETURN && (DialogCode(focus) & (DLGC_DEFPUSHBUTTON | DLGC_UNDEFPUSHBUTTON)) != 0)
    id = static_cast<UINT>(::GetDlgCtrlID(focus));
  const HWND button = id == 0 ? nullptr : ::GetDlgItem(Handle(), static_cast<int>(id));
  if (button == nullptr) return false;  // the key is for the control then
  if (IsUsable(button))
    ::SendMessageW(Handle(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED), reinterpret_cast<LPARAM>(button));
  return true;
}

bool Form::TranslateDialogMessage(MSG& message) {
  const HWND form = Handle();
  if (form == nullptr || (message.hwnd != form && !::IsChild(form, message.hwnd))) return false;
  if (IsLabelEdit(message.hwnd)) return false;
  if (::GetCapture() == message.hwnd) return false;  // in a drag all keys are for the control that drags
  if (message.message == WM_KEYDOWN && (message.wParam == VK_RETURN || message.wParam == VK_ESCAPE)) {
    if (message.wParam == VK_RETURN && TakesEnter(message.hwnd)) return false;
    if (IsOpenList(message.hwnd)) return false;
    return PressesButton(message.hwnd, message.wParam);
  }
  return ::IsDialogMessageW(form, &message);
}

void Form::FocusAControl() {
  HWND target = IsUsable(lastFocus_) && ::IsChild(Handle(), lastFocus_) ? lastFocus_ : nullptr;
  if (target == nullptr) target = ::GetNextDlgTabItem(Handle(), nullptr, FALSE);
  if (target != nullptr) ::SetFocus(target);
}

void Form::OnActivate(bool active) {
  const HWND focus = ::GetFocus();
  if (!active) {
    if (focus != nullptr && ::IsChild(Handle(), focus) && !IsLabelEdit(focus)) lastFocus_ = focus;
  } else if (focus == nullptr || !::IsChild(Handle(), focus)) {
    FocusAControl();
  }
}

void Form::SetDefaultButton(FormControl& control) {
  defaultId_ = control.id;
  ::SendMessageW(control.window, BM_SETSTYLE, BS_DEFPUSHBUTTON | BS_NOTIFY, TRUE);
}

LRESULT Form::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_COMMAND:
      if (lParam == 0) break;
      if (FormControl* control = FindWindowOf(reinterpret_cast<HWND>(lParam)))
        OnControl(*control, HIWORD(wParam));
      return 0;
    case WM_CLOSE: Close(); return 0;
    case WM_ACTIVATE:
      if (HIWORD(wParam) != 0) break;  // minimised
      OnActivate(LOWORD(wParam) != WA_INACTIVE);
      return 0;
    case WM_SETFOCUS: FocusAControl(); return 0;
    case WM_NEXTDLGCTL: {  // how an access key of a label asks for the focus
      const HWND next = lParam != 0 ? reinterpret_cast<HWND>(wParam)
                                    : ::GetNextDlgTabItem(Handle(), ::GetFocus(), wParam != 0);
      ::SetFocus(next);
      return 0;
    }
    case DM_GETDEFID: return defaultId_ == 0 ? 0 : MAKELRESULT(defaultId_, DC_HASDEFID);
    case WM_DPICHANGED: {
      ApplyFonts();
      const RECT& suggested = *reinterpret_cast<const RECT*>(lParam);
      ::SetWindowPos(Handle(), nullptr, suggested.left, suggested.top, suggested.right - suggested.left,
                     suggested.bottom - suggested.top, SWP_NOZORDER | SWP_NOACTIVATE);
      LayOut();
      return 0;
    }
    case WM_SETTINGCHANGE:
      if (wParam == SPI_SETNONCLIENTMETRICS) ApplyFonts();
      break;
    case WM_DESTROY: EnableOthers(); break;
    case WM_NCCREATE:
      controls_.clear();
      nextId_ = kFirstId;
      defaultId_ = cancelId_ = 0;
      break;
    case WM_NCDESTROY:
      modal_ = false;
      lastFocus_ = nullptr;
      // The window may go inside the handler of one of its controls: the controls themselves stay until the
      // next one.
      for (FormControl& control : controls_) control.window = nullptr;
      break;
  }
  return Window::OnMessage(message, wParam, lParam);
}

bool PumpOneMessage(MSG& message) {
  const BOOL result = ::GetMessageW(&message, nullptr, 0, 0);
  if (result > 0) {
    Process(message);
    return true;
  }
  if (result == 0) ::PostQuitMessage(static_cast<int>(message.wParam));
  return false;
}

void DoEvents() {
  MSG message;
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    if (message.message == WM_QUIT) {
      ::PostQuitMessage(static_cast<int>(message.wParam));
      return;
    }
    Process(message);
  }
}

}  // namespace kestrelon::win
