// The tree's model, and the control kept in step with it. What the user does is in TreeViewEvents.cpp.

#include "ui/win/TreeView.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "app/base/File.h"
#include "ui/win/NodeDrag.h"

namespace kestrelon::win {

namespace {

// The images of a node count from 1; without one of its own the selected node shows the same as the others
// do.
int ImageOf(int image) { return image > 0 ? image - 1 : I_IMAGENONE; }

}  // namespace

TreeView::TreeView() = default;

TreeView::~TreeView() {
  quiet_ = true;
  EndDrag();
  if (handle_ != nullptr) ::DestroyWindow(handle_);
}

void TreeView::Create(HWND parent, UINT id) {
  // The control's own drag detection would swallow mouse messages in a loop of its own; drags are the
  // caller's here. It shows no tips of its own for names that are cut off.
  const DWORD style = WS_CHILD | WS_VISIBLE | WS_TABSTOP | TVS_HASLINES | TVS_HASBUTTONS | TVS_LINESATROOT |
                      TVS_EDITLABELS | TVS_SHOWSELALWAYS | TVS_DISABLEDRAGDROP | TVS_NOTOOLTIPS;
  handle_ = ::CreateWindowExW(WS_EX_CLIENTEDGE, WC_TREEVIEWW, L"", style, 0, 0, 0, 0, parent,
                              reinterpret_cast<HMENU>(static_cast<UINT_PTR>(id)), ::GetModuleHandleW(nullptr),
                              nullptr);
  if (handle_ == nullptr) ThrowLastError(L"tree view");
  ::SetWindowLongPtrW(handle_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
  procedure_ = reinterpret_cast<WNDPROC>(
      ::SetWindowLongPtrW(handle_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&TreeView::Procedure)));
  if (procedure_ == nullptr) ThrowLastError(L"SetWindowLongPtrW");
}

LRESULT TreeView::Send(UINT message, WPARAM wParam, LPARAM lParam) const {
  return handle_ == nullptr ? 0 : ::CallWindowProcW(procedure_, handle_, message, wParam, lParam);
}

void TreeView::Link(TreeNode& node, TreeNode* parent, TreeNode* previous) {
  TreeNode*& first = parent != nullptr ? parent->firstChild_ : firstRoot_;
  TreeNode*& last = parent != nullptr ? parent->lastChild_ : lastRoot_;
  node.parent_ = parent;
  node.previous_ = previous;
  node.next_ = previous != nullptr ? previous->next_ : first;
  (previous != nullptr ? previous->next_ : first) = &node;
  (node.next_ != nullptr ? node.next_->previous_ : last) = &node;
  if (parent != nullptr) ++parent->childCount_;
}

void TreeView::Unlink(TreeNode& node) {
  TreeNode*& first = node.parent_ != nullptr ? node.parent_->firstChild_ : firstRoot_;
  TreeNode*& last = node.parent_ != nullptr ? node.parent_->lastChild_ : lastRoot_;
  (node.previous_ != nullptr ? node.previous_->next_ : first) = node.next_;
  (node.next_ != nullptr ? node.next_->previous_ : last) = node.previous_;
  if (node.parent_ != nullptr) --node.parent_->childCount_;
  node.parent_ = node.previous_ = node.next_ = nullptr;
}

TreeNode& TreeView::Add(TreeNode* relative, Relationship relationship, const std::wstring& key,
                        const std::wstring& text, int image, int selectedImage) {
  auto made = std::make_unique<TreeNode>();
  TreeNode& node = *made;
  node.key_ = key;
  if (!key.empty() && !byKey_.try_emplace(node.key_, &node).second)
    throw ControlError(kKeyNotUnique, "Key is not unique in collection");
  TreeNode* parent = nullptr;
  TreeNode* previous = lastRoot_;
  if (relative == nullptr) {
    if (relationship == Relationship::kFirst) previous = nullptr;
  } else if (relationship == Relationship::kChild) {
    parent = relative;
    previous = relative->lastChild_;
  } else {
    parent = relative->parent_;
    switch (relationship) {
      case Relationship::kFirst: previous = nullptr; break;
      case Relationship::kLast: previous = &relative->LastSibling(); break;
      case Relationship::kNext: previous = relative; break;
      case Relationship::kPrevious: previous = relative->previous_; break;
      case Relationship::kChild: break;
    }
  }

  nodes_.push_back(std::move(made));
  node.view_ = this;
  node.text_ = text;
  node.image_ = image;
  node.selectedImage_ = selectedImage;
  node.index_ = nodes_.size();
  Link(node, parent, previous);
  InsertItem(node);
  Changed();
  return node;
}

void TreeView::Changed() {
  ++revision_;
  if (events.changed) events.changed();
}

void TreeView::InsertItem(TreeNode& node) {
  TVINSERTSTRUCTW insert{};
  insert.hParent = node.parent_ != nullptr ? node.parent_->item_ : TVI_ROOT;
  // "After that one" costs the control a walk along the siblings: named places wherever there is one.
  insert.hInsertAfter = node.next_ == nullptr       ? TVI_LAST
                        : node.previous_ == nullptr ? TVI_FIRST
                                                    : node.previous_->item_;
  TVITEMW& item = insert.item;
  item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
  item.pszText = node.text_.data();
  item.lParam = reinterpret_cast<LPARAM>(&node);
  item.iImage = ImageOf(node.image_);
  item.iSelectedImage = ImageOf(node.selectedImage_ > 0 ? node.selectedImage_ : node.image_);
  node.item_ = reinterpret_cast<HTREEITEM>(Send(TVM_INSERTITEMW, 0, &insert));
}

void TreeView::DeleteItem(HTREEITEM item) {
  // An edit of a label that goes would be left standing.
  Send(TVM_ENDEDITLABELNOW, TRUE, 0);
  Send(TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(item));
}

std::vector<TreeNode*> TreeView::Subtree(TreeNode& node) {
  std::vector<TreeNode*> nodes;
  TreeNode* current = &node;
  for (;;) {
    nodes.push_back(current);
    if (current->firstChild_ != nullptr) {
      current = current->firstChild_;
      continue;
    }
    while (current != &node && current->next_ == nullptr) current = current->parent_;
    if (current == &node) return nodes;
    current = current->next_;
  }
}

void TreeView::Remove(TreeNode& node) {
  // What is typed into a label that goes has nowhere to go.
  if (!IsWithin(editedNode_, node)) EndLabelEdit();
  const ScopedFlag quiet(quiet_);
  // Else the control would select a neighbour. Not every version of it asks whether it may.
  if (IsWithin(Selected(), node)) Select(nullptr);
  const std::vector<TreeNode*> gone = Subtree(node);
  DeleteItem(node.item_);
  Unlink(node);
  std::size_t firstGone = nodes_.size();
  for (TreeNode* removed : gone) {
    if (removed == dropHighlight_) dropHighlight_ = nullptr;
    if (removed == pressedNode_) pressedNode_ = nullptr;
    if (removed == editedNode_) editedNode_ = nullptr;
    if (!removed->key_.empty()) byKey_.erase(removed->key_);
    firstGone = std::min(firstGone, removed->index_ - 1);
    removed->index_ = 0;
  }
  const auto from = nodes_.begin() + static_cast<std::ptrdiff_t>(firstGone);
  nodes_.erase(std::remove_if(from, nodes_.end(), [](const auto& kept) { return kept->index_ == 0; }),
               nodes_.end());
  for (std::size_t i = firstGone; i < nodes_.size(); ++i) nodes_[i]->index_ = i + 1;
  Changed();
}

void TreeView::Clear() {
  const ScopedFlag quiet(quiet_);
  dropHighlight_ = pressedNode_ = editedNode_ = nullptr;
  if (handle_ != nullptr) {
    const RedrawOff off(handle_);
    Select(nullptr);
    DeleteItem(TVI_ROOT);
  }
  byKey_.clear();
  nodes_.clear();
  firstRoot_ = lastRoot_ = nullptr;
  Changed();
}

void TreeView::SetParent(TreeNode& node, TreeNode& parent) {
  if (IsWithin(&parent, node)) throw ControlError(kWouldMakeLoop, "This would introduce a cycle");

  EndLabelEdit();
  const ScopedFlag quiet(quiet_);
  const RedrawOff off(handle_);
  const std::vector<TreeNode*> moved = Subtree(node);
  std::vector<TreeNode*> expanded;
  for (TreeNode* each : moved) {
    const auto item = reinterpret_cast<WPARAM>(each->item_);
    if ((Send(TVM_GETITEMSTATE, item, TVIS_EXPANDED) & TVIS_EXPANDED) != 0) expanded.push_back(each);
  }
  TreeNode* const selected = Selected();
  const bool highlightMoved = std::find(moved.begin(), moved.end(), dropHighlight_) != moved.end();

  // The control cannot move an item: its subtree is taken out and put in again.
  if (IsWithin(selected, node)) Select(nullptr);
  DeleteItem(node.item_);
  Unlink(node);
  Link(node, &parent, parent.lastChild_);
  for (TreeNode* each : moved) {
    // Later siblings are not there yet: everything goes last, the top of the subtree because it is.
    TreeNode* const next = std::exchange(each->next_, nullptr);
    InsertItem(*each);
    each->next_ = next;
  }
  for (TreeNode* each : expanded) Expand(*each);
  if (selected != nullptr) Select(selected);
  if (highlightMoved) SetDropHighlight(dropHighlight_);
  Changed();
}

TreeNode& TreeView::At(std::size_t index) {
  if (index < 1 || index > nodes_.size()) throw ControlError(kElementNotFound, "Index out of bounds");
  return *nodes_[index - 1];
}

TreeNode* TreeView::Find(const std::wstring& key) {
  const auto found = byKey_.find(key);
  return found == byKey_.end() ? nullptr : found->second;
}

TreeNode* TreeView::NodeOf(HTREEITEM item) {
  if (item == nullptr) return nullptr;
  TVITEMW query{};
  query.mask = TVIF_HANDLE | TVIF_PARAM;
  query.hItem = item;
  if (Send(TVM_GETITEMW, 0, &query) == 0) return nullptr;
  return reinterpret_cast<TreeNode*>(query.lParam);
}

TreeNode* TreeView::Selected() {
  return NodeOf(reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, TVGN_CARET, 0)));
}

bool TreeView::IsWithin(const TreeNode* node, const TreeNode& branch) {
  while (node != nullptr && node != &branch) node = node->parent_;
  return node != nullptr;
}

void TreeView::Select(TreeNode* node) {
  // The edit would live on, over a node that is selected no more.
  if (!quiet_) EndLabelEdit();
  const ScopedFlag quiet(quiet_), selecting(selecting_);
  Send(TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(node == nullptr ? nullptr : node->item_));
}

void TreeView::EnsureVisible(TreeNode& node) {
  Send(TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(node.item_));
}

void TreeView::Expand(TreeNode& node) { Send(TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(node.item_)); }

TreeNode* TreeView::HitTest(POINT client) {
  TVHITTESTINFO hit{};
  hit.pt = client;
  const auto item = reinterpret_cast<HTREEITEM>(Send(TVM_HITTEST, 0, &hit));
  return (hit.flags & TVHT_ONITEM) != 0 ? NodeOf(item) : nullptr;
}

void TreeView::SetText(TreeNode& node, const std::wstring& text) {
  node.text_ = text;
  TVITEMW item{};
  item.mask = TVIF_HANDLE | TVIF_TEXT;
  item.hItem = node.item_;
  item.pszText = node.text_.data();
  Send(TVM_SETITEMW, 0, &item);
  Changed();
}

void TreeView::SetDropHighlight(TreeNode* node) {
  Send(TVM_SELECTITEM, TVGN_DROPHILITE, reinterpret_cast<LPARAM>(node == nullptr ? nullptr : node->item_));
  if (dropHighlight_ != nullptr && dropHighlight_ != node) {
    // "No item" does not make every version of the control take the old highlight away.
    TVITEMW item{};
    item.mask = TVIF_HANDLE | TVIF_STATE;
    item.hItem = dropHighlight_->item_;
    item.stateMask = TVIS_DROPHILITED;
    Send(TVM_SETITEMW, 0, &item);
  }
  dropHighlight_ = node;
}

TreeNode* TreeView::DropHighlight() { return dropHighlight_; }

RECT TreeView::TextRectangle(TreeNode& node) {
  RECT rectangle{};
  std::memcpy(&rectangle, &node.item_,
              sizeof node.item_);  // the message takes the item where it puts the rectangle
  if (Send(TVM_GETITEMRECT, TRUE, &rectangle) == 0) return {};
  return rectangle;
}

void TreeView::SetImageList(UniqueImageList images) {
  Send(TVM_SETIMAGELIST, TVSIL_NORMAL, reinterpret_cast<LPARAM>(images.get()));
  images_ = std::move(images);  // the old pictures go only after the control has let go of them
}

}  // namespace kestrelon::win
