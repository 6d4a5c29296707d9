#include "ui/cMagneticWnd.h"

#include <windowsx.h>

#include <algorithm>
#include <cstddef>
#include <optional>
#include <unordered_map>
#include <utility>

#include "app/base/File.h"
#include "ui/MagneticGeometry.h"
#include "ui/win/Window.h"

namespace kestrelon::ui {

namespace {

constexpr WPARAM kCommandBits = 0xFFF0;  // of WM_SYSCOMMAND: Windows uses the lowest four itself
constexpr UINT kCarried = SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE;

bool Shown(HWND window) { return ::IsWindowVisible(window) && !::IsIconic(window); }

RECT RectangleOf(HWND window) {
  RECT rectangle{};
  ::GetWindowRect(window, &rectangle);
  return rectangle;
}

SIZE SizeOf(const RECT& r) { return {r.right - r.left, r.bottom - r.top}; }

bool SameSize(const SIZE& a, const SIZE& b) { return a.cx == b.cx && a.cy == b.cy; }

RECT Shifted(RECT rectangle, POINT way) {
  ::OffsetRect(&rectangle, way.x, way.y);
  return rectangle;
}

POINT WayTo(const RECT& from, const RECT& to) { return {to.left - from.left, to.top - from.top}; }

// Who watches a window, and the procedure that stands behind. Kept here and not with the window: every
// message of the main window passes by, thousands of them when a large tree goes, and a look-up of what is
// kept with a window costs more than the whole rest.
struct Watch {
  WNDPROC behind = nullptr;
  std::vector<cMagneticWnd*> owners;  // the last one sees a message first
};
std::unordered_map<HWND, Watch>& Watches() {
  static std::unordered_map<HWND, Watch> watches;
  return watches;
}

}  // namespace

cMagneticWnd::cMagneticWnd(std::function<POINT()> cursorPosition, std::function<RECT()> workArea)
    : cursorPosition_(std::move(cursorPosition)), workArea_(std::move(workArea)) {}

cMagneticWnd::~cMagneticWnd() {
  for (const Entry& entry : entries_) Unsubclass(entry.window);
}

bool cMagneticWnd::AddWindow(HWND window, HWND parent) {
  if (Find(window) != nullptr || !::IsWindow(window)) return false;
  if (parent != nullptr && !::IsWindow(parent)) return false;
  if (::GetWindowThreadProcessId(window, nullptr) != ::GetCurrentThreadId())
    ThrowLastError(L"magnetic window", ERROR_WINDOW_OF_OTHER_THREAD);
  Subclass(window);
  entries_.push_back({window, parent});
  CheckGlueing();
  return true;
}

bool cMagneticWnd::RemoveWindow(HWND window) {
  const Entry* entry = Find(window);
  if (entry == nullptr) return false;
  entries_.erase(entries_.begin() + (entry - entries_.data()));
  for (Entry& other : entries_)
    if (other.parent == window) other.parent = nullptr;
  if (moved_ == window) {
    moved_ = nullptr;
    inLoop_ = false;
  }
  Unsubclass(window);
  return true;
}

void cMagneticWnd::CheckGlueing() {
  std::vector<Entry*> shown;
  for (Entry& entry : entries_) {
    entry.glued = false;
    entry.shown = Shown(entry.window);
    if (entry.shown) shown.push_back(&entry);
  }
  std::vector<GlueCandidate> candidates;
  for (const Entry* entry : shown) {
    const auto parent = std::find_if(shown.begin(), shown.end(),
                                     [&](const Entry* other) { return other->window == entry->parent; });
    candidates.push_back(
        {RectangleOf(entry->window), parent == shown.end() ? -1 : static_cast<int>(parent - shown.begin())});
  }
  const std::vector<bool> glued = GluedOf(candidates);
  for (std::size_t i = 0; i < shown.size(); ++i) shown[i]->glued = glued[i];
}

bool cMagneticWnd::Glued(HWND window) const {
  return std::any_of(entries_.begin(), entries_.end(),
                     [&](const Entry& entry) { return entry.window == window && entry.glued; });
}

void cMagneticWnd::Subclass(HWND window) {
  Watch& watch = Watches()[window];
  if (watch.behind == nullptr) {
    watch.behind = reinterpret_cast<WNDPROC>(
        ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&cMagneticWnd::zSubclass_Proc)));
    if (watch.behind == nullptr) {
      const DWORD error = ::GetLastError();
      Watches().erase(window);
      ThrowLastError(L"SetWindowLongPtrW", error);
    }
  }
  watch.owners.push_back(this);
}

void cMagneticWnd::Unsubclass(HWND window) {
  const auto found = Watches().find(window);
  if (found == Watches().end()) return;
  std::erase(found->second.owners, this);
  if (!found->second.owners.empty()) return;
  // Another one may have put itself before us since: then ours stays and passes everything on.
  if (::GetWindowLongPtrW(window, GWLP_WNDPROC) !=
      reinterpret_cast<LONG_PTR>(&cMagneticWnd::zSubclass_Proc)) {
    return;
  }
  ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(found->second.behind));
  Watches().erase(found);
}

LRESULT cMagneticWnd::Pass(std::size_t level, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const auto found = Watches().find(window);
  if (found == Watches().end()) return ::DefWindowProcW(window, message, wParam, lParam);
  const std::vector<cMagneticWnd*>& owners = found->second.owners;
  if (level < owners.size()) {
    return owners[owners.size() - 1 - level]->OnMessage(level, window, message, wParam, lParam);
  }
  return ::CallWindowProcW(found->second.behind, window, message, wParam, lParam);
}

LRESULT CALLBACK cMagneticWnd::zSubclass_Proc(HWND window, UINT message, WPARAM wParam,
                                              LPARAM lParam) noexcept {
  return win::Guarded(0, [&] {
    const LRESULT result = Pass(0, window, message, wParam, lParam);
    if (message == WM_NCDESTROY) Watches().erase(window);
    return result;
  });
}

LRESULT cMagneticWnd::OnMessage(std::size_t level, HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCDESTROY) {
    const WNDPROC behind = Watches().at(window).behind;
    RemoveWindow(window);
    // What still watches the window comes next; with nobody left its own procedure does.
    if (Watches().contains(window)) return Pass(level, window, message, wParam, lParam);
    return ::CallWindowProcW(behind, window, message, wParam, lParam);
  }
  if (message == WM_ENTERSIZEMOVE) Capture(window);
  if (message == WM_SYSCOMMAND && (wParam & kCommandBits) == SC_MOVE) {
    moved_ = nullptr;
    pointerPlaced_ = (wParam & ~kCommandBits) == HTCAPTION;  // 0 for a move by keyboard
    if (pointerPlaced_) pressed_ = POINT{GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
  }

  const std::weak_ptr<const bool> alive = alive_;
  const LRESULT result = Pass(level + 1, window, message, wParam, lParam);
  // The window's own procedure may have done away with the window, or with this object.
  if (alive.expired() || Find(window) == nullptr) return result;

  switch (message) {
    case WM_MOVING: OnMoving(window, *reinterpret_cast<RECT*>(lParam)); return TRUE;
    case WM_SIZING: OnSizing(window, wParam, *reinterpret_cast<RECT*>(lParam)); return TRUE;
    case WM_EXITSIZEMOVE:
      TakeBack();
      inLoop_ = false;
      CheckGlueing();
      break;
    case WM_COMMAND: CheckGlueing(); break;
    case WM_SYSCOMMAND: OnSystemCommand(window, wParam & kCommandBits); break;
    case WM_DPICHANGED:
      if (!inLoop_) CheckGlueing();
      break;
    case WM_WINDOWPOSCHANGED:
      if (!inLoop_ && Find(window)->shown != Shown(window)) CheckGlueing();
      break;
  }
  return result;
}

void cMagneticWnd::OnSystemCommand(HWND window, WPARAM command) {
  if (command == SC_MINIMIZE || command == SC_RESTORE) CheckGlueing();
  if (command != SC_MOVE) return;
  // The whole move was inside this command. When it was given up, the window may have gone back only now.
  pointerPlaced_ = true;
  if (moved_ == window && TakeBack()) CheckGlueing();
  moved_ = nullptr;
  inLoop_ = false;
  pressed_.reset();
}

void cMagneticWnd::OnMoving(HWND window, RECT& proposed) {
  const POINT cursor = cursorPosition_();
  // From the start on the pointer tells the place, since the system may reckon from where the window was put
  // the last time. Three times the system's own proposal gives the distance to the pointer anew: when nobody
  // told of the start; when the first step by keyboard has put the pointer on the caption; and when the
  // window's size changed under way (it was maximised, or came to a monitor with another DPI).
  if (!inLoop_ || moved_ != window || !pointerPlaced_ || !SameSize(size_, SizeOf(proposed))) {
    Capture(window);
    // The jump of the corner that comes with another size is no way that others travel.
    if (!SameSize(size_, SizeOf(proposed))) start_ = proposed;
    offset_ = {proposed.left - cursor.x, proposed.top - cursor.y};
    size_ = SizeOf(proposed);
    pointerPlaced_ = true;
  }
  FollowMonitor(cursor);
  proposed = Shifted(proposed, {cursor.x + offset_.x - proposed.left, cursor.y + offset_.y - proposed.top});

  std::vector<RECT> group{proposed};
  std::vector<RECT> magnets{area_};
  for (const Entry& entry : entries_) {
    if (entry.window == window || !entry.captured) continue;
    if (Travels(entry))
      group.push_back(Shifted(entry.rectangle, WayTo(start_, proposed)));
    else
      magnets.push_back(entry.rectangle);
  }
  proposed = Shifted(proposed, CorrectionOf(group, magnets, snapWidth_));
  Carry(WayTo(start_, proposed));
}

void cMagneticWnd::OnSizing(HWND window, WPARAM edges, RECT& proposed) {
  if (!inLoop_ || moved_ != window) Capture(window);
  FollowMonitor(cursorPosition_());
  std::vector<RECT> magnets{area_};
  for (const Entry& entry : entries_)
    if (entry.window != window && entry.captured) magnets.push_back(entry.rectangle);
  proposed = SnapEdges(proposed, edges, magnets, snapWidth_);
}

cMagneticWnd::Entry* cMagneticWnd::Find(HWND window) {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [&](const Entry& entry) { return entry.window == window; });
  return found == entries_.end() ? nullptr : &*found;
}

RECT cMagneticWnd::WorkAreaOf(HMONITOR monitor) const {
  MONITORINFO information{};
  information.cbSize = sizeof information;
  if (!::GetMonitorInfoW(monitor, &information) || (information.dwFlags & MONITORINFOF_PRIMARY) != 0)
    return workArea_();
  return information.rcWork;
}

void cMagneticWnd::Capture(HWND moved) {
  POINT cursor = cursorPosition_();
  moved_ = moved;
  inLoop_ = true;
  start_ = RectangleOf(moved);
  // A quick hand is elsewhere by now, but holds the window where it pressed the button.
  const std::optional<POINT> pressed = std::exchange(pressed_, std::nullopt);
  if (pressed && ::PtInRect(&start_, *pressed)) cursor = *pressed;
  size_ = SizeOf(start_);
  offset_ = {start_.left - cursor.x, start_.top - cursor.y};
  carried_ = false;
  monitor_ = nullptr;
  FollowMonitor(cursor);
  for (Entry& entry : entries_) {
    entry.captured = Shown(entry.window);
    entry.maximised = ::IsZoomed(entry.window);
    entry.rectangle = entry.maximised
                          ? WorkAreaOf(::MonitorFromWindow(entry.window, MONITOR_DEFAULTTONEAREST))
                          : RectangleOf(entry.window);
  }
}

void cMagneticWnd::FollowMonitor(POINT cursor) {
  const HMONITOR monitor = ::MonitorFromPoint(cursor, MONITOR_DEFAULTTONEAREST);
  if (monitor == monitor_) return;
  monitor_ = monitor;
  area_ = WorkAreaOf(monitor);
}

// With the window that is being moved.
bool cMagneticWnd::Travels(const Entry& entry) const {
  return entry.window != moved_ && entry.parent == moved_ && entry.glued && entry.captured &&
         !entry.maximised;
}

// Puts the windows glued to the moved one at this distance from where they were at the start.
void cMagneticWnd::Carry(POINT way) {
  if (std::none_of(entries_.begin(), entries_.end(), [&](const Entry& entry) { return Travels(entry); }))
    return;
  carried_ = true;
  HDWP batch = ::BeginDeferWindowPos(1);
  for (const Entry& entry : entries_) {
    if (!Travels(entry)) continue;
    // A batch that fails is lost as a whole; the next step of the move makes up for it.
    if (batch == nullptr) return;
    batch = ::DeferWindowPos(batch, entry.window, nullptr, entry.rectangle.left + way.x,
                             entry.rectangle.top + way.y, 0, 0, kCarried);
  }
  if (batch != nullptr) ::EndDeferWindowPos(batch);
}

// A move that the user gives up puts the moved window back without a word. True when it stands where it began
// although others travelled with it; they go back as well.
bool cMagneticWnd::TakeBack() {
  if (moved_ == nullptr || !carried_) return false;
  const RECT now = RectangleOf(moved_);
  if (!::EqualRect(&now, &start_)) return false;
  Carry({0, 0});
  return true;
}

}  // namespace kestrelon::ui
