#pragma once

#include "app/base/Win32.h"

namespace kestrelon::win {

// Shift state as the events carry it: 1 Shift, 2 Ctrl, 4 Alt.
int ShiftState();
// Buttons of a mouse message's wParam: 1 left, 2 right, 3 both.
int ButtonsOf(WPARAM keys);
// The client point of a mouse message; coordinates may be negative.
POINT PointOf(LPARAM lParam);

// Which presses still wait for their release. The system's controls follow a press in message loops of their
// own (to tell a click from a drag) and may swallow the release there, so that it never arrives as a message:
// a press that was a real one and whose button is up again counts as released.
class MouseButtons {
 public:
  // button: 1 left, 2 right.
  void Press(int button);
  // The release arrived. False when the press was never seen or its release has already been told.
  bool Release(int button);
  // After the control has processed a message: true, once, when the release was swallowed.
  bool ReleaseWasSwallowed(int button);

 private:
  struct State {
    bool pressed = false;
    bool real = false;  // the button was down, as opposed to a message that was only sent
  };
  State states_[2];
};

}  // namespace kestrelon::win
