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

// What a user presses. Releases and moves are not counted: what began before must come to its end.
bool IsInput(UINT message) {
  switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDOWN:
    case WM_RBUTTONDBLCLK:
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
    case WM_CHAR: return true;
    default: return false;
  }
}

HWND EditOf(HWND tree) { return reinterpret_cast<HWND>(::SendMessageW(tree, TVM_GETEDITCONTROL, 0, 0)); }

}  // namespace

LRESULT CALLBACK TreeView::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  auto* self = reinterpret_cast<TreeView*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
  return Guarded(0, [&] { return self->OnControlMessage(message, wParam, lParam); });
}

LRESULT TreeView::OnPress(int button, UINT message, WPARAM wParam, LPARAM lParam) {
  const POINT point = PointOf(lParam);
  // Before anything becomes of the press, or what was typed would be taken for the name of what it selects.
  EndLabelEdit();
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
  if (TreeNode* const clicked = std::exchange(pressedNode_, nullptr)) Choose(*clicked);
  return result;
}

void TreeView::Choose(TreeNode& node) {
  if (Selected() != &node) Select(&node);
  if (events.nodeClick) events.nodeClick(node);
}

// With nothing selected the control does not know where a key goes from: it goes to the first node, or to the
// last.
bool TreeView::SelectByKey(WPARAM key) {
  switch (key) {
    case VK_UP:
    case VK_DOWN:
    case VK_LEFT:
    case VK_RIGHT:
    case VK_HOME:
    case VK_END:
    case VK_PRIOR:
    case VK_NEXT: break;
    default: return false;
  }
  if (handle_ == nullptr || Selected() != nullptr) return false;
  const WPARAM place = key == VK_END || key == VK_NEXT ? TVGN_LASTVISIBLE : TVGN_ROOT;
  TreeNode* const node = NodeOf(reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, place, 0)));
  if (node == nullptr) return false;
  EnsureVisible(*node);
  Choose(*node);
  return true;
}

LRESULT TreeView::OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam) {
  // A dialog waits for its end, or a long operation runs. No hand reaches the tree then, but a message that
  // was posted before does, and one that another program posts.
  if (IsInput(message) && !IsReachable(handle_)) return 0;
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
      return message == WM_KEYDOWN && SelectByKey(wParam) ? 0 : Send(message, wParam, lParam);
    case WM_CHAR:
      // Enter, Escape and Ctrl with a letter look for no node; the control would beep.
      if (wParam < L' ') return 0;
      return Send(message, wParam, lParam);
    case TVM_SELECTITEM: {
      // Our own go straight to the control: this one is another program's, which acts for the user.
      if (wParam != TVGN_CARET) return Send(message, wParam, lParam);
      TreeNode* const node = NodeOf(reinterpret_cast<HTREEITEM>(lParam));
      if (node == nullptr || !IsReachable(handle_)) return FALSE;
      EnsureVisible(*node);
      Choose(*node);
      return TRUE;
    }
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

void TreeView::EndLabelEdit() {
  if (handle_ != nullptr && EditingLabel()) Send(TVM_ENDEDITLABELNOW, FALSE, 0);
}

bool TreeView::EditingLabel() const { return Send(TVM_GETEDITCONTROL, 0, 0) != 0; }

void TreeView::OnCollapsing(TreeNode* node) {
  TreeNode* const selected = Selected();
  if (node == nullptr || selected == node || !IsWithin(selected, *node)) return;
  // The selection cannot stay where it is not seen. The control would move it as well, in some versions
  // without a word.
  Choose(*node);
}

LRESULT TreeView::OnEndLabelEdit(const TVITEMW& item) {
  editedNode_ = nullptr;
  if (quiet_ || item.pszText == nullptr) return FALSE;
  // The notification may carry no more than the first 259 units of what was typed.
  std::wstring text = item.pszText;
  if (const HWND edit = EditOf(handle_)) {
    text.resize(static_cast<std::size_t>(::GetWindowTextLengthW(edit)));
    text.resize(
        static_cast<std::size_t>(::GetWindowTextW(edit, text.data(), static_cast<int>(text.size()) + 1)));
  }
  TreeNode* const node = NodeOf(item.hItem);
  // Some versions of the control tell of a text that was left as it was, others do not.
  if (node == nullptr || text == node->text_) return FALSE;
  if (events.afterLabelEdit && !events.afterLabelEdit(text)) return FALSE;
  SetText(*node, text);
  return TRUE;
}

LRESULT TreeView::OnNotify(const NMHDR& header) {
  switch (header.code) {
    case TVN_SELCHANGINGW: {
      const UINT action = reinterpret_cast<const NMTREEVIEWW&>(header).action;
      return !selecting_ && action != TVC_BYMOUSE && action != TVC_BYKEYBOARD;
    }
    case TVN_ITEMEXPANDINGW: {
      const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
      EndLabelEdit();
      if ((change.action & TVE_TOGGLE) == TVE_COLLAPSE) OnCollapsing(NodeOf(change.itemNew.hItem));
      return FALSE;
    }
    case TVN_SELCHANGEDW: {
      const auto& change = reinterpret_cast<const NMTREEVIEWW&>(header);
      if (quiet_ || change.action != TVC_BYKEYBOARD) return 0;
      TreeNode* const node = NodeOf(change.itemNew.hItem);
      if (node != nullptr && events.nodeClick) events.nodeClick(*node);
      return 0;
    }
    case TVN_BEGINLABELEDITW: {
      const LRESULT refused = automaticLabelEdit_ || startingEdit_ ? FALSE : TRUE;
      if (!refused) {
        editedNode_ = NodeOf(reinterpret_cast<const NMTVDISPINFOW&>(header).item.hItem);
        ::SendMessageW(EditOf(handle_), EM_SETLIMITTEXT, kEditLimit, 0);
      }
      return refused;
    }
    case TVN_ENDLABELEDITW: return OnEndLabelEdit(reinterpret_cast<const NMTVDISPINFOW&>(header).item);
    default: return 0;
  }
}

}  // namespace kestrelon::win
