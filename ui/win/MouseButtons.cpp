#include "ui/win/MouseButtons.h"

#include <cstddef>

namespace kestrelon::win {

namespace {

bool IsDown(int virtualKey) { return ::GetKeyState(virtualKey) < 0; }

bool ButtonIsDown(int button) { return IsDown(button == 1 ? VK_LBUTTON : VK_RBUTTON); }

}  // namespace

int ShiftState() {
  return (IsDown(VK_SHIFT) ? 1 : 0) | (IsDown(VK_CONTROL) ? 2 : 0) | (IsDown(VK_MENU) ? 4 : 0);
}

int ButtonsOf(WPARAM keys) { return ((keys & MK_LBUTTON) != 0 ? 1 : 0) | ((keys & MK_RBUTTON) != 0 ? 2 : 0); }

POINT PointOf(LPARAM lParam) {
  return {static_cast<short>(LOWORD(lParam)), static_cast<short>(HIWORD(lParam))};
}

void MouseButtons::Press(int button) {
  states_[static_cast<std::size_t>(button) - 1] = {true, ButtonIsDown(button)};
}

bool MouseButtons::Release(int button) {
  State& state = states_[static_cast<std::size_t>(button) - 1];
  const bool pressed = state.pressed;
  state = {};
  return pressed;
}

bool MouseButtons::ReleaseWasSwallowed(int button) {
  const State& state = states_[static_cast<std::size_t>(button) - 1];
  return state.pressed && state.real && !ButtonIsDown(button) && Release(button);
}

}  // namespace kestrelon::win
