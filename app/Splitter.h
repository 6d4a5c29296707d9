#pragma once

#include <functional>

#include "ui/win/Window.h"

namespace kestrelon::app {

// `Picture1`, the thin bar between tree and list. It tells what the mouse does; the main window moves it.
class Splitter : public win::Window {
 public:
  struct Events {
    std::function<void()> mouseDown;
    std::function<void(int x)> mouseMove;  // pixels within the bar, while the button is down; may be negative
    std::function<void()> mouseUp;         // also when the mouse was taken away
  };
  Events events;

  void CreateIn(HWND parent);
  // False at rest.
  bool Dragging() const { return dragging_; }

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

 private:
  void Release();
  bool dragging_ = false;
};

}  // namespace kestrelon::app
