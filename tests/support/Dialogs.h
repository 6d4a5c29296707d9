#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "app/base/File.h"
#include "tests/support/Pump.h"

namespace kestrelon::test {

// Hands the form of that name to `act` once, as soon as it is visible, and closes it afterwards if it is
// still there: the way into the program's own modal dialogs.
class OnForm : public OnWindow {
 public:
  OnForm(std::wstring name, std::function<void(win::Form&)> act)
      : OnWindow([name = std::move(name)](HWND window) { return FormOf(window, name) != nullptr; },
                 [act = std::move(act)](HWND window) {
                   act(*dynamic_cast<win::Form*>(win::Window::Of(window)));
                   if (IsWindow(window)) SendMessageW(window, WM_CLOSE, 0, 0);
                 }) {}
  static win::Form* FormOf(HWND window, std::wstring_view name) {
    auto* const form = dynamic_cast<win::Form*>(win::Window::Of(window));
    return form && form->Name() == name ? form : nullptr;
  }
};

inline HWND ControlOf(win::Form& form, std::wstring_view name, int index = -1) {
  const win::FormControl* const control = form.Find(name, index);
  if (!control)
    ADD_FAILURE() << "no control " << Narrow(name) << "(" << index << ") in " << Narrow(form.Name());
  return control ? control->window : nullptr;
}

inline void Press(win::Form& form, std::wstring_view name, int index = -1) {
  SendMessageW(ControlOf(form, name, index), BM_CLICK, 0, 0);
}

}  // namespace kestrelon::test
