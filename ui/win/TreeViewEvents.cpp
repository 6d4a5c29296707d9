// What the user does with the tree: mouse, keys, labels.

#include <algorithm>
#include <utility>

#include "ui/win/NodeDrag.h"
#include "ui/win/TreeView.h"
#include "ui/win/Window.h"

namespace kestrelon::win {

namespace {

constexpr int kLeft = 1, kRight = 2;
// Longer than any name that is accepted, so that too long a name can be typed and is then refused with its
// reason.
constexpr WPARAM kEditLimit = 1000;

HWND EditOf(HWND tree) { return reinterpret_cast<HWND>(::SendMessageW(tree, TVM_GETEDITCONTROL, 0, 0)); }

}  // namespace

LRESULT CALLBACK TreeView::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<TreeView*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  return Guarded(0, [&] { return self->OnControlMessage(message, wParam, lParam); });
}

LRESULT TreeView::OnPress(int button, UINT message, WPARAM wParam, LPARAM lParam) {
  const POINT point = PointOf(lParam);
  buttons_.Press(button);
  if (button == kLeft) dragGivenUp_ = false;
  if (events.mouseDown) events.mouseDown(button, ShiftState(), point);
  if (button == kRight) {
    // The control would wait for the release in a loop of its own, swallow it and offer a context menu. All
    // that is needed of it is the focus.
    ::SetFocus(handle_);
    return 0;
  }
  pressedNode_ = HitTest(point);
  const LRESULT result = Send(message, wParam, lParam);
  TreeNode* const clicked = std::exchange(pressedNode_, nullptr);
  if (clicked != nullptr && events.nodeClick) events.nodeClick(*clicked);
  return result;
}

LRESULT TreeView::OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  if (Dragging()) {
    const std::optional<LRESULT> handled = OnDragMessage(message, wParam, lParam);
    if (handled) return *handled;
  }
  LRESULT result = 0;
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK: result = OnPress(kLeft, message, wParam, lParam); break;
    case WM_RBUTTONDOWN:
    case WM_RBUTTONDBLCLK: result = OnPress(kRight, message, wParam, lParam); break;
    case WM_LBUTTONUP:
      result = Send(message, wParam, lParam);
      if (buttons_.Release(kLeft) && events.mouseUp) events.mouseUp(kLeft, ShiftState(), PointOf(lParam));
      return result;
    case WM_RBUTTONUP:
      if (buttons_.Release(kRight) && events.mouseUp) events.mouseUp(kRight, ShiftState(), PointOf(lParam));
      return 0;
    case WM_MOUSEMOVE:
      result = Send(message, wParam, lParam);
      if (events.mouseMove) {
        const int buttons = ButtonsOf(wParam) & ~(dragGivenUp_ ? kLeft : 0);
        events.mouseMove(buttons, ShiftState(), PointOf(lParam));
      }
      break;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
      if (events.keyDown) events.keyDown(static_cast<int>(wParam), ShiftState());
      return Send(message, wParam, lParam);
    case WM_CHAR:
      // Enter, Escape and Ctrl with a letter look for no node; the control would beep.
      if (wParam < L' ') return 0;
      return Send(message, wParam, lParam);
    case WM_SETFOCUS:
      result = Send(message, wParam, lParam);
      if (events.gotFocus) events.gotFocus();
      return result;
    case WM_NCDESTROY: {
      const bool dragged = EndDrag();
      const HWND window = std::exchange(handle_, nullptr);
      result = ::CallWindowProcW(procedure_, window, message, wParam, lParam);
      if (dragged && events.dragCancel) events.dragCancel();
      return result;
    }
    default: return Send(message, wParam, lParam);
  }
  TellSwallowedRelease();
  return result;
}

void TreeView::TellSwallowedRelease() {
  if (!buttons_.ReleaseWasSwallowed(kLeft)) return;
  const bool dragged = EndDrag();
  POINT point;
  ::GetCursorPos(&point);
  ::ScreenToClient(handle_, &point);
  if (events.mouseUp) events.mouseUp(kLeft, ShiftState(), point);
  if (dragged && events.dragCancel) events.dragCancel();
}

void TreeView::StartLabelEdit() {
  const TreeNode* node = Selected();
  if (node == nullptr) return;
  ::SetFocus(handle_);
  startingEdit_ = true;
  Send(TVM_EDITLABELW, 0, reinterpret_cast<LPARAM>(node->item_));
  startingEdit_ = false;
}

bool TreeView::EditingLabel() const { return EditOf(handle_) != nullptr; }

LRESULT TreeView::OnNotify(const NMHDR& header) {
  switch (header.code) {
    case TVN_SELCHANGEDW: {
      const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
      if (quiet_ || change.action != TVC_BYKEYBOARD) return 0;
      TreeNode* const node = NodeOf(change.itemNew.hItem);
      if (node != nullptr && events.nodeClick) events.nodeClick(*node);
      return 0;
    }
    case TVN_BEGINLABELEDITW: {
      const LRESULT refused = automaticLabelEdit_ || startingEdit_ ? FALSE : TRUE;
      if (!refused) ::SendMessageW(EditOf(handle_), EM_SETLIMITTEXT, kEditLimit, 0);
      return refused;
    }
    case TVN_ENDLABELEDITW: {
      const TVITEMW& item = reinterpret_cast<const NMTVDISPINFOW&>(header).item;
      if (quiet_ || item.pszText == nullptr) return FALSE;
      // The notification may carry no more than the first 259 units of what was typed.
      std::wstring text = item.pszText;
      if (const HWND edit = EditOf(handle_)) {
        text.resize(static_cast<std::size_t>(::GetWindowTextLengthW(edit)));
        text.resize(
            static_cast<std::size_t>(::GetWindowTextW(edit, text.data(), static_cast<int>(text.size()) + 1)));
      }
      TreeNode* const node = NodeOf(item.hItem);
      if (node == nullptr || (events.afterLabelEdit && !events.afterLabelEdit(text))) return FALSE;
      SetText(*node, text);
      return TRUE;
    }
    default: return 0;
  }
}

}  // namespace kestrelon::win
