#pragma once

#include "app/base/Win32.h"

#include <commctrl.h>

#include <cstddef>
#include <functional>
#include <memory>
#include <memory_resource>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "ui/win/Handles.h"
#include "ui/win/MouseButtons.h"

namespace kestrelon::win {

class NodeDrag;
class TreeView;

// A refusal of a control, with the number that programs of this kind know it by.
class ControlError : public std::runtime_error {
 public:
  ControlError(int number, const char* what) : std::runtime_error(what), number_(number) {}
  int Number() const { return number_; }

 private:
  int number_;
};
inline constexpr int kElementNotFound = 35601;  // no node with that key, or a relative that is none
inline constexpr int kKeyNotUnique = 35602;     // the key is taken
inline constexpr int kWouldMakeLoop = 35614;    // a node dropped on itself or on one of its descendants

// Where a new node goes, seen from the relative node.
enum class Relationship { kFirst = 0, kLast = 1, kNext = 2, kPrevious = 3, kChild = 4 };

// One node. Owned by its TreeView; pointers stay valid until the node is removed.
class TreeNode {
 public:
  const std::wstring& Key() const { return key_; }
  const std::wstring& Text() const { return text_; }
  TreeNode* Parent() const { return parent_; }
  TreeNode* Child() const { return firstChild_; }  // the first one
  TreeNode* LastChild() const { return lastChild_; }
  TreeNode* Next() const { return next_; }
  TreeNode* Previous() const { return previous_; }
  TreeNode& FirstSibling();
  TreeNode& LastSibling();
  std::size_t Index() const { return index_; }  // from 1, in order of adding
  std::size_t ChildCount() const { return childCount_; }
  // The texts from the top-level node down to this one, joined by "\".
  std::wstring FullPath() const;
  bool Checked() const { return checked_; }
  void SetChecked(bool checked) { checked_ = checked; }
  int Image() const { return image_; }
  int SelectedImage() const { return selectedImage_; }

 private:
  friend class TreeView;
  TreeView* view_ = nullptr;
  std::wstring key_, text_;
  TreeNode *parent_ = nullptr, *firstChild_ = nullptr, *lastChild_ = nullptr, *next_ = nullptr,
           *previous_ = nullptr;
  std::size_t index_ = 0, childCount_ = 0;
  int image_ = 0, selectedImage_ = 0;
  bool checked_ = false;
  HTREEITEM item_ = nullptr;
};

// The tree control with a model of its own: nodes with keys, in index order (the order of adding), in sibling
// order. All look-ups by key, index, neighbour are constant in time.
//
// The selection is the user's and the caller's alone. What the control would select by itself, a first node
// when it gets the focus, a neighbour of one that goes, is refused.
class TreeView {
 public:
  // What happens in the tree, told to whoever owns it. Unset functions are not called. Points are client
  // pixels; shift: 1 Shift, 2 Ctrl, 4 Alt; button: 1 left, 2 right.
  struct Events {
    // Clicked, or reached in another way that is the user's: with the keyboard, through a program that reads
    // the screen, or left as the selected one by closing the branch that the selection was in. Not by
    // Select().
    std::function<void(TreeNode&)> nodeClick;
    // The text as typed; return false to keep the old one. Not called when the edit was given up or left the
    // text as it was. May show no box: the control is in the middle of ending the edit.
    std::function<bool(const std::wstring& newText)> afterLabelEdit;
    std::function<void(int keyCode, int shift)> keyDown;
    std::function<void(int button, int shift, POINT)> mouseDown, mouseMove, mouseUp;
    std::function<void()> gotFocus;
    // While a node is dragged (BeginDrag), instead of the mouse events: the pointer moved, or the tree
    // scrolled under it; the button was released over the tree; the drag ended in any other way (Escape,
    // released elsewhere, another button pressed, the focus lost, the tree disabled or gone). The drag is
    // over before either of the last two; a release is told by mouseUp too, before them. Keys other than
    // Escape do nothing meanwhile. After a drag that was given up mouseMove counts the left button as up
    // until it is pressed again.
    std::function<void(POINT)> dragOver, dragDrop;
    std::function<void()> dragCancel;
    // The nodes, their texts, or their places are others than before: Revision() has gone up.
    std::function<void()> changed;
  };

  TreeView();
  ~TreeView();
  TreeView(const TreeView&) = delete;
  TreeView& operator=(const TreeView&) = delete;

  // Makes the control: lines, buttons, editable labels, selection always shown. Label editing is manual at
  // first.
  void Create(HWND parent, UINT id);
  HWND Handle() const { return handle_; }
  Events events;

  // `relative` may be null: a top-level node (the last; kFirst makes it the first). Children go last. Images
  // count from 1, 0 for none. Throws ControlError kKeyNotUnique.
  TreeNode& Add(TreeNode* relative, Relationship relationship, const std::wstring& key,
                const std::wstring& text, int image = 0, int selectedImage = 0);
  void Remove(TreeNode& node);  // with its subtree
  void Clear();
  // Makes `node`, with its subtree, the last child of `parent`. Throws ControlError kWouldMakeLoop.
  // Like Remove and Select it ends an edit first, with what was typed.
  void SetParent(TreeNode& node, TreeNode& parent);

  std::size_t Count() const { return nodes_.size(); }
  // Goes up with every change of the nodes, their texts or their places.
  std::uint64_t Revision() const { return revision_; }
  TreeNode& At(std::size_t index);          // from 1
  TreeNode* Find(const std::wstring& key);  // null when there is none
  TreeNode* FirstRoot() const { return firstRoot_; }
  TreeNode* Selected();
  void Select(TreeNode* node);  // null: nothing selected. Raises no nodeClick.
  void EnsureVisible(TreeNode& node);
  void Expand(TreeNode& node);
  TreeNode* HitTest(POINT client);  // the node whose icon or text is there
  void SetText(TreeNode& node, const std::wstring& text);
  void SetDropHighlight(TreeNode* node);
  TreeNode* DropHighlight();
  // Drags with the picture of `pictured` at the pointer until the left button, which is down, is released.
  // The tree scrolls when the pointer is near its edges.
  void BeginDrag(TreeNode& pictured);
  bool Dragging() const;
  // A line up or down, or a step sideways, when the point is near an edge and there is more to see there. For
  // drags of every kind.
  void ScrollNearEdge(POINT client);
  RECT TextRectangle(TreeNode& node);  // client pixels; empty when it is scrolled out

  // Manual: a click on the selected node never starts editing. Automatic: the control's own way.
  void SetAutomaticLabelEdit(bool automatic) { automaticLabelEdit_ = automatic; }
  bool AutomaticLabelEdit() const { return automaticLabelEdit_; }
  void StartLabelEdit();  // on the selected node; needs the focus, and takes it
  void EndLabelEdit();    // keeps what was typed; does nothing when no label is being edited
  bool EditingLabel() const;

  void SetImageList(UniqueImageList images);
  // WM_NOTIFY of this control; the result for the window procedure.
  LRESULT OnNotify(const NMHDR& header);

 private:
  friend class TreeNode;
  static LRESULT CALLBACK Procedure(HWND, UINT, WPARAM, LPARAM);
  LRESULT OnControlMessage(UINT message, WPARAM wParam, LPARAM lParam);
  // A message straight to the control's own procedure: the way through what stands before it (our events, a
  // tooltip's) can cost more than the work itself.
  LRESULT Send(UINT message, WPARAM wParam, LPARAM lParam) const;
  template <class T>
  LRESULT Send(UINT message, WPARAM wParam, T* parameter) const {
    return Send(message, wParam, reinterpret_cast<LPARAM>(parameter));
  }
  LRESULT OnPress(int button, UINT message, WPARAM wParam, LPARAM lParam);
  void Choose(TreeNode& node);  // selects it, as a click does
  bool SelectByKey(WPARAM key);
  void OnCollapsing(TreeNode* node);
  LRESULT OnEndLabelEdit(const TVITEMW& item);
  void TellSwallowedRelease();
  // While a node is dragged: the result of a message that is no matter of the ordinary events.
  std::optional<LRESULT> OnDragMessage(UINT message, WPARAM wParam, LPARAM lParam);
  void RaiseDragOver(POINT point);
  void DropNode(POINT point);  // released there
  void CancelDrag();
  bool EndDrag();  // without an event; false when there was none
  void Changed();
  void InsertItem(TreeNode& node);
  void DeleteItem(HTREEITEM item);
  void Link(TreeNode& node, TreeNode* parent, TreeNode* previous);
  void Unlink(TreeNode& node);
  static bool IsWithin(const TreeNode* node, const TreeNode& branch);  // itself or below it
  TreeNode* NodeOf(HTREEITEM item);
  std::vector<TreeNode*> Subtree(TreeNode& node);  // itself first, parents before children, siblings in order

  HWND handle_ = nullptr;
  WNDPROC procedure_ = nullptr;                   // the control's own
  std::vector<std::unique_ptr<TreeNode>> nodes_;  // index order
  // The views are of the nodes' own keys. A pool, since one allocation for every entry costs as much as the
  // control does.
  std::pmr::unsynchronized_pool_resource pool_;
  std::pmr::unordered_map<std::wstring_view, TreeNode*> byKey_{&pool_};
  TreeNode *firstRoot_ = nullptr, *lastRoot_ = nullptr;
  std::uint64_t revision_ = 0;
  TreeNode* dropHighlight_ = nullptr;
  TreeNode* pressedNode_ = nullptr;  // under the left button's press that is being handled
  TreeNode* editedNode_ = nullptr;   // its label is being edited
  MouseButtons buttons_;
  std::unique_ptr<NodeDrag> drag_;  // null: nothing is dragged
  bool dragGivenUp_ = false;        // and the button may still be down
  UniqueImageList images_;
  bool automaticLabelEdit_ = false;
  bool startingEdit_ = false;
  bool selecting_ = false;  // in Select(): what the control is about to select is what we want
  bool quiet_ = false;      // our own changes of the selection raise no event
};

}  // namespace kestrelon::win
