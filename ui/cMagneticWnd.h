#pragma once

#include "app/base/Win32.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kestrelon::ui {

// Makes top-level windows magnetic: while the user moves or sizes one of them, its edges jump onto those of
// the others and of the work area. A window that is registered with a parent and touches it, itself or
// through others of that parent, is glued to it and travels with it.
//
// A window that is hidden or minimised is no magnet, is glued to nothing and holds no chain together. A
// maximised one counts as large as the work area and stays where it is when its parent moves. On a further
// monitor the work area is that monitor's. All windows belong to the thread that makes the object.
class cMagneticWnd {
 public:
  static constexpr int kSnapWidth = 10;

  // The pointer's place and the primary monitor's work area, in screen pixels.
  cMagneticWnd(std::function<POINT()> cursorPosition, std::function<RECT()> workArea);
  ~cMagneticWnd();  // lets go of all windows
  cMagneticWnd(const cMagneticWnd&) = delete;
  cMagneticWnd& operator=(const cMagneticWnd&) = delete;

  // False when the window is registered already, when it is no window, or when a parent is given that is no
  // window. The parent holds nothing before it is registered itself. A window that is destroyed leaves by
  // itself. Throws std::system_error when the window cannot be watched, as one of another program.
  bool AddWindow(HWND window, HWND parent = nullptr);
  // False when the window is not registered. Those registered with it as their parent have none from then on.
  bool RemoveWindow(HWND window);

  // Finds out again which windows are glued to their parents. Happens by itself after AddWindow and when a
  // move, a size, a command, a minimising or a restoring is over, when a window appeared or vanished, and
  // after a change of DPI.
  void CheckGlueing();
  bool Glued(HWND window) const;  // as the last CheckGlueing found it

  // Pixels: edges jump when they are nearer than this. With 0 or less they never do.
  int SnapWidth() const { return snapWidth_; }
  void SetSnapWidth(int pixels) { snapWidth_ = pixels; }

 private:
  struct Entry {
    HWND window;
    HWND parent;            // null for none
    bool shown = false;     // as of the last CheckGlueing
    bool glued = false;     // as of the last CheckGlueing
    bool captured = false;  // was shown when the move or size began, so that the rest below holds
    bool maximised = false;
    RECT rectangle{};
  };

  static LRESULT CALLBACK zSubclass_Proc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept;
  // To the watcher of this level, the window's own procedure behind the last one.
  static LRESULT Pass(std::size_t level, HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT OnMessage(std::size_t level, HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  void OnSystemCommand(HWND window, WPARAM command);  // after the window's own procedure
  void OnMoving(HWND window, RECT& proposed);
  void OnSizing(HWND window, WPARAM edges, RECT& proposed);

  Entry* Find(HWND window);
  void Subclass(HWND window);
  void Unsubclass(HWND window);
  RECT WorkAreaOf(HMONITOR monitor) const;
  void Capture(HWND moved);
  void FollowMonitor(POINT cursor);
  bool Travels(const Entry& entry) const;
  void Carry(POINT way);
  bool TakeBack();

  std::function<POINT()> cursorPosition_;
  std::function<RECT()> workArea_;
  int snapWidth_ = kSnapWidth;
  std::vector<Entry> entries_;
  std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);  // goes with the object

  // The move or size that is going on, and until the command that began it is over.
  HWND moved_ = nullptr;
  bool inLoop_ = false;           // between WM_ENTERSIZEMOVE and WM_EXITSIZEMOVE
  std::optional<POINT> pressed_;  // where the mouse button went down to begin a move that has not started yet
  bool pointerPlaced_ = true;   // false: a move by keyboard puts the pointer somewhere before its first step
  bool carried_ = false;        // others travelled with it
  RECT start_{};                // of the moved window
  SIZE size_{};                 // that the system proposed last
  POINT offset_{};              // from the pointer to the moved window's top left corner
  HMONITOR monitor_ = nullptr;  // that the pointer is on
  RECT area_{};                 // its work area
};

}  // namespace kestrelon::ui
