#pragma once

#include "app/base/Win32.h"

#include <exception>
#include <string>

namespace kestrelon::win {

// How a window is created. Position and size are pixels of the whole window; CW_USEDEFAULT is allowed.
struct WindowSpec {
  const wchar_t* className = L"KestrelonWindow";  // registered on first use
  std::wstring caption{};
  DWORD style = WS_OVERLAPPEDWINDOW;
  DWORD extendedStyle = 0;
  int x = CW_USEDEFAULT, y = CW_USEDEFAULT, width = CW_USEDEFAULT, height = CW_USEDEFAULT;
  HWND owner = nullptr;  // owner of a top-level window, parent of a child
  HMENU menu = nullptr;  // the window takes it over
};

// The program's icon in a size, of those that the module shares; null where the module has none.
HICON ProgramIcon(int pixels);

// A window of the program's own. The object owns the window and outlives it. It must stay where it is in
// memory while the window lives. Every message goes through OnMessage; an exception that leaves it is shown
// in a box and goes no further, since nothing may leave a window procedure.
class Window {
 public:
  Window() = default;
  virtual ~Window();  // destroys the window if it is still there
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  // Throws std::system_error when the window cannot be made.
  void Create(const WindowSpec& spec);
  void Destroy();

  // The object that owns a window; null when it is none of ours.
  static Window* Of(HWND window);

  HWND Handle() const { return handle_; }
  unsigned Dpi() const;  // of the window's monitor; the system's before there is a window
  std::wstring Caption() const;
  void SetCaption(const std::wstring& text);

 protected:
  // Base implementations end in DefWindowProcW.
  virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam);

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
  HWND handle_ = nullptr;
  unsigned dpi_ = 0;  // as the last WM_DPICHANGED said; 0 before the window is made
};

// Can the user reach this control? It is enabled, and so is the window that it is in, which waits while a
// dialog is open.
bool IsReachable(HWND control);

// What the last resort does with an exception that left a handler; the default shows a box. Tests make it a
// failure.
using LastResort = void (*)(const char* what);
LastResort SetLastResort(LastResort handler);  // returns the previous one
void ReportToLastResort(const char* what);

// Runs the body of a window procedure or another callback of Windows; an exception goes to the last resort,
// and `onFailure` is returned.
template <class Body>
LRESULT Guarded(LRESULT onFailure, Body&& body) noexcept {
  try {
    return body();
  } catch (const std::exception& error) {
    ReportToLastResort(error.what());
  } catch (...) {
    ReportToLastResort("unknown exception");
  }
  return onFailure;
}

}  // namespace kestrelon::win
