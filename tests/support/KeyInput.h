#pragma once

#include "app/base/Win32.h"

#include <initializer_list>
#include <vector>

#include "tests/support/Pump.h"

namespace kestrelon::test {

// Holds keys down (VK_CONTROL, VK_SHIFT, VK_MENU, …) for this thread, as GetKeyState sees them.
class KeysDown {
 public:
  explicit KeysDown(std::initializer_list<BYTE> keys) {
    GetKeyboardState(before_);
    BYTE state[256];
    GetKeyboardState(state);
    for (const BYTE key : keys) state[key] = 0x80;
    SetKeyboardState(state);
  }
  ~KeysDown() { SetKeyboardState(before_); }
  KeysDown(const KeysDown&) = delete;
  KeysDown& operator=(const KeysDown&) = delete;

 private:
  BYTE before_[256];
};

// A key pressed in a window of this thread, through its message queue: dialog keys and translation included.
inline void PressKey(HWND window, WORD key) {
  PostMessageW(window, WM_KEYDOWN, key, 1);
  PostMessageW(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
  win::DoEvents();
}

// A key pressed while others are held, without the message queue: what the control itself does with it.
inline void SendKey(HWND window, WORD key, std::initializer_list<BYTE> held = {}) {
  const KeysDown down(held);
  SendMessageW(window, WM_KEYDOWN, key, 1);
  SendMessageW(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
}

// Real key strokes for the window that has the focus, as the user's own; characters by their virtual keys
// ('A', VK_RETURN).
inline void TypeKeys(std::initializer_list<WORD> keys) {
  std::vector<INPUT> inputs;
  for (const WORD key : keys) {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    inputs.push_back(input);
    input.ki.dwFlags = KEYEVENTF_KEYUP;
    inputs.push_back(input);
  }
  SendInput(static_cast<UINT>(inputs.size()), inputs.data(), sizeof(INPUT));
  win::DoEvents();
}

// Mouse messages at a client point; the button messages carry the button that is down.
inline void SendMouse(HWND window, UINT message, POINT client, WPARAM keys = 0) {
  SendMessageW(window, message, keys, MAKELPARAM(client.x, client.y));
}

}  // namespace kestrelon::test
