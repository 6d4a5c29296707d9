// The drag of a node with the mouse, and scrolling under drags of every kind.

#include <algorithm>
#include <optional>
#include <utility>

#include "app/base/File.h"
#include "ui/win/NodeDrag.h"
#include "ui/win/TreeView.h"
#include "ui/win/Window.h"

namespace kestrelon::win {

namespace {

constexpr int kLeft = 1;
constexpr UINT kScrollEvery = 100;  // milliseconds

POINT PointerIn(HWND window) {
  POINT point{};
  ::GetCursorPos(&point);
  ::ScreenToClient(window, &point);
  return point;
}

}  // namespace

NodeDrag::NodeDrag(HWND tree, UniqueImageList picture, POINT hotSpot, POINT pointer)
    : tree_(tree), picture_(std::move(picture)) {
  if (::SetTimer(tree_, kTimer, kScrollEvery, nullptr) == 0) ThrowLastError(L"SetTimer");
  ::SetCapture(tree_);
  if (!picture_ || !::ImageList_BeginDrag(picture_.get(), 0, hotSpot.x, hotSpot.y)) return;
  pictured_ = true;
  const POINT point = InWindow(pointer);
  ::ImageList_DragEnter(tree_, point.x, point.y);
  shown_ = true;
}

NodeDrag::~NodeDrag() {
  if (pictured_) {
    ::ImageList_DragLeave(tree_);
    ::ImageList_EndDrag();
  }
  ::KillTimer(tree_, kTimer);
  if (::GetCapture() == tree_) ::ReleaseCapture();
}

void NodeDrag::HidePicture() {
  if (std::exchange(shown_, false)) ::ImageList_DragShowNolock(FALSE);
}

void NodeDrag::ShowPicture() {
  if (pictured_ && !std::exchange(shown_, true)) ::ImageList_DragShowNolock(TRUE);
}

void NodeDrag::MovePicture(POINT pointer) {
  if (!pictured_) return;
  const POINT point = InWindow(pointer);
  ::ImageList_DragMove(point.x, point.y);
}

POINT NodeDrag::InWindow(POINT client) const {
  // The picture's place counts from the corner of the window, border included.
  ::ClientToScreen(tree_, &client);
  RECT window{};
  ::GetWindowRect(tree_, &window);
  return {client.x - window.left, client.y - window.top};
}

void TreeView::BeginDrag(TreeNode& pictured) {
  if (handle_ == nullptr || Dragging() || !IsReachable(handle_)) return;
  // Null without an image list: a drag without a picture.
  UniqueImageList picture(
      reinterpret_cast<HIMAGELIST>(Send(TVM_CREATEDRAGIMAGE, 0, reinterpret_cast<LPARAM>(pictured.item_))));
  const POINT pointer = PointerIn(handle_);
  POINT hotSpot{};
  int width = 0, height = 0, iconWidth = 0, iconHeight = 0;
  if (picture && ::ImageList_GetIconSize(picture.get(), &width, &height) &&
      ::ImageList_GetIconSize(images_.get(), &iconWidth, &iconHeight)) {
    const RECT text = TextRectangle(pictured);
    // Within the picture, also when the pointer is on some other node.
    hotSpot.x = std::clamp<LONG>(pointer.x - (text.left - iconWidth), 0, width);
    hotSpot.y = std::clamp<LONG>(pointer.y - text.top, 0, height);
  }
  ::UpdateWindow(handle_);                           // what the picture will cover
  if (::GetFocus() != handle_) ::SetFocus(handle_);  // for Escape
  drag_ = std::make_unique<NodeDrag>(handle_, std::move(picture), hotSpot, pointer);
}

bool TreeView::Dragging() const { return drag_ != nullptr; }

bool TreeView::EndDrag() {
  // Taken out first: letting go of the mouse comes back here as a message.
  const auto over = std::exchange(drag_, nullptr);
  return over != nullptr;
}

void TreeView::CancelDrag() {
  if (!EndDrag()) return;
  dragGivenUp_ = true;
  if (events.dragCancel) events.dragCancel();
}

void TreeView::RaiseDragOver(POINT point) {
  drag_->HidePicture();
  const Finally show([&] {
    if (Dragging()) ::UpdateWindow(handle_);
    if (!Dragging()) return;  // the event may have ended the drag
    drag_->MovePicture(point);
    drag_->ShowPicture();
  });
  if (events.dragOver) events.dragOver(point);
}

void TreeView::DropNode(POINT point) {
  EndDrag();
  RECT area{};
  ::GetClientRect(handle_, &area);
  const bool inside = ::PtInRect(&area, point) != FALSE;
  if (buttons_.Release(kLeft) && events.mouseUp) events.mouseUp(kLeft, ShiftState(), point);
  if (inside && handle_ != nullptr && IsReachable(handle_)) {
    if (events.dragDrop) events.dragDrop(point);
  } else if (events.dragCancel) {
    events.dragCancel();
  }
}

std::optional<LRESULT> TreeView::OnDragMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_MOUSEMOVE:
      RaiseDragOver(PointOf(lParam));
      if ((wParam & MK_LBUTTON) == 0) TellSwallowedRelease();
      return 0;
    case WM_LBUTTONUP: {
      const LRESULT result = Send(message, wParam, lParam);
      if (Dragging()) DropNode(PointOf(lParam));
      return result;
    }
    case WM_KEYDOWN:
      // The keys of the tree's commands would change it under the drag.
      if (wParam == VK_ESCAPE) CancelDrag();
      return 0;
    case WM_CHAR: return 0;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONDBLCLK: CancelDrag(); return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK: CancelDrag(); return std::nullopt;  // its release never came
    case WM_CAPTURECHANGED:
      if (reinterpret_cast<HWND>(lParam) != handle_) CancelDrag();
      return std::nullopt;
    case WM_KILLFOCUS:
      CancelDrag();
      return std::nullopt;  // Escape comes here no more: a box or another window
    case WM_ENABLE:
      if (wParam == FALSE) CancelDrag();
      return std::nullopt;
    case WM_TIMER: {
      if (wParam != NodeDrag::kTimer) return std::nullopt;
      const POINT pointer = PointerIn(handle_);
      const auto position = [this] {
        return std::pair(::GetScrollPos(handle_, SB_HORZ), ::GetScrollPos(handle_, SB_VERT));
      };
      const auto before = position();
      ScrollNearEdge(pointer);
      if (position() != before)
        RaiseDragOver(pointer);
      else
        drag_->ShowPicture();
      return 0;
    }
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL: {
      drag_->HidePicture();
      const LRESULT result = Send(message, wParam, lParam);
      if (Dragging()) RaiseDragOver(PointerIn(handle_));
      return result;
    }
    case WM_PAINT: {
      if (!drag_->PictureShown()) return std::nullopt;
      drag_->HidePicture();
      const LRESULT result = Send(message, wParam, lParam);
      if (Dragging()) drag_->ShowPicture();
      return result;
    }
    default: return std::nullopt;
  }
}

void TreeView::ScrollNearEdge(POINT client) {
  RECT area{};
  ::GetClientRect(handle_, &area);
  const int line = static_cast<int>(Send(TVM_GETITEMHEIGHT, 0, 0));
  RECT reach = area;
  if (Dragging()) ::InflateRect(&reach, line, line);  // the mouse is ours there too
  if (!::PtInRect(&reach, client)) return;
  const auto scroll = [this](UINT message, WPARAM step) {
    if (drag_ != nullptr) drag_->HidePicture();
    Send(message, step, 0);
  };
  if (client.y < line)
    scroll(WM_VSCROLL, SB_LINEUP);
  else if (client.y >= area.bottom - line)
    scroll(WM_VSCROLL, SB_LINEDOWN);
  // Nodes begin at the left edge: a narrower strip.
  if (client.x < line / 2)
    scroll(WM_HSCROLL, SB_LINELEFT);
  else if (client.x >= area.right - line / 2)
    scroll(WM_HSCROLL, SB_LINERIGHT);
}

}  // namespace kestrelon::win
