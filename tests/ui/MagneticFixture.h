#pragma once

#include "app/base/Win32.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>

#include "tests/support/FakeWorld.h"
#include "tests/support/Pump.h"
#include "tests/ui/Rectangles.h"
#include "ui/cMagneticWnd.h"

namespace kestrelon::test {

// A top-level window, shown, without a frame that would keep it from being small.
class Pane : public win::Window {
 public:
  explicit Pane(const RECT& r, DWORD style = WS_POPUP | WS_VISIBLE) {
    win::WindowSpec spec;
    spec.style = style;
    spec.x = r.left, spec.y = r.top;
    spec.width = r.right - r.left, spec.height = r.bottom - r.top;
    Create(spec);
  }
  ~Pane() override { Destroy(); }

  RECT Rectangle() const {
    RECT rectangle{};
    GetWindowRect(Handle(), &rectangle);
    return rectangle;
  }
  void Put(LONG x, LONG y) {
    SetWindowPos(Handle(), nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  }
  LRESULT Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendMessageW(Handle(), message, wParam, lParam);
  }

  std::function<std::optional<LRESULT>(UINT message, WPARAM wParam, LPARAM lParam)> handler;

 protected:
  LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override {
    const std::optional<LRESULT> result = handler ? handler(message, wParam, lParam) : std::nullopt;
    return result ? *result : Window::OnMessage(message, wParam, lParam);
  }
};

struct MagneticFixture : testing::Test {
  MagneticFixture() { world.desktop = {0, 0, 1024, 728}; }

  void Enter(Pane& pane, POINT cursor) {
    world.cursor = cursor;
    pane.Send(WM_ENTERSIZEMOVE);
  }
  // The pointer moves on, and the system proposes some place and puts the window where the answer says.
  RECT Move(Pane& pane, POINT cursor) {
    world.cursor = cursor;
    RECT proposed = pane.Rectangle();
    OffsetRect(&proposed, 1000, -1000);
    EXPECT_EQ(pane.Send(WM_MOVING, 0, reinterpret_cast<LPARAM>(&proposed)), 1);
    pane.Put(proposed.left, proposed.top);
    return proposed;
  }
  RECT Size(Pane& pane, WPARAM edges, RECT proposed) {
    EXPECT_EQ(pane.Send(WM_SIZING, edges, reinterpret_cast<LPARAM>(&proposed)), 1);
    return proposed;
  }

  FakeWorld world;
  ui::cMagneticWnd magnets{world.cursorPosition, world.workArea};
};

}  // namespace kestrelon::test
