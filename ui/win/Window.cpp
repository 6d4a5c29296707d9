#include "ui/win/Window.h"

#include <utility>

#include "app/base/File.h"
#include "app/base/OutsideWorld.h"
#include "app/base/Program.h"

namespace kestrelon::win {

namespace {

constexpr WORD kProgramIcon = 1;

void ShowLastResort(const char* what) {
  SystemWorld().messageBox(::GetActiveWindow(), Widen(what), Program().productName,
                           MB_OK | MB_ICONEXCLAMATION);
}

LastResort lastResort = &ShowLastResort;

void RegisterClassOnce(const wchar_t* name, WNDPROC procedure) {
  const HINSTANCE instance = ::GetModuleHandleW(nullptr);
  WNDCLASSEXW known{};
  known.cbSize = sizeof known;
  if (::GetClassInfoExW(instance, name, &known)) return;
  WNDCLASSEXW type{};
  type.cbSize = sizeof type;
  type.lpfnWndProc = procedure;
  type.hInstance = instance;
  // Both sizes, or the system would make the small one of the large one.
  type.hIcon = ProgramIcon(::GetSystemMetrics(SM_CXICON));
  type.hIconSm = ProgramIcon(::GetSystemMetrics(SM_CXSMICON));
  type.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
  type.hbrBackground = reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_BTNFACE + 1));
  type.lpszClassName = name;
  if (::RegisterClassExW(&type) == 0) ThrowLastError(L"RegisterClassExW");
}

}  // namespace

HICON ProgramIcon(int pixels) {
  return static_cast<HICON>(::LoadImageW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(kProgramIcon),
                                         IMAGE_ICON, pixels, pixels, LR_DEFAULTCOLOR | LR_SHARED));
}

bool IsReachable(HWND control) {
  return ::IsWindowEnabled(control) && ::IsWindowEnabled(::GetAncestor(control, GA_ROOT));
}

LastResort SetLastResort(LastResort handler) { return std::exchange(lastResort, handler); }

void ReportToLastResort(const char* what) { lastResort(what); }

Window::~Window() { Destroy(); }

void Window::Create(const WindowSpec& spec) {
  RegisterClassOnce(spec.className, &Window::Procedure);
  const HWND window =
      ::CreateWindowExW(spec.extendedStyle, spec.className, spec.caption.c_str(), spec.style, spec.x, spec.y,
                        spec.width, spec.height, spec.owner, spec.menu, ::GetModuleHandleW(nullptr), this);
  if (window == nullptr) ThrowLastError(L"CreateWindowExW");
}

void Window::Destroy() {
  if (handle_ != nullptr) ::DestroyWindow(handle_);
}

Window* Window::Of(HWND window) {
  // The class's own procedure stays what it was when the window is subclassed.
  if (window == nullptr ||
      ::GetClassLongPtrW(window, GCLP_WNDPROC) != reinterpret_cast<ULONG_PTR>(&Window::Procedure))
    return nullptr;
  return reinterpret_cast<Window*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
}

unsigned Window::Dpi() const { return dpi_ != 0 ? dpi_ : ::GetDpiForSystem(); }

std::wstring Window::Caption() const {
  std::wstring text(static_cast<std::size_t>(::GetWindowTextLengthW(handle_)), L'\0');
  text.resize(
      static_cast<std::size_t>(::GetWindowTextW(handle_, text.data(), static_cast<int>(text.size()) + 1)));
  return text;
}

void Window::SetCaption(const std::wstring& text) { ::SetWindowTextW(handle_, text.c_str()); }

LRESULT Window::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  return ::DefWindowProcW(handle_, message, wParam, lParam);
}

LRESULT CALLBACK Window::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  auto* self = reinterpret_cast<Window*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  if (message == WM_NCCREATE) {
    self = static_cast<Window*>(reinterpret_cast<const CREATESTRUCTW*>(lParam)->lpCreateParams);
    self->handle_ = window;
    self->dpi_ = ::GetDpiForWindow(window);
    ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  }
  // A few messages come before WM_NCCREATE.
  if (self == nullptr) return ::DefWindowProcW(window, message, wParam, lParam);
  if (message == WM_DPICHANGED) self->dpi_ = LOWORD(wParam);
  // A window whose creation fails is not kept.
  const LRESULT result =
      Guarded(message == WM_CREATE ? -1 : 0, [&] { return self->OnMessage(message, wParam, lParam); });
  if (message == WM_NCDESTROY) {
    ::SetWindowLongPtrW(window, GWLP_USERDATA, 0);
    self->handle_ = nullptr;
    self->dpi_ = 0;
  }
  return result;
}

}  // namespace kestrelon::win
